// An open key of the registry for the length of a scope.
#pragma once

#include <optional>

#include "platform/registry.h"

class ScopedRegistryKey {
  public:
    ScopedRegistryKey(HKEY parent, const WCHAR* path, REGSAM access)
        : error_(RegOpenKeyExW(parent, path, 0, access, &key_)) {}
    ScopedRegistryKey(const ScopedRegistryKey&) = delete;
    ScopedRegistryKey& operator=(const ScopedRegistryKey&) = delete;
    ~ScopedRegistryKey() {
        if (IsOpen()) {
            RegCloseKey(key_);
        }
    }

    bool IsOpen() const { return error_ == ERROR_SUCCESS; }

    // Why it is not open.
    LONG Error() const { return error_; }
    HKEY Get() const { return key_; }

    // A value's bytes as text up to the first NUL, whatever its type. None when the value cannot be
    // read, or is longer than MAX_PATH units.
    std::optional<WideString> ReadText(const WCHAR* name, DWORD* type = nullptr) const {
        WCHAR text[MAX_PATH + 1] = {};
        DWORD size = MAX_PATH * static_cast<DWORD>(sizeof *text);
        if (RegQueryValueExW(key_, name, nullptr, type, reinterpret_cast<BYTE*>(text), &size) !=
            ERROR_SUCCESS) {
            return std::nullopt;
        }
        return WideString(text);
    }

  private:
    HKEY key_ = nullptr;
    LONG error_;  // after the key: its making sets it
};
