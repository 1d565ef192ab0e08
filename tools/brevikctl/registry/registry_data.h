// The data of registry values on the command line and in what is printed.
#pragma once

#include <string>
#include <vector>

#include "platform/posix/registry/registry_tree.h"

// The text of a value up to its NUL; empty for a value of another type than text.
std::string TextOf(const RegistryValue& value);

// A text value, its NUL stored with it.
RegistryValue TextValue(std::u16string_view name, const std::string& text);

// Short name of a type, such as "sz"; "hex(N)" for one that has none.
std::string TypeName(DWORD type);

// What a value holds, a line for each text: one, or those of a multi value. Data that does not fit
// its type, and data of other types, is shown in bytes.
std::vector<std::string> DataLines(const RegistryValue& value);

// As JSON: a string, a number, an array of strings, or a string of bytes.
std::string DataJson(const RegistryValue& value);

// A value of a type by its short name. Fails for data that the type cannot hold.
RegistryValue MakeValue(std::u16string_view name, const std::string& type,
                        const std::vector<std::string>& data);

// The types that MakeValue knows.
std::vector<std::string> WritableTypes();
