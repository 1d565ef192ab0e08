// The offset of a local time from Coordinated Universal Time.
//
// A plain value.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "filesystem/dates/TimeOfDay.h"

class TimeZone {
  public:
    // Coordinated Universal Time.
    TimeZone() = default;

    // `isWest`: local time is earlier than Coordinated Universal Time. `isDaylight`: daylight
    // saving time is in force; the offset counts it already.
    constexpr TimeZone(std::uint8_t hours, std::uint8_t minutes, bool isWest, bool isDaylight)
        : hours_(hours), minutes_(minutes), isWest_(isWest), isDaylight_(isDaylight) {}

    // The platform's zone at this moment. Any thread.
    static TimeZone GetLocal();

    int GetHours() const { return hours_; }
    int GetMinutes() const { return minutes_; }
    bool IsWest() const { return isWest_; }
    bool IsDaylight() const { return isDaylight_; }

    // What is added to Coordinated Universal Time for the local one; negative to the west.
    int GetOffsetMinutes() const { return (isWest_ ? -1 : 1) * (60 * hours_ + minutes_); }
    std::int64_t GetOffsetTicks() const {
        return std::int64_t{GetOffsetMinutes()} * TimeOfDay::kTicksPerMinute;
    }

    friend bool operator==(const TimeZone&, const TimeZone&) = default;

  private:
    std::uint8_t hours_ = 0;
    std::uint8_t minutes_ = 0;
    bool isWest_ = false;
    bool isDaylight_ = false;
};

// The text form: UTC, UTC+01:00, UTC-03:30DST.
std::ostream& operator<<(std::ostream& stream, const TimeZone& zone);

// Minutes may be left out, hours go up to 13. A text that is no such form sets the stream's fail
// state and leaves the value as it was.
std::istream& operator>>(std::istream& stream, TimeZone& zone);
