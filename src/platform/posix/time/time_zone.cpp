#include "platform/posix/time/host_times.h"

namespace brevik::platform {
namespace {

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
