// The debugger output of the process.
//
// Off Windows it goes where BREVIK_DEBUG_OUTPUT says: a file to append to, or "-" for standard
// error. Unset, there is no listener and a call costs next to nothing. Text is collected until its
// line is complete and then written at once, so that lines of several processes never mix. Threads
// that give a line in parts agree on a lock; a whole line needs none.
#pragma once

#include "platform/types.h"

#ifdef _WIN32

// The system does not say whether a debugger listens.
inline bool IsDebuggerOutputOpen() {
    return true;
}

#else

namespace brevik::platform {

// Never fails; null is legal.
PLATFORM_API void OutputDebugStringA(const char* text);

// Whether text given to OutputDebugStringA reaches a listener, so that a caller may save itself the
// making of it.
PLATFORM_API bool IsDebuggerOutputOpen();

}  // namespace brevik::platform

#endif
