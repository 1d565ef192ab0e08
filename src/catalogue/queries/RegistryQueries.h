// What queries read from the registry, and the paths of its keys. Any thread.
#pragma once

#include <cstdint>

#include "platform/registry.h"
#include "text/StringConversions.h"

// The language in which a product was installed: the value `Language` of the certificate's registry
// key, wide text that begins with the decimal number of a language identifier after any blanks.
// `languageId` receives the number, 0 where there is none, and `languageCode` the system's
// three-letter code for it in lower case. False without such a key or value; both are then as they
// were.
bool ReadProductLanguage(const Utf8String& guid, Utf8String* languageCode,
                         std::uint32_t* languageId);

// Splits a text of the form ROOT\sub\key. `subKey` receives what follows the first backslash, and
// `root` the handle that the name before it stands for; a text without a backslash is taken whole
// for both. 1 when the root is known, by its exact name such as "HKEY_LOCAL_MACHINE"; else 0, and
// `root` is as it was.
std::uint8_t SplitRegistryPath(const Utf8String& text, HKEY* root, Utf8String* subKey);
