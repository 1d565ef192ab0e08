#include "filesystem/Private/Windows/API.h"

#include <atomic>

namespace FileSystem_Win32 {
namespace {

// It holds nothing and is never destroyed, so that a host's last thread may
// still come through.
constinit API own_table;
constinit std::atomic<API*> current_table = nullptr;

// A half of 0xFFFFFFFF may also be half of a number.
bool HasFailed(DWORD lowHalf) {
    return lowHalf == 0xFFFFFFFF && ::GetLastError() != NO_ERROR;
}

LONGLONG FromHalves(DWORD high, DWORD low) {
    return static_cast<LONGLONG>((static_cast<ULONGLONG>(high) << 32) | low);
}

}  // namespace

BOOL API::CopyFileExW(const WCHAR* from, const WCHAR* to, LPPROGRESS_ROUTINE progress, void* data,
                      BOOL* cancel, DWORD flags) {
    return ::CopyFileExW(from, to, progress, data, cancel, flags);
}

BOOL API::CreateDirectoryW(const WCHAR* path, SECURITY_ATTRIBUTES* security) {
    return ::CreateDirectoryW(path, security);
}

HANDLE API::CreateFileW(const WCHAR* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                        DWORD disposition, DWORD flags, HANDLE model) {
    return ::CreateFileW(path, access, share, security, disposition, flags, model);
}

BOOL API::DeleteFileW(const WCHAR* path) {
    return ::DeleteFileW(path);
}

HANDLE API::FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* data) {
    return ::FindFirstFileW(pattern, data);
}

BOOL API::FindNextFileW(HANDLE listing, WIN32_FIND_DATAW* data) {
    return ::FindNextFileW(listing, data);
}

DWORD API::GetCurrentDirectoryW(DWORD size, WCHAR* path) {
    return ::GetCurrentDirectoryW(size, path);
}

BOOL API::GetDiskFreeSpaceExW(const WCHAR* folder, ULARGE_INTEGER* freeForCaller,
                              ULARGE_INTEGER* total, ULARGE_INTEGER* free) {
    return ::GetDiskFreeSpaceExW(folder, freeForCaller, total, free);
}

UINT API::GetDriveTypeW(const WCHAR* root) {
    return ::GetDriveTypeW(root);
}

BOOL API::GetFileAttributesExW(const WCHAR* path, GET_FILEEX_INFO_LEVELS level, void* information) {
    return ::GetFileAttributesExW(path, level, information);
}

BOOL API::GetFileSizeEx(HANDLE file, LARGE_INTEGER* size) {
    DWORD high = 0;
    const DWORD low = ::GetFileSize(file, &high);
    if (HasFailed(low)) {
        return FALSE;
    }
    size->QuadPart = FromHalves(high, low);
    return TRUE;
}

DWORD API::GetFullPathNameW(const WCHAR* path, DWORD size, WCHAR* buffer, WCHAR** filePart) {
    return ::GetFullPathNameW(path, size, buffer, filePart);
}

DWORD API::GetTempPathW(DWORD size, WCHAR* path) {
    return ::GetTempPathW(size, path);
}

BOOL API::GetVolumeInformationW(const WCHAR* root, WCHAR* label, DWORD labelSize, DWORD* serial,
                                DWORD* maximumNameLength, DWORD* flags, WCHAR* fileSystem,
                                DWORD fileSystemSize) {
    return ::GetVolumeInformationW(root, label, labelSize, serial, maximumNameLength, flags,
                                   fileSystem, fileSystemSize);
}

BOOL API::MoveFileW(const WCHAR* from, const WCHAR* to) {
    return ::MoveFileW(from, to);
}

BOOL API::RemoveDirectoryW(const WCHAR* path) {
    return ::RemoveDirectoryW(path);
}

BOOL API::SetCurrentDirectoryW(const WCHAR* path) {
    return ::SetCurrentDirectoryW(path);
}

BOOL API::SetFileAttributesW(const WCHAR* path, DWORD attributes) {
    return ::SetFileAttributesW(path, attributes);
}

BOOL API::SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position,
                           DWORD method) {
    LONG high = static_cast<LONG>(distance.QuadPart >> 32);
    const DWORD low = ::SetFilePointer(file, static_cast<LONG>(distance.QuadPart), &high, method);
    if (HasFailed(low)) {
        return FALSE;
    }
    if (position != nullptr) {
        position->QuadPart = FromHalves(static_cast<DWORD>(high), low);
    }
    return TRUE;
}

API* GetApi() {
    return current_table.load(std::memory_order_acquire);
}

void SetApi(API* table) {
    current_table.store(table != nullptr ? table : &own_table, std::memory_order_release);
}

void EnsureApi() {
    API* none = nullptr;
    current_table.compare_exchange_strong(none, &own_table, std::memory_order_acq_rel);
}

void ClearApi() {
    current_table.store(nullptr, std::memory_order_release);
}

}  // namespace FileSystem_Win32
