// Where keys of the registry are.
#pragma once

#include <string>
#include <string_view>

#include "platform/posix/registry/registry_tree.h"

// The path of a key that begins with a root, by its long name or as HKLM, HKCU, HKU or HKCR. Fails
// for a text that is none.
std::u16string RegistryArgument(const std::string& text);

// The place of a key below HKEY_LOCAL_MACHINE\SOFTWARE where programs look for it: as the library's
// programs have 32 bits on Windows, that is below Wow6432Node where the key is there.
std::u16string PlaceForPrograms(const RegistryTree& tree, std::u16string_view belowSoftware);
