// Streams of the run-time library: on a wide path, and on an open file that is handed over to it.
#pragma once

#include <cstdint>
#include <cstdio>

#include "platform/types.h"

#ifdef _WIN32

#include <io.h>

#else

namespace brevik::platform {

// Opens a file for reading; `mode` is "r" or "rb", which are the same here. Null on failure, and
// for a folder.
PLATFORM_API std::FILE* _wfopen(const WCHAR* path, const WCHAR* mode);

// A descriptor of the run-time library for an open file. It owns the file from then on, and the
// handle is closed. -1 with errno on failure.
PLATFORM_API int _open_osfhandle(std::intptr_t file, int flags);

// A stream that owns the descriptor from then on. Null with errno on failure.
PLATFORM_API std::FILE* _fdopen(int descriptor, const char* mode);

// Closes a descriptor that no stream took over. -1 with errno on failure.
PLATFORM_API int _close(int descriptor);

}  // namespace brevik::platform

#endif
