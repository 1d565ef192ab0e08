// Volumes: the media that drives and shares stand for.
//
// Off Windows a drive is a folder of the machine; size and free space are those of the host's file
// system there. What the host cannot know stands in the machine's registry, see
// docs/machine-folder.md.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifndef _WIN32

namespace brevik::platform {

inline constexpr UINT DRIVE_UNKNOWN = 0;
inline constexpr UINT DRIVE_NO_ROOT_DIR = 1;
inline constexpr UINT DRIVE_REMOVABLE = 2;
inline constexpr UINT DRIVE_FIXED = 3;
inline constexpr UINT DRIVE_REMOTE = 4;
inline constexpr UINT DRIVE_CDROM = 5;

union ULARGE_INTEGER {
    ULONGLONG QuadPart;
};

// Each takes the root of a drive or share, with the backslash at its end. Errors:
// ERROR_PATH_NOT_FOUND for a missing drive, ERROR_BAD_NETPATH for a missing share, ERROR_NOT_READY
// for a drive without its medium.

// REQUIRES: there is room for a label of 256 and a file system of 16 units.
PLATFORM_API BOOL GetVolumeInformationW(const WCHAR* root, WCHAR* label, DWORD labelSize,
                                        DWORD* serial, DWORD* maximumNameLength, DWORD* flags,
                                        WCHAR* fileSystem, DWORD fileSystemSize);

// DRIVE_NO_ROOT_DIR where there is no such drive or share.
PLATFORM_API UINT GetDriveTypeW(const WCHAR* root);

// The first two out pointers may be null. REQUIRES: the last is.
PLATFORM_API BOOL GetDiskFreeSpaceExW(const WCHAR* root, ULARGE_INTEGER* freeForCaller,
                                      ULARGE_INTEGER* total, ULARGE_INTEGER* free);

}  // namespace brevik::platform

#endif
