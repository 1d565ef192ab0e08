// What the host knows of the file system that a folder lies on.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/errors.h"
#include "platform/volumes.h"

namespace brevik::platform {

struct HostVolume {
    // By their Windows names where they have one, else by the host's: "FAT32", "NTFS", "ext4".
    std::u16string_view fileSystem;

    UINT kind = DRIVE_FIXED;  // DRIVE_REMOTE or DRIVE_CDROM where the file system is of that kind
    DWORD serial = 0;
    DWORD maximumNameLength = 0;  // units
    DWORD flags = 0;
    std::uint64_t size = 0;           // in bytes
    std::uint64_t freeForCaller = 0;  // in bytes
};

// NO_ERROR or an error number.
DWORD ReadHostVolume(const std::string& folder, HostVolume* volume);

}  // namespace brevik::platform
