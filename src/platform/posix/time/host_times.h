// File times as counts, and the host's times as file times.
#pragma once

#include <time.h>

#include <cstdint>

#include "platform/clock.h"

namespace brevik::platform {

inline constexpr std::int64_t kFileTimeSteps = 10'000'000;  // a second
inline constexpr std::int64_t kFileTimeOf1970 = 116'444'736'000'000'000;

constexpr std::uint64_t CountOf(const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

constexpr FILETIME FileTimeOfCount(std::uint64_t count) {
    return {static_cast<DWORD>(count), static_cast<DWORD>(count >> 32)};
}

// Steps are cut, not rounded. A time before 1601 becomes 0, the file time that means none.
constexpr FILETIME FileTimeFromHost(const timespec& time) {
    constexpr std::int64_t kFirst = -kFileTimeOf1970 / kFileTimeSteps;
    constexpr std::int64_t kLast = (INT64_MAX - kFileTimeOf1970) / kFileTimeSteps - 1;
    if (time.tv_sec < kFirst) {
        return {};
    }
    if (time.tv_sec > kLast) {
        return FileTimeOfCount(INT64_MAX);
    }
    return FileTimeOfCount(static_cast<std::uint64_t>(time.tv_sec * kFileTimeSteps +
                                                      time.tv_nsec / 100 + kFileTimeOf1970));
}

// Minutes from Coordinated Universal Time to local time at this moment, by the host's
// rules: those of the variable TZ, which may change while the process runs, else those of
// /etc/localtime.
PLATFORM_API int ZoneOffsetAt(time_t moment);

// What GetTimeZoneInformation returns at this moment.
PLATFORM_API DWORD ZoneInformationAt(time_t moment, TIME_ZONE_INFORMATION* information);

// REQUIRES: the count lies below 2 to the 63rd, where file times end.
constexpr timespec HostTimeFromFileTime(const FILETIME& time) {
    const std::int64_t count = static_cast<std::int64_t>(CountOf(time)) - kFileTimeOf1970;
    const std::int64_t seconds = count / kFileTimeSteps - (count % kFileTimeSteps < 0 ? 1 : 0);
    return {seconds, (count - seconds * kFileTimeSteps) * 100};
}

}  // namespace brevik::platform
