#include "filesystem/dates/TimeOfDay.h"

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

std::int32_t TimeOfDay::GetTotalSeconds() const {
    return carryDays_ * kSecondsPerDay + hour_ * 3600 + minute_ * 60 + second_;
}

std::int64_t TimeOfDay::GetTotalTicks() const {
    return std::int64_t{GetTotalSeconds()} * kTicksPerSecond + ticks_;
}
