#include "registry/ReadStringList.h"

#include <algorithm>

#include "registry/ScopedRegistryKey.h"

namespace {

constexpr std::size_t kMostUnits = 1024 / sizeof(WCHAR);

}  // namespace

HRESULT ReadStringList(HKEY root, const WCHAR* keyPath, const WCHAR* valueName,
                       std::vector<WideString>* list) {
    list->clear();
    const ScopedRegistryKey key(root, keyPath, KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS);
    if (!key.IsOpen()) {
        return E_FAIL;
    }
    WCHAR units[kMostUnits] = {};
    DWORD type = REG_NONE;
    DWORD size = sizeof units;
    if (RegQueryValueExW(key.Get(), valueName, nullptr, &type, reinterpret_cast<BYTE*>(units),
                         &size) != ERROR_SUCCESS) {
        return E_FAIL;
    }
    // A value may lack its last NULs, so the end of its bytes ends a text too.
    const WCHAR* const end = units + size / sizeof(WCHAR);
    const WCHAR* text = units;
    if (type == REG_SZ) {
        list->emplace_back(text, std::find(text, end, WCHAR{0}));
    }
    while (type == REG_MULTI_SZ && text < end && *text != 0) {
        const WCHAR* const textEnd = std::find(text, end, WCHAR{0});
        list->emplace_back(text, textEnd);
        text = textEnd == end ? end : textEnd + 1;
    }
    return S_OK;
}
