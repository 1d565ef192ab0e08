// The registry's standard text export form, as it is written.
//
// Version 5, UTF-8 without a mark, LF, keys and values in their order. Reading a text that was
// written gives an equal tree.
#pragma once

#include <string>
#include <string_view>

#include "platform/posix/registry/registry_tree.h"

std::string WriteRegistryText(const RegistryTree& tree);

// The same of a key and all below it; empty for a key that is not there.
std::string WriteRegistryText(const RegistryTree& tree, std::u16string_view path);
