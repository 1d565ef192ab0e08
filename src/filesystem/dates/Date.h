// A day of the calendar: Julian up to 1582, Gregorian after it.
//
// The ten days between the two are left out of October 1582, which runs from 1 to 21; the day after
// it is 1 November. There is no year 0: 31 December of the year -1 comes before 1 January of the
// year 1, whose day number is 0.
//
// A plain value. A date is not checked when it is made.
#pragma once

#include <cstdint>
#include <iosfwd>

class Date {
  public:
    // 1 January of the year 1.
    Date() = default;

    // Day and month from 1; a year before the common era is negative.
    constexpr Date(std::uint8_t day, std::uint8_t month, std::int16_t year)
        : day_(day), month_(month), year_(year) {}

    // The day of this number. One outside the years -32767 to 32767 gives the default date.
    explicit Date(std::int32_t dayNumber);

    int GetDay() const { return day_; }
    int GetMonth() const { return month_; }
    int GetYear() const { return year_; }

    // From 1.
    int GetDayOfYear() const;

    // Consecutive over the whole calendar.
    std::int32_t GetDayNumber() const;

    // 0 for Sunday.
    int GetWeekDay() const;

    // 366 or 365, and 355 for 1582.
    static int GetDaysInYear(int year);

    // From 28 to 31, and 21 for October 1582. 0 for a month that is not from 1 to 12.
    static int GetDaysInMonth(int month, int year);

    friend bool operator==(const Date&, const Date&) = default;

  private:
    std::uint8_t day_ = 1;
    std::uint8_t month_ = 1;
    std::int16_t year_ = 1;
};

// The text form: 31.12.1999, or 15.3.44BCE for a negative year.
std::ostream& operator<<(std::ostream& stream, const Date& date);

// A text that is no such form, or no day of the calendar, sets the stream's fail state and leaves
// the value as it was.
std::istream& operator>>(std::istream& stream, Date& date);
