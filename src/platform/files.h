// Files and folders by path, and open files.
//
// Paths are of the Windows grammar, with or without the prefix \\?\; their names are found without
// regard to case. Operations tell a failure by their result and by GetLastError. Any thread.
#pragma once

#include "platform/errors.h"
#include "platform/file_times.h"
#include "platform/handles.h"
#include "platform/types.h"

#ifdef _WIN32

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
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD TRUNCATE_EXISTING = 5;
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
inline constexpr DWORD FILE_END = 2;
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

// Opens a file, a folder (with FILE_FLAG_BACKUP_SEMANTICS) or, as \\.\X:, the device of a drive.
// Share modes hold between all processes of the machine that open through this operation.
// INVALID_HANDLE_VALUE on failure; error 183 beside a handle when OPEN_ALWAYS or CREATE_ALWAYS met
// an existing file.
PLATFORM_API HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share,
                                SECURITY_ATTRIBUTES* security, DWORD disposition, DWORD flags,
                                HANDLE model);

PLATFORM_API BOOL ReadFile(HANDLE file, void* buffer, DWORD count, DWORD* done, OVERLAPPED* none);
PLATFORM_API BOOL WriteFile(HANDLE file, const void* buffer, DWORD count, DWORD* done,
                            OVERLAPPED* none);
PLATFORM_API BOOL FlushFileBuffers(HANDLE file);

// Both give the low half of a 64-bit number and the high half through the pointer; 0xFFFFFFFF is a
// failure when GetLastError is not 0 as well, which it is after every success.
PLATFORM_API DWORD GetFileSize(HANDLE file, DWORD* high);
PLATFORM_API DWORD SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method);

PLATFORM_API BOOL SetEndOfFile(HANDLE file);

// A null time is left as it is.
PLATFORM_API BOOL SetFileTime(HANDLE file, const FILETIME* creation, const FILETIME* access,
                              const FILETIME* write);
PLATFORM_API BOOL DeviceIoControl(HANDLE device, DWORD code, void* input, DWORD inputSize,
                                  void* output, DWORD outputSize, DWORD* returned,
                                  OVERLAPPED* none);

// Off Windows links are followed; a folder that is reached through one bears the attribute of a
// reparse point, and so does a link that leads nowhere, which can be deleted and moved but has
// nothing to be opened.
PLATFORM_API BOOL GetFileAttributesExW(const WCHAR* path, GET_FILEEX_INFO_LEVELS level,
                                       void* information);
PLATFORM_API BOOL SetFileAttributesW(const WCHAR* path, DWORD attributes);
PLATFORM_API BOOL DeleteFileW(const WCHAR* path);
PLATFORM_API BOOL MoveFileW(const WCHAR* from, const WCHAR* to);

// Whether a file or folder is there.
PLATFORM_API BOOL PathFileExistsW(const WCHAR* path);

// Off Windows the descriptor in `security` counts here alone, and CreateFileW looks at none; in a
// folder that lets everybody make files, nobody but its owner takes another's away.
PLATFORM_API BOOL CreateDirectoryW(const WCHAR* path, SECURITY_ATTRIBUTES* security);
PLATFORM_API BOOL RemoveDirectoryW(const WCHAR* path);

using LPPROGRESS_ROUTINE = DWORD (*)(LARGE_INTEGER total, LARGE_INTEGER done,
                                     LARGE_INTEGER streamSize, LARGE_INTEGER streamDone,
                                     DWORD stream, DWORD reason, HANDLE source, HANDLE target,
                                     void* data);

// Copies a file with its attributes and its time of last write. A copy that fails or is cancelled
// (error 1235) leaves no target that was not there before.
PLATFORM_API BOOL CopyFileExW(const WCHAR* from, const WCHAR* to, LPPROGRESS_ROUTINE progress,
                              void* data, BOOL* cancel, DWORD flags);

// A listing; the pattern is the last component, see posix/name_pattern.h. INVALID_HANDLE_VALUE with
// error 2 when nothing matches, 3 when the folder is missing. FindNextFileW ends with error 18.
// Off Windows the data tell a name and whether it is a folder's, which costs no look at the file;
// times, sizes and other attributes but that of a reparse point are 0 there, and
// GetFileAttributesExW tells them. Names that no path can hold, and those that end in a dot or
// blank and need the prefix \\?\, are passed over.
PLATFORM_API HANDLE FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* data);
PLATFORM_API BOOL FindNextFileW(HANDLE listing, WIN32_FIND_DATAW* data);
PLATFORM_API BOOL FindClose(HANDLE listing);

}  // namespace brevik::platform

#endif
