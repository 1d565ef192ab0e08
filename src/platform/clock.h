// Clocks: ticks, the high-resolution counter, waiting, the calendar of the run-time library; times
// of files, the calendar time of the system, and the zone of the machine.
#pragma once

#include <ctime>

#include "platform/errors.h"
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

// 100-nanosecond steps since 1601 in Coordinated Universal Time, in two halves.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

// A date and time by its fields; wDayOfWeek is 0 for Sunday.
struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

inline constexpr DWORD TIME_ZONE_ID_UNKNOWN = 0;
inline constexpr DWORD TIME_ZONE_ID_DAYLIGHT = 2;

// Biases are minutes to add to local time for Coordinated Universal Time.
struct TIME_ZONE_INFORMATION {
    LONG Bias;
    WCHAR StandardName[32];
    SYSTEMTIME StandardDate;
    LONG StandardBias;
    WCHAR DaylightName[32];
    SYSTEMTIME DaylightDate;
    LONG DaylightBias;
};

// The zone in force now: daylight time, with the bias of the nearest standard time, or else
// unknown, whether the zone has two times or one. Off Windows names and dates are empty.
PLATFORM_API DWORD GetTimeZoneInformation(TIME_ZONE_INFORMATION* information);
PLATFORM_API void GetLocalTime(SYSTEMTIME* time);

// These two shift by the zone's offset that is in force now, whatever the time is.
PLATFORM_API BOOL FileTimeToLocalFileTime(const FILETIME* time, FILETIME* local);
PLATFORM_API BOOL LocalFileTimeToFileTime(const FILETIME* local, FILETIME* time);

// Years from 1601 to 30827. False with ERROR_INVALID_PARAMETER for a time or fields beyond them;
// SystemTimeToFileTime does not look at wDayOfWeek.
PLATFORM_API BOOL FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* fields);
PLATFORM_API BOOL SystemTimeToFileTime(const SYSTEMTIME* fields, FILETIME* time);

}  // namespace brevik::platform

#endif
