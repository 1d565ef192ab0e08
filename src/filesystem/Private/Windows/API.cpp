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

BOOL API::GetFileSizeEx(HANDLE file, LARGE_INTEGER* size) {
    DWORD high = 0;
    const DWORD low = ::GetFileSize(file, &high);
    if (HasFailed(low)) {
        return FALSE;
    }
    size->QuadPart = FromHalves(high, low);
    return TRUE;
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
