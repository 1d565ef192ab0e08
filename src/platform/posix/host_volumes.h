// What the host tells about the file system that a folder lies on.
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

    UINT kind = DRIVE_FIXED;  // remote or a CD where the file system tells so
    DWORD serial = 0;
    DWORD maximumNameLength = 0;  // units
    DWORD flags = 0;
    std::uint64_t size = 0;  // bytes, as are the next two
    std::uint64_t free = 0;
    std::uint64_t freeForCaller = 0;
};

// 0 or an error number.
DWORD ReadHostVolume(const std::string& folder, HostVolume* volume);

}  // namespace brevik::platform
