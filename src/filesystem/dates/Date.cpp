#include "filesystem/dates/Date.h"

#include <cstdlib>

namespace {

constexpr int kLastYear = 32767;
constexpr int kReformYear = 1582;
constexpr int kReformMonth = 10;
constexpr int kDaysLeftOut = 10;
constexpr int kMonths = 12;
constexpr std::uint8_t kMonthLengths[kMonths] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

bool IsLeapYear(int year) {
    // Before the common era there is no year 0 to be counted.
    const int counted = year < 0 ? -year - 1 : year;
    if (counted % 4 != 0) {
        return false;
    }
    return year < kReformYear || counted % 400 == 0 || counted % 100 != 0;
}

// The day number of 1 January.
std::int64_t DaysBeforeYear(int year) {
    if (year < 1) {
        const std::int64_t years = -year;
        // Year 0 is in no count; a date with that year counts from the day after year 1.
        const std::int64_t leapYears = years == 0 ? 1 : (years + 3) / 4;
        const std::int64_t days = years * 365 + leapYears;
        return year < 0 ? -days : days;
    }
    const std::int64_t years = year - 1;
    const std::int64_t days = years * 365 + years / 4;
    if (year <= kReformYear) {
        return days;
    }
    return days - kDaysLeftOut - (years - 1500) / 100 + (years - 1200) / 400;
}

int YearBefore(int year) {
    return year == 1 ? -1 : year - 1;
}
int YearAfter(int year) {
    return year == -1 ? 1 : year + 1;
}

// A year near the one that holds the day.
int EstimateYear(std::int64_t dayNumber) {
    const std::int64_t days = std::abs(dayNumber);
    const std::int64_t years = (days - days / 1460) / 365 + 1;
    return static_cast<int>(dayNumber < 0 ? -years : years);
}

}  // namespace

Date::Date(std::int32_t dayNumber) {
    int year = EstimateYear(dayNumber);
    std::int64_t start = DaysBeforeYear(year);
    while (dayNumber < start) {
        year = YearBefore(year);
        start -= GetDaysInYear(year);
    }
    while (dayNumber >= start + GetDaysInYear(year)) {
        start += GetDaysInYear(year);
        year = YearAfter(year);
    }
    if (std::abs(year) > kLastYear) {
        return;
    }
    int rest = static_cast<int>(dayNumber - start);
    int month = 1;
    while (rest >= GetDaysInMonth(month, year)) {
        rest -= GetDaysInMonth(month, year);
        ++month;
    }
    day_ = static_cast<std::uint8_t>(rest + 1);
    month_ = static_cast<std::uint8_t>(month);
    year_ = static_cast<std::int16_t>(year);
}

int Date::GetDayOfYear() const {
    int days = day_;
    for (int month = 1; month < month_; ++month) {
        days += GetDaysInMonth(month, year_);
    }
    return days;
}

std::int32_t Date::GetDayNumber() const {
    return static_cast<std::int32_t>(DaysBeforeYear(year_)) + GetDayOfYear() - 1;
}

int Date::GetWeekDay() const {
    constexpr int kDaysInWeek = 7;
    constexpr int kFirstWeekDay = 6;  // 1 January of the year 1 was a Saturday
    const int day = GetDayNumber() % kDaysInWeek;
    return (day + kDaysInWeek + kFirstWeekDay) % kDaysInWeek;
}

int Date::GetDaysInYear(int year) {
    if (year == kReformYear) {
        return 365 - kDaysLeftOut;
    }
    return IsLeapYear(year) ? 366 : 365;
}

int Date::GetDaysInMonth(int month, int year) {
    constexpr int kFebruary = 2;
    if (month < 1 || month > kMonths) {
        return 0;
    }
    const int days = kMonthLengths[month - 1];
    if (month == kFebruary && IsLeapYear(year)) {
        return days + 1;
    }
    return year == kReformYear && month == kReformMonth ? days - kDaysLeftOut : days;
}
