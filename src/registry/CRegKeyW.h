// One open key of the registry.
//
// Every operation returns the platform's error number, 0 for success; nothing throws but
// std::bad_alloc. An object belongs to one thread at a time.
#pragma once

#include "platform/registry.h"

class CRegKeyW {
  public:
    CRegKeyW() = default;
    CRegKeyW(const CRegKeyW&) = delete;
    CRegKeyW& operator=(const CRegKeyW&) = delete;
    virtual ~CRegKeyW() { Close(); }

    // Opens a key below `parent` and closes the key held before; on failure that key stays open.
    // `access` is a mask such as KEY_QUERY_VALUE.
    LONG Open(HKEY parent, const WCHAR* subKey, REGSAM access);

    // 0 also when no key is open.
    LONG Close();

    // The number of a REG_DWORD value. ERROR_INVALID_DATA for a value of another type whose bytes
    // fit into a number; they have then been written to `value`.
    LONG QueryDWORDValue(const WCHAR* name, DWORD* value);

    // A text (REG_SZ or REG_EXPAND_SZ) and NULs into `buffer` of `*count` wide characters. `*count`
    // receives the bytes of the text in the thread's narrow code page with its NUL, 0 on failure; a
    // text of more such bytes is ERROR_MORE_DATA, another type or a text without a NUL at its end
    // ERROR_INVALID_DATA. Characters that the code page lacks come back changed.
    LONG QueryStringValue(const WCHAR* name, WCHAR* buffer, DWORD* count);

  private:
    HKEY key_ = nullptr;
};
