// A time stamp: a time, a date and the zone in which the two are expressed.
//
// A plain value; nothing throws. File times and system times are converted in the platform's zone
// that is in force now, whatever their date or the value's zone, so that they come back unchanged.
#pragma once

#include <cstdint>
#include <ctime>
#include <iosfwd>

#include "filesystem/dates/Date.h"
#include "filesystem/dates/TimeOfDay.h"
#include "filesystem/dates/TimeZone.h"
#include "platform/clock.h"

class DateTime {
  public:
    // Midnight of the default date in Coordinated Universal Time.
    DateTime() = default;

    constexpr DateTime(const TimeOfDay& time, const Date& date, const TimeZone& zone)
        : time_(time), date_(date), zone_(zone) {}

    // The moment of this universal count, see GetTotalTicks, expressed in `zone`.
    DateTime(std::int64_t ticks, const TimeZone& zone);

    // The platform's local time, in whole seconds.
    static DateTime GetNow();

    // Seconds since 1970, in local time. The default value where the run-time library has none.
    static DateTime FromTimeT(__time64_t seconds);

    // The default value for a time beyond the platform's calendar.
    static DateTime FromFileTime(const FILETIME& time);

    // The fields as they stand, in the local zone; milliseconds become ticks, the rest cut off.
    static DateTime FromSystemTime(const SYSTEMTIME& time);

    // -1 for a time that the run-time library cannot express.
    __time64_t ToTimeT() const;

    // All zero for a time beyond the platform's calendar, such as a year before 1601.
    FILETIME ToFileTime() const;
    SYSTEMTIME ToSystemTime() const;

    const TimeOfDay& GetTime() const { return time_; }
    const Date& GetDate() const { return date_; }
    const TimeZone& GetZone() const { return zone_; }

    // Ticks of 1/600 second since the midnight that began 1 January of the year 1, in Coordinated
    // Universal Time.
    std::int64_t GetTotalTicks() const;

    // The moment `seconds` later, in the local zone. Beyond the years of a Date that is the
    // default.
    DateTime AddSeconds(std::int64_t seconds) const;

    // Whole seconds from `earlier` to this moment; negative when `earlier` is the later one.
    std::int64_t GetSecondsBetween(const DateTime& earlier) const;

    // Keeps the moment.
    void ConvertToZone(const TimeZone& zone);

    // Field by field; one moment in two zones is not equal.
    friend bool operator==(const DateTime&, const DateTime&) = default;

  private:
    TimeOfDay time_;
    Date date_;
    TimeZone zone_;
};

// The text form: time, date and zone joined by "-", such as 09:05:00-31.12.1999-UTC+01:00.
std::ostream& operator<<(std::ostream& stream, const DateTime& time);

// A text that is no such form sets the stream's fail state and leaves the value as it was.
std::istream& operator>>(std::istream& stream, DateTime& time);
