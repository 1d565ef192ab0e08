// Reads a list of texts from the registry.
#pragma once

#include <vector>

#include "platform/registry.h"

// The texts of a REG_MULTI_SZ value in stored order, up to the first empty one; the one text of a
// REG_SZ; none of a value of another type. `list` is emptied first. E_FAIL when the key or the
// value cannot be read, or when the value has more than 1024 bytes; else 0. Any thread.
HRESULT ReadStringList(HKEY root, const WCHAR* keyPath, const WCHAR* valueName,
                       std::vector<WideString>* list);
