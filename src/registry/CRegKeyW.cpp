#include "registry/CRegKeyW.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "platform/text.h"

LONG CRegKeyW::Open(HKEY parent, const WCHAR* subKey, REGSAM access) {
    HKEY opened = nullptr;
    const LONG error = RegOpenKeyExW(parent, subKey, 0, access, &opened);
    if (error == ERROR_SUCCESS) {
        Close();
        key_ = opened;
    }
    return error;
}

LONG CRegKeyW::Close() {
    return key_ == nullptr ? LONG{ERROR_SUCCESS} : RegCloseKey(std::exchange(key_, nullptr));
}

LONG CRegKeyW::QueryDWORDValue(const WCHAR* name, DWORD* value) {
    DWORD type = REG_NONE;
    DWORD size = sizeof *value;
    const LONG error =
        RegQueryValueExW(key_, name, nullptr, &type, reinterpret_cast<BYTE*>(value), &size);
    return error == ERROR_SUCCESS && type != REG_DWORD ? LONG{ERROR_INVALID_DATA} : error;
}

LONG CRegKeyW::QueryStringValue(const WCHAR* name, WCHAR* buffer, DWORD* count) {
    const DWORD capacity = *count;
    *count = 0;
    // One byte more than asked for, so that the pointer is never null: for a null one the registry
    // would answer with the size and no error.
    std::vector<char> narrow(std::size_t{capacity} + 1);
    DWORD type = REG_NONE;
    DWORD size = capacity;
    const std::string narrowName =
        CodePageFromWide(CP_THREAD_ACP, name != nullptr ? name : WIDE(""));
    const LONG error = RegQueryValueExA(key_, narrowName.c_str(), nullptr, &type,
                                        reinterpret_cast<BYTE*>(narrow.data()), &size);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    if ((type != REG_SZ && type != REG_EXPAND_SZ) || size == 0 || narrow[size - 1] != '\0') {
        return ERROR_INVALID_DATA;
    }
    *count = size;
    // A text has no more wide units than narrow bytes, so it fits.
    const WideString text = WideFromCodePage(CP_THREAD_ACP, narrow.data());
    const std::size_t length = std::min<std::size_t>(text.size(), size - 1);
    std::fill(std::copy_n(text.begin(), length, buffer), buffer + capacity, WCHAR{0});
    return ERROR_SUCCESS;
}
