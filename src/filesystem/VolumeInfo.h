// What identifies a medium, and what the path rules need to know of it.
//
// Equality and order look at root, label and serial alone: another medium in the same drive is
// another volume.
#pragma once

#include <cstdint>

#include "platform/types.h"

struct VolumeInfo {
    VolumeInfo() = default;

    // Asks the platform about the volume with this root, which ends in a backslash. A failure
    // raises through ThrowFileError with the root.
    explicit VolumeInfo(const WideString& rootPath);

    std::uint32_t flags = 0;
    std::uint32_t max_name_length = 0;  // of one component, in UTF-16 units
    std::uint32_t serial = 0;
    WideString label;
    WideString root;  // in lower case
    WideString file_system;
};

bool operator==(const VolumeInfo& a, const VolumeInfo& b);
bool operator<(const VolumeInfo& a, const VolumeInfo& b);
