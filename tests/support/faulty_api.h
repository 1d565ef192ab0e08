// A platform table whose operations fail when a test tells them to, and else do what they do.
#pragma once

#include <map>
#include <string>

#include "filesystem/Private/Windows/API.h"

class FaultyApi : public FileSystem_Win32::API {
  public:
    FaultyApi() { FileSystem_Win32::SetApi(this); }
    FaultyApi(const FaultyApi&) = delete;
    FaultyApi& operator=(const FaultyApi&) = delete;
    ~FaultyApi() { FileSystem_Win32::SetApi(nullptr); }

    // Makes an operation fail with this error, once `successes` calls have gone through; 0 for an
    // error takes that back.
    void Break(const std::string& operation, DWORD error, int successes = 0) {
        faults_[operation] = {error, successes};
    }

    // How often an operation was called.
    int Calls(const std::string& operation) { return calls_[operation]; }

    BOOL CopyFileExW(const WCHAR* from, const WCHAR* to, LPPROGRESS_ROUTINE progress, void* data,
                     BOOL* cancel, DWORD flags) override {
        return Passes("CopyFileExW") && API::CopyFileExW(from, to, progress, data, cancel, flags);
    }
    BOOL CreateDirectoryW(const WCHAR* path, SECURITY_ATTRIBUTES* security) override {
        return Passes("CreateDirectoryW") && API::CreateDirectoryW(path, security);
    }
    HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                       DWORD disposition, DWORD flags, HANDLE model) override {
        return Passes("CreateFileW")
                   ? API::CreateFileW(path, access, share, security, disposition, flags, model)
                   : INVALID_HANDLE_VALUE;
    }
    BOOL DeleteFileW(const WCHAR* path) override {
        return Passes("DeleteFileW") && API::DeleteFileW(path);
    }
    HANDLE FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* data) override {
        return Passes("FindFirstFileW") ? API::FindFirstFileW(pattern, data) : INVALID_HANDLE_VALUE;
    }
    BOOL FindNextFileW(HANDLE listing, WIN32_FIND_DATAW* data) override {
        return Passes("FindNextFileW") && API::FindNextFileW(listing, data);
    }
    DWORD GetCurrentDirectoryW(DWORD size, WCHAR* path) override {
        return Passes("GetCurrentDirectoryW") ? API::GetCurrentDirectoryW(size, path) : 0;
    }
    BOOL GetDiskFreeSpaceExW(const WCHAR* folder, ULARGE_INTEGER* freeForCaller,
                             ULARGE_INTEGER* total, ULARGE_INTEGER* free) override {
        return Passes("GetDiskFreeSpaceExW") &&
               API::GetDiskFreeSpaceExW(folder, freeForCaller, total, free);
    }
    BOOL GetFileAttributesExW(const WCHAR* path, GET_FILEEX_INFO_LEVELS level,
                              void* information) override {
        return Passes("GetFileAttributesExW") &&
               API::GetFileAttributesExW(path, level, information);
    }
    BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size) override {
        return Passes("GetFileSizeEx") && API::GetFileSizeEx(file, size);
    }
    DWORD GetFullPathNameW(const WCHAR* path, DWORD size, WCHAR* buffer, WCHAR** part) override {
        return Passes("GetFullPathNameW") ? API::GetFullPathNameW(path, size, buffer, part) : 0;
    }
    DWORD GetTempPathW(DWORD size, WCHAR* path) override {
        return Passes("GetTempPathW") ? API::GetTempPathW(size, path) : 0;
    }
    BOOL GetVolumeInformationW(const WCHAR* root, WCHAR* label, DWORD labelSize, DWORD* serial,
                               DWORD* maximumNameLength, DWORD* flags, WCHAR* fileSystem,
                               DWORD fileSystemSize) override {
        return Passes("GetVolumeInformationW") &&
               API::GetVolumeInformationW(root, label, labelSize, serial, maximumNameLength, flags,
                                          fileSystem, fileSystemSize);
    }
    BOOL MoveFileW(const WCHAR* from, const WCHAR* to) override {
        return Passes("MoveFileW") && API::MoveFileW(from, to);
    }
    BOOL RemoveDirectoryW(const WCHAR* path) override {
        return Passes("RemoveDirectoryW") && API::RemoveDirectoryW(path);
    }
    BOOL SetCurrentDirectoryW(const WCHAR* path) override {
        return Passes("SetCurrentDirectoryW") && API::SetCurrentDirectoryW(path);
    }
    BOOL SetFileAttributesW(const WCHAR* path, DWORD attributes) override {
        return Passes("SetFileAttributesW") && API::SetFileAttributesW(path, attributes);
    }
    BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position,
                          DWORD method) override {
        return Passes("SetFilePointerEx") &&
               API::SetFilePointerEx(file, distance, position, method);
    }

  protected:
    bool Passes(const std::string& operation) {
        ++calls_[operation];
        Fault& fault = faults_[operation];
        if (fault.error == 0 || fault.successes-- > 0) {
            return true;
        }
        SetLastError(fault.error);
        return false;
    }

  private:
    struct Fault {
        DWORD error = 0;
        int successes = 0;
    };

    std::map<std::string, Fault> faults_;
    std::map<std::string, int> calls_;
};
