// A time of day in steps of 1/600 second.
//
// A plain value. A time is not checked when it is made.
#pragma once

#include <cstdint>
#include <iosfwd>

class TimeOfDay {
  public:
    static constexpr std::int32_t kTicksPerSecond = 600;
    static constexpr std::int32_t kTicksPerMinute = 60 * kTicksPerSecond;
    static constexpr std::int32_t kSecondsPerDay = 86400;
    static constexpr std::int32_t kTicksPerDay = kSecondsPerDay * kTicksPerSecond;

    // Midnight.
    TimeOfDay() = default;

    // `ticks` from 0 to 599; `carryDays` are whole days on top of the time.
    constexpr TimeOfDay(std::uint8_t hour, std::uint8_t minute, std::uint8_t second,
                        std::uint32_t ticks = 0, std::int8_t carryDays = 0)
        : ticks_(ticks), second_(second), minute_(minute), hour_(hour), carryDays_(carryDays) {}

    // So many ticks after midnight; whole days go to the carry. REQUIRES: less than 128 days.
    explicit TimeOfDay(std::int64_t ticks);

    int GetHour() const { return hour_; }
    int GetMinute() const { return minute_; }
    int GetSecond() const { return second_; }
    int GetTicks() const { return static_cast<int>(ticks_); }
    int GetCarryDays() const { return carryDays_; }

    // Since midnight, with the carried days.
    std::int32_t GetTotalSeconds() const {
        return carryDays_ * kSecondsPerDay + hour_ * 3600 + minute_ * 60 + second_;
    }
    std::int64_t GetTotalTicks() const {
        return std::int64_t{GetTotalSeconds()} * kTicksPerSecond + ticks_;
    }

    friend bool operator==(const TimeOfDay&, const TimeOfDay&) = default;

  private:
    std::uint32_t ticks_ = 0;
    std::uint8_t second_ = 0;
    std::uint8_t minute_ = 0;
    std::uint8_t hour_ = 0;
    std::int8_t carryDays_ = 0;
};

// The text form: 09:05:00, or 09:05:00+599/600 where ticks are left. Carried days are not written.
std::ostream& operator<<(std::ostream& stream, const TimeOfDay& time);

// Ticks of another base than 600 are converted. A text that is no such form, or no time of a day,
// sets the stream's fail state and leaves the value as it was.
std::istream& operator>>(std::istream& stream, TimeOfDay& time);
