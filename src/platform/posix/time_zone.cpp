#include "platform/posix/time_zone.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/host_text.h"

namespace brevik::platform {
namespace {

// Shorter than the shortest stretch of one time that a zone has: a month of fasting.
constexpr time_t kStep = 5 * 24 * 60 * 60;

// localtime_r alone need not notice that TZ has changed.
std::tm LocalFields(time_t moment) {
    tzset();
    std::tm fields = {};
    localtime_r(&moment, &fields);
    return fields;
}

int OffsetOf(const std::tm& fields) {
    return static_cast<int>(fields.tm_gmtoff / 60);
}

bool IsSameTime(const std::tm& left, const std::tm& right) {
    return left.tm_gmtoff == right.tm_gmtoff && left.tm_isdst == right.tm_isdst;
}

// One of the two times of a zone, and the date and clock at which it begins, by the clock that it
// ends.
struct ZoneTime {
    int offset = 0;
    std::u16string name;
    SYSTEMTIME begin = {};
};

ZoneTime ZoneTimeOf(const std::tm& fields) {
    return {OffsetOf(fields), WideFromUtf8(fields.tm_zone == nullptr ? "" : fields.tm_zone), {}};
}

// The times of a zone in the year of a moment. With only one of them there is no daylight time.
struct ZoneYear {
    int year = 0;
    std::optional<ZoneTime> standard;
    std::optional<ZoneTime> daylight;

    // Whether it holds at a moment with these fields: a zone may change its times for good.
    bool Tells(const std::tm& now) const {
        const std::optional<ZoneTime>& time = now.tm_isdst > 0 ? daylight : standard;
        return year == now.tm_year && time && time->offset == OffsetOf(now);
    }
};

// REQUIRES: the zone's time is another one at `after` than at `before`. The first moment of the
// later time.
time_t FindChange(time_t before, time_t after) {
    const std::tm earlier = LocalFields(before);
    while (after - before > 1) {
        const time_t middle = before + (after - before) / 2;
        (IsSameTime(LocalFields(middle), earlier) ? before : after) = middle;
    }
    return after;
}

SYSTEMTIME DateOfChange(time_t change) {
    const std::tm last = LocalFields(change - 1);
    std::tm end = {};
    const time_t shifted = change + last.tm_gmtoff;
    gmtime_r(&shifted, &end);
    return {static_cast<WORD>(end.tm_year + 1900), static_cast<WORD>(end.tm_mon + 1),
            static_cast<WORD>(end.tm_wday),        static_cast<WORD>(end.tm_mday),
            static_cast<WORD>(end.tm_hour),        static_cast<WORD>(end.tm_min),
            static_cast<WORD>(end.tm_sec),         0};
}

// Walks through the year. The time in force at the moment counts over any other one of its kind
// that the year may have.
ZoneYear ReadYear(const std::tm& now, time_t moment) {
    ZoneYear result;
    result.year = now.tm_year;
    const auto timeOfKind = [&](const std::tm& fields) -> std::optional<ZoneTime>& {
        return fields.tm_isdst > 0 ? result.daylight : result.standard;
    };
    timeOfKind(now) = ZoneTimeOf(now);
    const time_t start = moment - now.tm_yday * time_t{86400};
    std::tm last = LocalFields(start);
    for (time_t next = start; next < start + 366 * time_t{86400}; next += kStep) {
        const std::tm fields = LocalFields(next);
        std::optional<ZoneTime>& time = timeOfKind(fields);
        if (!time) {
            time = ZoneTimeOf(fields);
        }
        if (!IsSameTime(fields, last) && OffsetOf(fields) == time->offset) {
            time->begin = DateOfChange(FindChange(next - kStep, next));
        }
        last = fields;
    }
    return result;
}

// The year that was asked for last; a time stamp is hardly ever asked about another.
ZoneYear YearOf(const std::tm& now, time_t moment) {
    struct Kept {
        std::mutex mutex;
        std::string zone;
        ZoneYear year;
    };
    static Kept& kept = *new Kept;
    const char* variable = std::getenv("TZ");
    // No variable and an empty one mean different zones.
    const std::string zone = variable == nullptr ? "/etc/localtime" : std::string(":") + variable;
    {
        const std::lock_guard lock(kept.mutex);
        if (kept.zone == zone && kept.year.Tells(now)) {
            return kept.year;
        }
    }
    ZoneYear year = ReadYear(now, moment);
    const std::lock_guard lock(kept.mutex);
    kept.zone = zone;
    kept.year = year;
    return year;
}

void CopyName(std::u16string_view name, WCHAR (&target)[32]) {
    *std::copy_n(name.begin(), std::min<std::size_t>(name.size(), 31), target) = u'\0';
}

}  // namespace

int ZoneOffsetAt(time_t moment) {
    return OffsetOf(LocalFields(moment));
}

DWORD ZoneInformationAt(time_t moment, TIME_ZONE_INFORMATION* information) {
    *information = {};
    const std::tm now = LocalFields(moment);
    const ZoneYear year = YearOf(now, moment);
    if (!year.standard || !year.daylight) {
        const ZoneTime time = ZoneTimeOf(now);
        information->Bias = -time.offset;
        CopyName(time.name, information->StandardName);
        CopyName(time.name, information->DaylightName);
        return TIME_ZONE_ID_UNKNOWN;
    }
    information->Bias = -year.standard->offset;
    information->DaylightBias = year.standard->offset - year.daylight->offset;
    information->StandardDate = year.standard->begin;
    information->DaylightDate = year.daylight->begin;
    CopyName(year.standard->name, information->StandardName);
    CopyName(year.daylight->name, information->DaylightName);
    return now.tm_isdst > 0 ? TIME_ZONE_ID_DAYLIGHT : TIME_ZONE_ID_STANDARD;
}

DWORD GetTimeZoneInformation(TIME_ZONE_INFORMATION* information) {
    return ZoneInformationAt(time(nullptr), information);
}

}  // namespace brevik::platform
