// Devices of drives: what \\.\X: opens, to lock a volume and to put it to rest.
//
// A volume can be locked when it is removable and holds a medium, while no file on it is open
// through this layer and no other device handle has it locked. The lock ends with the handle. It
// keeps other handles from locking, not files from being opened.
#pragma once

#include <string_view>

#include "platform/types.h"

namespace brevik::platform {

bool IsDriveDevice(std::u16string_view path);

// INVALID_HANDLE_VALUE with ERROR_FILE_NOT_FOUND where there is no such drive.
HANDLE OpenDriveDevice(std::u16string_view path);

}  // namespace brevik::platform
