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

constexpr int kDay = 24 * 60 * 60;

// Shorter than the shortest stretch of one time that a zone has, a month.
constexpr int kStep = 14 * kDay;

std::tm LocalFields(time_t moment) {
    tzset();  // localtime_r alone need not notice that TZ has changed
    std::tm fields = {};
    localtime_r(&moment, &fields);
    return fields;
}

int OffsetOf(const std::tm& fields) {
    return static_cast<int>(fields.tm_gmtoff / 60);
}

// The standard time that is nearest to a moment, within a year; else what is in force then.
std::tm NearestStandardTime(time_t moment) {
    for (int distance = 0; distance < 366 * kDay; distance += kStep) {
        for (const time_t near : {moment - distance, moment + distance}) {
            if (const std::tm fields = LocalFields(near); fields.tm_isdst <= 0) {
                return fields;
            }
        }
    }
    return LocalFields(moment);
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

int ZoneOffsetAt(time_t moment) {
    return OffsetOf(LocalFields(moment));
}

DWORD ZoneInformationAt(time_t moment, TIME_ZONE_INFORMATION* information) {
    const std::tm now = LocalFields(moment);
    const std::tm standard = NearestStandardTime(moment);
    *information = {};
    information->Bias = -OffsetOf(standard);
    information->DaylightBias = OffsetOf(standard) - OffsetOf(now);
    return now.tm_isdst != standard.tm_isdst ? TIME_ZONE_ID_DAYLIGHT : TIME_ZONE_ID_UNKNOWN;
}

DWORD GetTimeZoneInformation(TIME_ZONE_INFORMATION* information) {
    return ZoneInformationAt(time(nullptr), information);
}

}  // namespace brevik::platform
