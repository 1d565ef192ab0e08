// Clocks: ticks, the high-resolution counter, waiting, and the calendar of the run-time library.
#pragma once

#include <ctime>

#include "platform/types.h"

#ifndef _WIN32

namespace brevik::platform {

// Milliseconds since the system's start, wrapping at 32 bits; exact to some milliseconds.
PLATFORM_API DWORD GetTickCount();

// Suspends the calling thread for at least this many milliseconds.
PLATFORM_API void Sleep(DWORD milliseconds);

// The rate of the counter in counts per second, constant for the life of the system.
PLATFORM_API BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency);
PLATFORM_API BOOL QueryPerformanceCounter(LARGE_INTEGER* counter);

using __time64_t = std::int64_t;

// Seconds since 1970 in Coordinated Universal Time. REQUIRES: a null argument.
PLATFORM_API __time64_t _time64(__time64_t* result);

// The fields of a time in local time. 0, or EINVAL for a time before 1970 or after the year 3000.
PLATFORM_API int _localtime64_s(std::tm* result, const __time64_t* time);

// Seconds since 1970 of a local time; -1 for a time before 1970 or after the year 3000.
PLATFORM_API __time64_t _mktime64(std::tm* time);

}  // namespace brevik::platform

#endif
