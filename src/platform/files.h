// Files and folders by path, and open files.
//
// Paths are Windows paths, with or without the prefix \\?\; their names are found without regard to
// case. Operations report a failure by their result and by GetLastError. Any thread.
#pragma once

#include <cstdint>
#include <cstdio>

#include "platform/clock.h"
#include "platform/errors.h"
#include "platform/handles.h"
#include "platform/types.h"

#ifdef _WIN32

#include <io.h>

// clang-format off
#include <winioctl.h>
#include <shlwapi.h>
// clang-format on

#else

namespace brevik::platform {

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD DELETE = 0x00010000;
inline constexpr DWORD FILE_SHARE_READ = 0x1;
inline constexpr DWORD FILE_SHARE_WRITE = 0x2;
inline constexpr DWORD FILE_SHARE_DELETE = 0x4;
inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_HIDDEN = 0x2;
inline constexpr DWORD FILE_ATTRIBUTE_SYSTEM = 0x4;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x20;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;
inline constexpr DWORD FILE_FLAG_BACKUP_SEMANTICS = 0x02000000;
inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;
inline constexpr DWORD FSCTL_LOCK_VOLUME = 0x00090018;
inline constexpr DWORD FSCTL_DISMOUNT_VOLUME = 0x00090020;
inline constexpr DWORD COPY_FILE_FAIL_IF_EXISTS = 0x1;
inline constexpr DWORD CALLBACK_CHUNK_FINISHED = 0;
inline constexpr DWORD CALLBACK_STREAM_SWITCH = 1;
inline constexpr DWORD PROGRESS_CONTINUE = 0;
inline constexpr DWORD PROGRESS_CANCEL = 1;

struct SECURITY_ATTRIBUTES;
struct OVERLAPPED;

struct WIN32_FILE_ATTRIBUTE_DATA {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
};

struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    WCHAR cFileName[MAX_PATH];
    WCHAR cAlternateFileName[14];
};

enum GET_FILEEX_INFO_LEVELS { GetFileExInfoStandard = 0 };

// Opens a file, a folder (with FILE_FLAG_BACKUP_SEMANTICS) or, as \\.\X:, the device of a drive;
// the other flags are not looked at. Share modes hold between all processes of the machine that
// open through this operation. INVALID_HANDLE_VALUE on failure.
PLATFORM_API HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share,
                                SECURITY_ATTRIBUTES* security, DWORD disposition, DWORD flags,
                                HANDLE model);

// `done` receives how many bytes were read or written, also after a failure.
PLATFORM_API BOOL ReadFile(HANDLE file, void* buffer, DWORD count, DWORD* done, OVERLAPPED* none);
PLATFORM_API BOOL WriteFile(HANDLE file, const void* buffer, DWORD count, DWORD* done,
                            OVERLAPPED* none);
PLATFORM_API BOOL FlushFileBuffers(HANDLE file);

// Both return the low half of a 64-bit number and give the high half through the pointer; the value
// 0xFFFFFFFF is a failure when GetLastError is not NO_ERROR as well, which it is after every
// success. SetFilePointer takes a 32-bit distance where `high` is null.
PLATFORM_API DWORD GetFileSize(HANDLE file, DWORD* high);
PLATFORM_API DWORD SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method);

PLATFORM_API BOOL SetEndOfFile(HANDLE file);

// Leaves a time as it is for null and for 0.
PLATFORM_API BOOL SetFileTime(HANDLE file, const FILETIME* creation, const FILETIME* access,
                              const FILETIME* write);

// Locks or dismounts the volume of a drive. Only a handle that has not locked it yet may lock it.
PLATFORM_API BOOL DeviceIoControl(HANDLE device, DWORD code, void* input, DWORD inputSize,
                                  void* output, DWORD outputSize, DWORD* returned,
                                  OVERLAPPED* none);

// Off Windows links are followed; a folder that is reached through one has the attribute of a
// reparse point, and so has a link that leads nowhere, which can be deleted and moved but not
// opened.
PLATFORM_API BOOL GetFileAttributesExW(const WCHAR* path, GET_FILEEX_INFO_LEVELS level,
                                       void* information);
PLATFORM_API BOOL SetFileAttributesW(const WCHAR* path, DWORD attributes);
PLATFORM_API BOOL DeleteFileW(const WCHAR* path);

// Renames a file or folder. Off Windows nothing is copied: ERROR_NOT_SAME_DEVICE for a folder that
// would leave its volume, and for a file that the host cannot rename to where it is wanted.
PLATFORM_API BOOL MoveFileW(const WCHAR* from, const WCHAR* to);

// Whether a file or folder is there.
PLATFORM_API BOOL PathFileExistsW(const WCHAR* path);

// Off Windows the descriptor in `security` counts here alone, and CreateFileW looks at none; in a
// folder that lets every user make files, only its owner takes a file away.
PLATFORM_API BOOL CreateDirectoryW(const WCHAR* path, SECURITY_ATTRIBUTES* security);
PLATFORM_API BOOL RemoveDirectoryW(const WCHAR* path);

using LPPROGRESS_ROUTINE = DWORD (*)(LARGE_INTEGER total, LARGE_INTEGER done,
                                     LARGE_INTEGER streamSize, LARGE_INTEGER streamDone,
                                     DWORD stream, DWORD reason, HANDLE source, HANDLE target,
                                     void* data);

// Copies a file with its attributes and its time of last write to where none is. A copy that fails
// or is cancelled (ERROR_REQUEST_ABORTED) leaves no target. REQUIRES: `cancel` is null and `flags`
// is COPY_FILE_FAIL_IF_EXISTS.
PLATFORM_API BOOL CopyFileExW(const WCHAR* from, const WCHAR* to, LPPROGRESS_ROUTINE progress,
                              void* data, BOOL* cancel, DWORD flags);

// Lists a folder. INVALID_HANDLE_VALUE with ERROR_FILE_NOT_FOUND when it has no entries, with
// ERROR_PATH_NOT_FOUND when it is missing. FindNextFileW ends with ERROR_NO_MORE_FILES. REQUIRES:
// the pattern is the folder's path with \*.* after it.
//
// Off Windows the data hold a name and whether it is a folder's, which costs no look at the file;
// times, sizes and other attributes but that of a reparse point are 0, and GetFileAttributesExW
// reports them. Names that no path can hold, and those that end in a dot or blank and need the
// prefix \\?\, are left out.
PLATFORM_API HANDLE FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* data);
PLATFORM_API BOOL FindNextFileW(HANDLE listing, WIN32_FIND_DATAW* data);
PLATFORM_API BOOL FindClose(HANDLE listing);

// ---- Streams of the run-time library ----

// Opens a file for reading; `mode` is "r" or "rb", which are the same here. Null on failure, and
// for a folder.
PLATFORM_API std::FILE* _wfopen(const WCHAR* path, const WCHAR* mode);

// A descriptor of the run-time library for an open file. It owns the file from then on, and the
// handle is closed. -1 with errno on failure.
PLATFORM_API int _open_osfhandle(std::intptr_t file, int flags);

// A stream that owns the descriptor from then on. Null with errno on failure.
PLATFORM_API std::FILE* _fdopen(int descriptor, const char* mode);

// Closes a descriptor that no stream took over. -1 with errno on failure.
PLATFORM_API int _close(int descriptor);

}  // namespace brevik::platform

#endif
