#include "filesystem/dates/TimeZone.h"

#include <cstdlib>

#include "filesystem/dates/TimeOfDay.h"
#include "platform/clock.h"

TimeZone TimeZone::GetLocal() {
    TIME_ZONE_INFORMATION information = {};
    const bool isDaylight = GetTimeZoneInformation(&information) == TIME_ZONE_ID_DAYLIGHT;
    const long bias = information.Bias + (isDaylight ? information.DaylightBias : 0);
    const long minutes = std::labs(bias);
    return TimeZone(static_cast<std::uint8_t>(minutes / 60),
                    static_cast<std::uint8_t>(minutes % 60), information.Bias > 0, isDaylight);
}

int TimeZone::GetOffsetMinutes() const {
    const int minutes = 60 * hours_ + minutes_;
    return isWest_ ? -minutes : minutes;
}

std::int64_t TimeZone::GetOffsetTicks() const {
    return std::int64_t{GetOffsetMinutes()} * TimeOfDay::kTicksPerMinute;
}
