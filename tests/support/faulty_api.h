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

// An operation that fails with what its result says.
#define FAULTY(Result, name, parameters, arguments, failure)  \
    Result name parameters override {                         \
        return Passes(#name) ? API::name arguments : failure; \
    }
    FAULTY(BOOL, CopyFileExW,
           (const WCHAR* from, const WCHAR* to, LPPROGRESS_ROUTINE progress, void* data,
            BOOL* cancel, DWORD flags),
           (from, to, progress, data, cancel, flags), FALSE)
    FAULTY(BOOL, CreateDirectoryW, (const WCHAR* path, SECURITY_ATTRIBUTES* security),
           (path, security), FALSE)
    FAULTY(HANDLE, CreateFileW,
           (const WCHAR* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
            DWORD disposition, DWORD flags, HANDLE model),
           (path, access, share, security, disposition, flags, model), INVALID_HANDLE_VALUE)
    FAULTY(BOOL, DeleteFileW, (const WCHAR* path), (path), FALSE)
    FAULTY(HANDLE, FindFirstFileW, (const WCHAR* pattern, WIN32_FIND_DATAW* data), (pattern, data),
           INVALID_HANDLE_VALUE)
    FAULTY(BOOL, FindNextFileW, (HANDLE listing, WIN32_FIND_DATAW* data), (listing, data), FALSE)
    FAULTY(DWORD, GetCurrentDirectoryW, (DWORD size, WCHAR* path), (size, path), 0)
    FAULTY(BOOL, GetDiskFreeSpaceExW,
           (const WCHAR* folder, ULARGE_INTEGER* own, ULARGE_INTEGER* total, ULARGE_INTEGER* free),
           (folder, own, total, free), FALSE)
    FAULTY(BOOL, GetFileAttributesExW,
           (const WCHAR* path, GET_FILEEX_INFO_LEVELS level, void* data), (path, level, data),
           FALSE)
    FAULTY(BOOL, GetFileSizeEx, (HANDLE file, LARGE_INTEGER* size), (file, size), FALSE)
    FAULTY(DWORD, GetFullPathNameW, (const WCHAR* path, DWORD size, WCHAR* buffer, WCHAR** part),
           (path, size, buffer, part), 0)
    FAULTY(DWORD, GetTempPathW, (DWORD size, WCHAR* path), (size, path), 0)
    FAULTY(BOOL, GetVolumeInformationW,
           (const WCHAR* root, WCHAR* label, DWORD size, DWORD* serial, DWORD* length, DWORD* flags,
            WCHAR* system, DWORD systemSize),
           (root, label, size, serial, length, flags, system, systemSize), FALSE)
    FAULTY(BOOL, MoveFileW, (const WCHAR* from, const WCHAR* to), (from, to), FALSE)
    FAULTY(BOOL, RemoveDirectoryW, (const WCHAR* path), (path), FALSE)
    FAULTY(BOOL, SetCurrentDirectoryW, (const WCHAR* path), (path), FALSE)
    FAULTY(BOOL, SetFileAttributesW, (const WCHAR* path, DWORD attributes), (path, attributes),
           FALSE)
    FAULTY(BOOL, SetFilePointerEx,
           (HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD method),
           (file, distance, position, method), FALSE)
#undef FAULTY

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
