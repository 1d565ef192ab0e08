// The host's error numbers as those of the operating system.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

namespace brevik::platform {

// The error number for an errno; 31 for one that no row names. An operation for which an errno
// means something else answers that itself, and says why.
PLATFORM_API DWORD ErrorFromHost(int hostError);

}  // namespace brevik::platform
