// Holds the places of operations that are being written until they are there.

#include "platform/files.h"
#include "platform/shell_links.h"
#include "platform/volumes.h"

namespace brevik::platform {

__attribute__((weak)) BOOL CopyFileExW(const WCHAR*, const WCHAR*, LPPROGRESS_ROUTINE, void*, BOOL*,
                                       DWORD) {
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}

__attribute__((weak)) UINT GetDriveTypeW(const WCHAR*) {
    return DRIVE_FIXED;
}

__attribute__((weak)) BOOL GetVolumeInformationW(const WCHAR*, WCHAR*, DWORD, DWORD*, DWORD*,
                                                 DWORD*, WCHAR*, DWORD) {
    return TRUE;
}

__attribute__((weak)) HANDLE FindFirstFileW(const WCHAR*, WIN32_FIND_DATAW*) {
    SetLastError(ERROR_NOT_SUPPORTED);
    return INVALID_HANDLE_VALUE;
}

__attribute__((weak)) BOOL FindNextFileW(HANDLE, WIN32_FIND_DATAW*) {
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}

__attribute__((weak)) BOOL FindClose(HANDLE) {
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}

__attribute__((weak)) HRESULT CoCreateInstance(REFCLSID, IUnknown*, DWORD, REFIID, void** object) {
    *object = nullptr;
    return REGDB_E_CLASSNOTREG;
}

}  // namespace brevik::platform
