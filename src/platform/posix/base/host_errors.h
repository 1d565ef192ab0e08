// The host's error numbers as those of the operating system.
#pragma once

#include <cerrno>

#include "platform/errors.h"
#include "platform/types.h"

namespace brevik::platform {

// The error number for an errno; ERROR_GEN_FAILURE for one that the table does not name. An
// operation for which an errno means something else handles it itself, and says why.
PLATFORM_API DWORD ErrorFromHost(int hostError);

// NO_ERROR for a call of the host that returned 0, else the error number for its errno.
inline DWORD ErrorOf(int hostResult) {
    return hostResult == 0 ? NO_ERROR : ErrorFromHost(errno);
}

}  // namespace brevik::platform
