// What the machine's registry tells about the medium behind a drive or share: the values of the key
// HKEY_LOCAL_MACHINE\SOFTWARE\Brevik\Volumes\X for drive X:, and ...\Volumes\SERVER\SHARE for a
// share.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/posix/paths/paths.h"
#include "platform/posix/registry/registry_snapshot.h"
#include "platform/volumes.h"

namespace brevik::platform {

struct VolumeSettings {
    std::u16string label;
    std::optional<UINT> kind;
    std::optional<DWORD> serial;
    bool empty = false;  // no medium is in the drive

    // Whether the drive is there also while the folder that it leads to is not.
    bool TakesMedia() const { return kind == DRIVE_REMOVABLE || kind == DRIVE_CDROM; }
};

// A value of another type than it ought to be is none.
VolumeSettings ReadVolumeSettings(const RegistrySnapshot& registry, const HostPlace& place);

}  // namespace brevik::platform
