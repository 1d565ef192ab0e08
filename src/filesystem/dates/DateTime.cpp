#include "filesystem/dates/DateTime.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace {

constexpr std::uint32_t kMillisecondsPerSecond = 1000;
constexpr int kFirstTmYear = 1900;

std::uint8_t Field(int value) {
    return static_cast<std::uint8_t>(value);
}

std::int32_t ClampToDayNumber(std::int64_t day) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(day, Limits::min(), Limits::max()));
}

}  // namespace

TimeOfDay::TimeOfDay(std::int64_t ticks) {
    std::int64_t days = ticks / kTicksPerDay;
    if (ticks % kTicksPerDay < 0) {
        --days;
    }
    const auto rest = static_cast<std::int32_t>(ticks - days * kTicksPerDay);
    const std::int32_t seconds = rest / kTicksPerSecond;
    ticks_ = static_cast<std::uint32_t>(rest % kTicksPerSecond);
    second_ = static_cast<std::uint8_t>(seconds % 60);
    minute_ = static_cast<std::uint8_t>(seconds / 60 % 60);
    hour_ = static_cast<std::uint8_t>(seconds / 3600);
    carryDays_ = static_cast<std::int8_t>(days);
}

TimeZone TimeZone::GetLocal() {
    TIME_ZONE_INFORMATION information = {};
    const bool isDaylight = GetTimeZoneInformation(&information) == TIME_ZONE_ID_DAYLIGHT;
    const long bias = information.Bias + (isDaylight ? information.DaylightBias : 0);
    const long minutes = std::labs(bias);
    return TimeZone(static_cast<std::uint8_t>(minutes / 60),
                    static_cast<std::uint8_t>(minutes % 60), information.Bias > 0, isDaylight);
}

DateTime::DateTime(std::int64_t ticks, const TimeZone& zone) {
    std::int64_t day = ticks / TimeOfDay::kTicksPerDay;
    std::int64_t rest = ticks % TimeOfDay::kTicksPerDay;
    if (rest < 0) {
        rest += TimeOfDay::kTicksPerDay;
        --day;
    }
    time_ = TimeOfDay(rest);
    date_ = Date(ClampToDayNumber(day));
    ConvertToZone(zone);
}

DateTime DateTime::GetNow() {
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    now.wMilliseconds = 0;
    return FromSystemTime(now);
}

DateTime DateTime::FromTimeT(__time64_t seconds) {
    std::tm fields = {};
    if (_localtime64_s(&fields, &seconds) != 0) {
        return {};
    }
    return DateTime(TimeOfDay(Field(fields.tm_hour), Field(fields.tm_min), Field(fields.tm_sec)),
                    Date(Field(fields.tm_mday), Field(fields.tm_mon + 1),
                         static_cast<std::int16_t>(fields.tm_year + kFirstTmYear)),
                    TimeZone::GetLocal());
}

DateTime DateTime::FromFileTime(const FILETIME& time) {
    FILETIME local = {};
    SYSTEMTIME fields = {};
    if (!FileTimeToLocalFileTime(&time, &local) || !FileTimeToSystemTime(&local, &fields)) {
        return {};
    }
    return FromSystemTime(fields);
}

DateTime DateTime::FromSystemTime(const SYSTEMTIME& time) {
    const std::uint32_t ticks =
        time.wMilliseconds * std::uint32_t{TimeOfDay::kTicksPerSecond} / kMillisecondsPerSecond;
    return DateTime(
        TimeOfDay(Field(time.wHour), Field(time.wMinute), Field(time.wSecond), ticks),
        Date(Field(time.wDay), Field(time.wMonth), static_cast<std::int16_t>(time.wYear)),
        TimeZone::GetLocal());
}

__time64_t DateTime::ToTimeT() const {
    std::tm fields = {};
    fields.tm_year = date_.GetYear() - kFirstTmYear;
    fields.tm_mon = date_.GetMonth() - 1;
    fields.tm_mday = date_.GetDay();
    fields.tm_hour = time_.GetHour();
    fields.tm_min = time_.GetMinute();
    fields.tm_sec = time_.GetSecond();
    // The value knows whether daylight saving is in force now, not whether it was at its own date.
    fields.tm_isdst = -1;
    return _mktime64(&fields);
}

FILETIME DateTime::ToFileTime() const {
    const SYSTEMTIME fields = ToSystemTime();
    FILETIME local = {};
    FILETIME time = {};
    if (!SystemTimeToFileTime(&fields, &local) || !LocalFileTimeToFileTime(&local, &time)) {
        return {};
    }
    return time;
}

SYSTEMTIME DateTime::ToSystemTime() const {
    SYSTEMTIME fields = {};
    fields.wYear = static_cast<WORD>(date_.GetYear());
    fields.wMonth = static_cast<WORD>(date_.GetMonth());
    fields.wDay = static_cast<WORD>(date_.GetDay());
    fields.wDayOfWeek = static_cast<WORD>(date_.GetWeekDay());
    fields.wHour = static_cast<WORD>(time_.GetHour());
    fields.wMinute = static_cast<WORD>(time_.GetMinute());
    fields.wSecond = static_cast<WORD>(time_.GetSecond());
    fields.wMilliseconds = static_cast<WORD>(static_cast<std::uint32_t>(time_.GetTicks()) *
                                             kMillisecondsPerSecond / TimeOfDay::kTicksPerSecond);
    return fields;
}

std::int64_t DateTime::GetTotalTicks() const {
    return std::int64_t{date_.GetDayNumber()} * TimeOfDay::kTicksPerDay + time_.GetTotalTicks() -
           zone_.GetOffsetTicks();
}

DateTime DateTime::AddSeconds(std::int64_t seconds) const {
    // Half of what a count holds is far beyond the calendar already, where every moment is one.
    constexpr std::int64_t kMost =
        std::numeric_limits<std::int64_t>::max() / 2 / TimeOfDay::kTicksPerSecond;
    return DateTime(
        GetTotalTicks() + std::clamp(seconds, -kMost, kMost) * TimeOfDay::kTicksPerSecond,
        TimeZone::GetLocal());
}

std::int64_t DateTime::GetSecondsBetween(const DateTime& earlier) const {
    return (GetTotalTicks() - earlier.GetTotalTicks()) / TimeOfDay::kTicksPerSecond;
}

void DateTime::ConvertToZone(const TimeZone& zone) {
    if (zone == zone_) {
        return;
    }
    // A negative time, or one of more than a day, moves the date by the days it carries.
    const TimeOfDay moved(time_.GetTotalTicks() + zone.GetOffsetTicks() - zone_.GetOffsetTicks());
    if (moved.GetCarryDays() != 0) {
        date_ = Date(date_.GetDayNumber() + moved.GetCarryDays());
    }
    time_ = TimeOfDay(Field(moved.GetHour()), Field(moved.GetMinute()), Field(moved.GetSecond()),
                      static_cast<std::uint32_t>(moved.GetTicks()));
    zone_ = zone;
}
