// A registry path as text, in its two parts.
#pragma once

#include <cstdint>

#include "platform/registry.h"
#include "text/StringConversions.h"

// Splits a text of the form ROOT\sub\key. `subKey` receives what stands behind the first backslash,
// and `root` the handle that the name before it stands for; a text without a backslash is taken
// whole for both. 1 when the root is known, by its exact name such as "HKEY_LOCAL_MACHINE"; else 0,
// and `root` is as it was. Any thread.
std::uint8_t SplitRegistryPath(const Utf8String& text, HKEY* root, Utf8String* subKey);
