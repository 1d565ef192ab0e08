// Loaded libraries: loading by name, operations by name, and the file a module came from.
//
// Off Windows a module is a shared object whatever its file's extension.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifndef _WIN32

namespace brevik::platform {

inline constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 0x8;

using FARPROC = std::intptr_t (*)();

// Loads a library. A name with a folder is looked for there alone; a bare name in this order: the
// host's folder, C:\Windows\System32, C:\Windows, the current folder, the folders of PATH. The last
// two are passed over where another user may write to them, and in a set-user-id process; there so
// is the host's folder where other users can change it. Null with 126 when there is none, with 193
// when the file found is no library. Each success counts.
PLATFORM_API HMODULE LoadLibraryExW(const WCHAR* name, HANDLE file, DWORD flags);
PLATFORM_API HMODULE LoadLibraryW(const WCHAR* name);
PLATFORM_API BOOL FreeLibrary(HMODULE module);

// Whether a library may be taken from this folder, which is the host's or another program's, by
// those rules.
PLATFORM_API bool MayHoldLibraries(const WCHAR* folder);

// Null with 127 when the module exports no such name.
PLATFORM_API FARPROC GetProcAddress(HMODULE module, const char* name);

// The host executable for a null name; a library that LoadLibraryExW loaded by its name, not
// counted; else null with 126.
PLATFORM_API HMODULE GetModuleHandleW(const WCHAR* name);

// The module's path (null: the host's). Result: the length without the NUL; 0 on failure. A path
// that does not fit is cut, with its NUL, and gives `size` with error 122.
PLATFORM_API DWORD GetModuleFileNameW(HMODULE module, WCHAR* path, DWORD size);

}  // namespace brevik::platform

#else

inline bool MayHoldLibraries(const WCHAR*) {
    return true;
}

#endif
