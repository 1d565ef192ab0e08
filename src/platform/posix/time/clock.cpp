#include "platform/clock.h"

#include <time.h>

#include <cerrno>

namespace brevik::platform {
namespace {

constexpr LONGLONG kCountsPerSecond = 10'000'000;
constexpr LONGLONG kNanosecondsPerCount = 1'000'000'000 / kCountsPerSecond;

// The run-time library's calendar begins with 1970 and ends with this second of the year 3000.
constexpr __time64_t kLastTime = 32'535'215'999;

constexpr bool IsInCalendar(__time64_t time) {
    return time >= 0 && time <= kLastTime;
}

}  // namespace

DWORD GetTickCount() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<DWORD>(now.tv_sec * 1000 + now.tv_nsec / 1'000'000);
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency) {
    frequency->QuadPart = kCountsPerSecond;
    return TRUE;
}

BOOL QueryPerformanceCounter(LARGE_INTEGER* counter) {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    counter->QuadPart = now.tv_sec * kCountsPerSecond + now.tv_nsec / kNanosecondsPerCount;
    return TRUE;
}

void Sleep(DWORD milliseconds) {
    timespec rest = {static_cast<time_t>(milliseconds / 1000),
                     static_cast<long>(milliseconds % 1000) * 1'000'000};
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
}

__time64_t _time64(__time64_t*) {
    return ::time(nullptr);
}

int _localtime64_s(std::tm* result, const __time64_t* time) {
    const time_t seconds = *time;
    tzset();  // localtime_r alone need not notice that TZ has changed
    return IsInCalendar(seconds) && localtime_r(&seconds, result) != nullptr ? 0 : EINVAL;
}

__time64_t _mktime64(std::tm* time) {
    const time_t seconds = mktime(time);
    return IsInCalendar(seconds) ? seconds : -1;
}

}  // namespace brevik::platform
