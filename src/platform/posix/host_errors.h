// The host's error numbers as those of the operating system.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

namespace brevik::platform {

// The error number for an errno; ERROR_GEN_FAILURE for one that the table does not name. An
// operation for which an errno means something else handles it itself, and says why.
PLATFORM_API DWORD ErrorFromHost(int hostError);

}  // namespace brevik::platform
