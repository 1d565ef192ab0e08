#include "platform/clock.h"

#include <time.h>

#include <chrono>

#include "platform/posix/base/last_error.h"
#include "platform/posix/time/host_times.h"

namespace brevik::platform {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

using Steps = std::chrono::duration<std::int64_t, std::ratio<1, kFileTimeSteps>>;
using StepTime = std::chrono::sys_time<Steps>;

constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;  // of a date that becomes a count; counts go on into 30828

constexpr StepTime kEpoch = sys_days(std::chrono::year(kFirstYear) / 1 / 1);

static_assert((StepTime() - kEpoch).count() == kFileTimeOf1970);

SYSTEMTIME FieldsOf(StepTime time) {
    const auto day = std::chrono::floor<days>(time);
    const year_month_day date(day);
    const std::chrono::hh_mm_ss clock(
        std::chrono::duration_cast<std::chrono::milliseconds>(time - day));
    return {static_cast<WORD>(int{date.year()}),
            static_cast<WORD>(unsigned{date.month()}),
            static_cast<WORD>(std::chrono::weekday(day).c_encoding()),
            static_cast<WORD>(unsigned{date.day()}),
            static_cast<WORD>(clock.hours().count()),
            static_cast<WORD>(clock.minutes().count()),
            static_cast<WORD>(clock.seconds().count()),
            static_cast<WORD>(clock.subseconds().count())};
}

// The count of steps wraps at its ends as the system's does: a time that leaves the calendar is
// refused when its fields are asked for.
FILETIME Shift(const FILETIME& time, int minutes) {
    const std::int64_t steps = std::int64_t{minutes} * 60 * kFileTimeSteps;
    return FileTimeOfCount(CountOf(time) + static_cast<std::uint64_t>(steps));
}

int OffsetNow() {
    return ZoneOffsetAt(time(nullptr));
}

}  // namespace

void GetLocalTime(SYSTEMTIME* time) {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    const FILETIME local = Shift(FileTimeFromHost(now), ZoneOffsetAt(now.tv_sec));
    FileTimeToSystemTime(&local, time);
}

BOOL FileTimeToLocalFileTime(const FILETIME* time, FILETIME* local) {
    *local = Shift(*time, OffsetNow());
    return TRUE;
}

BOOL LocalFileTimeToFileTime(const FILETIME* local, FILETIME* time) {
    *time = Shift(*local, -OffsetNow());
    return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* fields) {
    const std::uint64_t count = CountOf(*time);
    if (count > INT64_MAX) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    *fields = FieldsOf(kEpoch + Steps(static_cast<std::int64_t>(count)));
    return TRUE;
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* fields, FILETIME* time) {
    const year_month_day date(std::chrono::year(fields->wYear), std::chrono::month(fields->wMonth),
                              std::chrono::day(fields->wDay));
    if (fields->wYear < kFirstYear || fields->wYear > kLastYear || fields->wMonth > 12 ||
        fields->wDay > 31 || !date.ok() || fields->wHour > 23 || fields->wMinute > 59 ||
        fields->wSecond > 59 || fields->wMilliseconds > 999) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const StepTime moment =
        sys_days(date) + std::chrono::hours(fields->wHour) + std::chrono::minutes(fields->wMinute) +
        std::chrono::seconds(fields->wSecond) + std::chrono::milliseconds(fields->wMilliseconds);
    *time = FileTimeOfCount(static_cast<std::uint64_t>((moment - kEpoch).count()));
    return TRUE;
}

}  // namespace brevik::platform
