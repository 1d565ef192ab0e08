// The current folder, the folders that the system names, the search for a file, and opening a
// stream on a wide path.
#pragma once

#include <cstdio>

#include "platform/component_model.h"
#include "platform/errors.h"
#include "platform/types.h"

#ifdef _WIN32

#include <shlobj.h>

#else

namespace brevik::platform {

inline constexpr int CSIDL_COMMON_APPDATA = 35;
inline constexpr int CSIDL_PROGRAM_FILES_COMMON = 43;

// The length of the process's current folder without the NUL, or, where it does not fit into `size`
// units, the size needed with it. No trailing backslash but at a root.
PLATFORM_API DWORD GetCurrentDirectoryW(DWORD size, WCHAR* path);

// Errors: 2 for a missing folder, 267 for a file, 3 for a missing drive, 123 for an empty path.
PLATFORM_API BOOL SetCurrentDirectoryW(const WCHAR* path);

// The full path of a path, see posix/paths.h; no disk is asked. Result: its length without the NUL,
// or the size needed with it where it does not fit; 0 for an empty path, the last error as it was.
// `filePart` may be null.
PLATFORM_API DWORD GetFullPathNameW(const WCHAR* path, DWORD size, WCHAR* buffer, WCHAR** filePart);

// The folder for temporary files, with its trailing backslash. Results as above.
PLATFORM_API DWORD GetTempPathW(DWORD size, WCHAR* path);

// Looks for a file by its bare name in the order in which LoadLibraryExW does. Result: the length
// of the full path without the NUL, the size needed with it where it does not fit, or 0 with
// error 2. `filePart` receives the place of the file's name in the buffer. REQUIRES: no path and
// extension.
PLATFORM_API DWORD SearchPathW(const WCHAR* path, const WCHAR* fileName, const WCHAR* extension,
                               DWORD size, WCHAR* buffer, WCHAR** filePart);

struct ITEMIDLIST;

// The place of a system folder, in a block that the caller frees with CoTaskMemFree.
PLATFORM_API HRESULT SHGetSpecialFolderLocation(HWND owner, int folder, ITEMIDLIST** list);
PLATFORM_API BOOL SHGetPathFromIDListW(const ITEMIDLIST* list, WCHAR* path);

// The path of a system folder into MAX_PATH units, made first where `create` is set.
PLATFORM_API BOOL SHGetSpecialFolderPathW(HWND owner, WCHAR* path, int folder, BOOL create);

// The folder of the system's own files. Results as those of GetTempPathW.
PLATFORM_API UINT GetWindowsDirectoryW(WCHAR* path, UINT size);

// fopen for a wide path. A folder is refused, also for reading.
PLATFORM_API std::FILE* _wfopen(const WCHAR* path, const WCHAR* mode);

}  // namespace brevik::platform

#endif
