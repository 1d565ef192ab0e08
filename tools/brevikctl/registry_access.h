// The machine's registry file as the commands read and change it.
//
// What fails throws std::runtime_error with what can be done about it.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/posix/registry_file.h"

// The path of a key that begins with a root, by its long name or as HKLM, HKCU, HKU or HKCR.
RegistryPath RegistryArgument(const std::string& text);

// A path as text, with the long name of its root.
std::string TextOf(const RegistryPath& path);

void ReadRegistry(RegistryTree* tree);

// One change of the file, as a whole or not at all. What `change` throws goes through, and the file
// stays.
void ChangeRegistry(const std::function<void(RegistryTree* tree)>& change);

// Throws for an error of an operation on the registry file.
void RequireRegistry(DWORD error, const RegistryFault& fault);

// The place of a key below HKEY_LOCAL_MACHINE\SOFTWARE where programs look for it: as the library's
// programs have 32 bits on Windows, that is below Wow6432Node where the key is there.
RegistryPath PlaceForPrograms(const RegistryTree& tree, std::u16string_view belowSoftware);

// A text value, its NUL stored with it, and the text of one up to its NUL; empty for a null value
// and for one of another type.
RegistryValue TextValue(std::u16string_view name, const std::string& text);
std::string TextOf(const RegistryValue* value);

// Null when there is none.
const RegistryValue* FindValue(const RegistryKey& key, std::u16string_view name);
