// The processes of the machine, as far as the library asks: this one, its parent, and their files.
#pragma once

#include "platform/errors.h"
#include "platform/handles.h"
#include "platform/modules.h"
#include "platform/types.h"

#ifdef _WIN32

#include <psapi.h>
#include <tlhelp32.h>

#else

namespace brevik::platform {

inline constexpr DWORD TH32CS_SNAPPROCESS = 0x2;

struct PROCESSENTRY32W {
    DWORD dwSize;
    DWORD cntUsage;
    DWORD th32ProcessID;
    ULONG_PTR th32DefaultHeapID;
    DWORD th32ModuleID;
    DWORD cntThreads;
    DWORD th32ParentProcessID;
    LONG pcPriClassBase;
    DWORD dwFlags;
    WCHAR szExeFile[MAX_PATH];
};

// A walk over the running processes: off Windows the calling one alone, with its number and its
// parent's, and the rest of the entry left as it was.
PLATFORM_API HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD process);

// The first and each next entry; false with error 18 after the last.
PLATFORM_API BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W* entry);
PLATFORM_API BOOL Process32NextW(HANDLE snapshot, PROCESSENTRY32W* entry);

PLATFORM_API DWORD GetCurrentProcessId();

// A handle on a running process; null with ERROR_INVALID_PARAMETER where none of this number can be
// seen. Off Windows a process is opened for its program's folder alone: null with
// ERROR_ACCESS_DENIED where libraries in it could be another user's, see
// posix/machine/programs.h.
PLATFORM_API HANDLE OpenProcess(DWORD access, BOOL inherit, DWORD process);

// The path of a process's executable. REQUIRES: a null module. Result: its length without the NUL,
// cut to `size` like GetModuleFileNameW; 0 when it cannot be had.
PLATFORM_API DWORD GetModuleFileNameExW(HANDLE process, HMODULE module, WCHAR* path, DWORD size);

}  // namespace brevik::platform

#endif
