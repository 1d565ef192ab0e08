#include "registry/ReadStringList.h"

#include <algorithm>

namespace {

constexpr std::size_t kMostUnits = 1024 / sizeof(WCHAR);

// Owner of a key that is open for one reading.
class ScopedKey {
  public:
    ScopedKey(HKEY root, const WCHAR* path) {
        constexpr REGSAM access = KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS;
        if (RegOpenKeyExW(root, path, 0, access, &key_) != ERROR_SUCCESS) {
            key_ = nullptr;
        }
    }
    ScopedKey(const ScopedKey&) = delete;
    ScopedKey& operator=(const ScopedKey&) = delete;
    ~ScopedKey() {
        if (key_ != nullptr) {
            RegCloseKey(key_);
        }
    }

    explicit operator bool() const { return key_ != nullptr; }
    HKEY Get() const { return key_; }

  private:
    HKEY key_ = nullptr;
};

}  // namespace

HRESULT ReadStringList(HKEY root, const WCHAR* keyPath, const WCHAR* valueName,
                       std::vector<WideString>* list) {
    list->clear();
    const ScopedKey key(root, keyPath);
    if (!key) {
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
