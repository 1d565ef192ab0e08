// Handing an open file over to the run-time library.
#pragma once

#include <cstdint>
#include <cstdio>

#include "platform/types.h"

#ifdef _WIN32

#include <io.h>

#else

namespace brevik::platform {

// A descriptor of the run-time library on an open file, which from then on belongs to it: the
// handle is none any more. -1 with errno on failure.
PLATFORM_API int _open_osfhandle(std::intptr_t file, int flags);

// A stream on the descriptor, which from then on belongs to it. Null with errno on failure.
PLATFORM_API std::FILE* _fdopen(int descriptor, const char* mode);

// Closes a descriptor that no stream took over. -1 with errno on failure.
PLATFORM_API int _close(int descriptor);

}  // namespace brevik::platform

#endif
