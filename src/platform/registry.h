// The registry: keys with values, which all programs of the machine share.
//
// Off Windows it is the file registry.reg of the machine, in the standard text export form; see
// docs/machine-folder.md. Results are error numbers; GetLastError is left as it was. Any thread; a
// handle may be used by several.
//
// Besides what each operation names, all but RegCloseKey return ERROR_INVALID_HANDLE for a
// value that is not an open key, and ERROR_KEY_DELETED for a key that was deleted since it was
// opened.
#pragma once

#include "platform/clock.h"
#include "platform/errors.h"
#include "platform/types.h"

#ifdef _WIN32

#include <winreg.h>

#else

namespace brevik::platform {

using HKEY = struct RegistryKeyHandle*;
using REGSAM = DWORD;

inline const HKEY HKEY_CLASSES_ROOT = reinterpret_cast<HKEY>(std::uintptr_t{0x80000000});
inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(std::uintptr_t{0x80000001});
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(std::uintptr_t{0x80000002});
inline const HKEY HKEY_USERS = reinterpret_cast<HKEY>(std::uintptr_t{0x80000003});

// Handles that have a name but no keys.
inline const HKEY HKEY_PERFORMANCE_DATA = reinterpret_cast<HKEY>(std::uintptr_t{0x80000004});
inline const HKEY HKEY_CURRENT_CONFIG = reinterpret_cast<HKEY>(std::uintptr_t{0x80000005});
inline const HKEY HKEY_DYN_DATA = reinterpret_cast<HKEY>(std::uintptr_t{0x80000006});
inline const HKEY HKEY_PERFORMANCE_TEXT = reinterpret_cast<HKEY>(std::uintptr_t{0x80000050});
inline const HKEY HKEY_PERFORMANCE_NLSTEXT = reinterpret_cast<HKEY>(std::uintptr_t{0x80000060});

inline constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
inline constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_WOW64_32KEY = 0x0200;

inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_MULTI_SZ = 7;
inline constexpr DWORD REG_QWORD = 11;

// Opens a key below another, its path without regard to case. ERROR_FILE_NOT_FOUND when it is
// missing, ERROR_BAD_PATHNAME for a path that begins with a backslash, ERROR_NO_SYSTEM_RESOURCES
// when no handle is left, ERROR_ACCESS_DENIED or ERROR_GEN_FAILURE while the registry's file cannot
// be read and never could be. `access` is not looked at. Like every program of 32 bits the library
// sees SOFTWARE\Wow6432Node in place of SOFTWARE; off Windows a path that is not there is then
// looked for as it stands.
PLATFORM_API LONG RegOpenKeyExW(HKEY parent, const WCHAR* subKey, DWORD options, REGSAM access,
                                HKEY* key);

// ERROR_INVALID_HANDLE for a value that is not an open key. The predefined keys stay open.
PLATFORM_API LONG RegCloseKey(HKEY key);

// The name of a sub key by its place in the order of upper-cased code units. `length` is the
// buffer's size in units, and receives the length without the NUL. ERROR_NO_MORE_ITEMS after the
// last, ERROR_MORE_DATA when the buffer is too small.
//
// REQUIRES: null for the class and the time of the last change, which are not kept.
PLATFORM_API LONG RegEnumKeyExW(HKEY key, DWORD index, WCHAR* name, DWORD* length, DWORD* reserved,
                                WCHAR* className, DWORD* classLength, FILETIME* lastWrite);

// A value's type and bytes; `size` is the buffer's size in bytes and receives that of the value.
// ERROR_FILE_NOT_FOUND for a missing value, ERROR_MORE_DATA with the size needed when the buffer is
// too small. A text that was stored
// without its NUL gets one where there is room. The narrow form gives texts in the narrow code
// page.
PLATFORM_API LONG RegQueryValueExW(HKEY key, const WCHAR* name, DWORD* reserved, DWORD* type,
                                   BYTE* data, DWORD* size);
PLATFORM_API LONG RegQueryValueExA(HKEY key, const char* name, DWORD* reserved, DWORD* type,
                                   BYTE* data, DWORD* size);

}  // namespace brevik::platform

#endif
