// The language in which a product was installed, as the registry tells it.
#pragma once

#include <cstdint>

#include "text/StringConversions.h"

// Reads the value `Language` of the certificate's registry key: wide text that begins with the
// decimal number of a language identifier, blanks ahead of it skipped. `languageId` receives the
// number, 0 where none stands there, and `languageCode` the system's three-letter code for it in
// lower case. False without such a key or value; both are then as they were. Any thread.
bool ReadProductLanguage(const Utf8String& guid, Utf8String* languageCode,
                         std::uint32_t* languageId);
