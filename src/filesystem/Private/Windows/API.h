// The table through which the library reaches most file services of the platform: the one seam
// between its logic and the operating system. Each operation is the platform's of the same name.
//
// A table holds nothing and may be used on any thread. Services on open handles and plain values
// (ReadFile, FindClose, GetLastError) are called directly.
#pragma once

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/types.h"
#include "platform/volumes.h"

namespace FileSystem_Win32 {

class API {
  public:
    virtual BOOL CopyFileExW(const WCHAR* from, const WCHAR* to, LPPROGRESS_ROUTINE progress,
                             void* data, BOOL* cancel, DWORD flags) {
        return ::CopyFileExW(from, to, progress, data, cancel, flags);
    }
    virtual BOOL CreateDirectoryW(const WCHAR* path, SECURITY_ATTRIBUTES* security) {
        return ::CreateDirectoryW(path, security);
    }
    virtual HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share,
                               SECURITY_ATTRIBUTES* security, DWORD disposition, DWORD flags,
                               HANDLE model) {
        return ::CreateFileW(path, access, share, security, disposition, flags, model);
    }
    virtual BOOL DeleteFileW(const WCHAR* path) { return ::DeleteFileW(path); }
    virtual HANDLE FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* data) {
        return ::FindFirstFileW(pattern, data);
    }
    virtual BOOL FindNextFileW(HANDLE listing, WIN32_FIND_DATAW* data) {
        return ::FindNextFileW(listing, data);
    }
    virtual DWORD GetCurrentDirectoryW(DWORD size, WCHAR* path) {
        return ::GetCurrentDirectoryW(size, path);
    }
    virtual BOOL GetDiskFreeSpaceExW(const WCHAR* folder, ULARGE_INTEGER* freeForCaller,
                                     ULARGE_INTEGER* total, ULARGE_INTEGER* free) {
        return ::GetDiskFreeSpaceExW(folder, freeForCaller, total, free);
    }
    virtual UINT GetDriveTypeW(const WCHAR* root) { return ::GetDriveTypeW(root); }
    virtual BOOL GetFileAttributesExW(const WCHAR* path, GET_FILEEX_INFO_LEVELS level,
                                      void* information) {
        return ::GetFileAttributesExW(path, level, information);
    }

    // This one and SetFilePointerEx are made from the calls with 32-bit halves, since the Windows
    // 9x family lacks the others.
    virtual BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size);
    virtual DWORD GetFullPathNameW(const WCHAR* path, DWORD size, WCHAR* buffer, WCHAR** filePart) {
        return ::GetFullPathNameW(path, size, buffer, filePart);
    }
    virtual DWORD GetTempPathW(DWORD size, WCHAR* path) { return ::GetTempPathW(size, path); }
    virtual BOOL GetVolumeInformationW(const WCHAR* root, WCHAR* label, DWORD labelSize,
                                       DWORD* serial, DWORD* maximumNameLength, DWORD* flags,
                                       WCHAR* fileSystem, DWORD fileSystemSize) {
        return ::GetVolumeInformationW(root, label, labelSize, serial, maximumNameLength, flags,
                                       fileSystem, fileSystemSize);
    }
    virtual BOOL MoveFileW(const WCHAR* from, const WCHAR* to) { return ::MoveFileW(from, to); }
    virtual BOOL RemoveDirectoryW(const WCHAR* path) { return ::RemoveDirectoryW(path); }
    virtual BOOL SetCurrentDirectoryW(const WCHAR* path) { return ::SetCurrentDirectoryW(path); }
    virtual BOOL SetFileAttributesW(const WCHAR* path, DWORD attributes) {
        return ::SetFileAttributesW(path, attributes);
    }

    // `position`, which may be null, receives the new position.
    virtual BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position,
                                  DWORD method);
};

// The process's table; null before the first FileSystem_Start and after FileSystem_Stop.
API* GetApi();

// Puts a table, which must outlive its use, in the place of the library's own; null puts that back.
// FileSystem_Start keeps a table that is set. No other thread may be in the library meanwhile.
void SetApi(API* table);

// Sets the library's own table where there is none, and forgets whichever is set.
void EnsureApi();
void ClearApi();

}  // namespace FileSystem_Win32
