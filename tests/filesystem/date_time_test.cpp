#include "filesystem/dates/DateTime.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr TimeZone kUniversal;

template <typename T>
std::string Written(const T& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

// The value read, in its written form again; "failed" when the read failed, which is only right
// when it left the value alone.
template <typename T>
std::string Reread(const std::string& text, const T& before = T()) {
    std::istringstream stream(text);
    T value = before;
    if (stream >> value) {
        return Written(value);
    }
    return value == before ? "failed" : "failed, and changed the value";
}

void UseZone(const char* zone) {
    setenv("TZ", zone, 1);
}

// The rule of a zone whose daylight saving time began some weeks ago and ends in some weeks.
std::string DaylightNow() {
    const std::time_t now = std::time(nullptr);
    std::tm fields;
    gmtime_r(&now, &fields);
    return "," + std::to_string((fields.tm_yday + 345) % 365) + "," +
           std::to_string((fields.tm_yday + 20) % 365);
}

TEST(Date, EveryDayGoesToItsNumberAndBack) {
    std::int32_t number = Date(1, 1, -4712).GetDayNumber();
    int weekDay = Date(1, 1, -4712).GetWeekDay();
    for (int year = -4712; year <= 9999; year == -1 ? year = 1 : ++year) {
        int days = 0;
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= Date::GetDaysInMonth(month, year); ++day) {
                const Date date(static_cast<std::uint8_t>(day), static_cast<std::uint8_t>(month),
                                static_cast<std::int16_t>(year));
                ASSERT_EQ(date.GetDayNumber(), number) << Written(date);
                ASSERT_EQ(Date(number), date)
                    << Written(date) << " is not " << Written(Date(number));
                ASSERT_EQ(date.GetWeekDay(), weekDay) << Written(date);
                ASSERT_EQ(date.GetDayOfYear(), ++days);
                ++number;
                weekDay = (weekDay + 1) % 7;
            }
        }
        ASSERT_EQ(days, Date::GetDaysInYear(year)) << year;
    }
}

TEST(Date, TheReformLeavesOutTenDaysOfOctober1582) {
    EXPECT_EQ(Date(Date(21, 10, 1582).GetDayNumber() + 1), Date(1, 11, 1582));
    EXPECT_EQ(Date(1, 11, 1582).GetDayOfYear(), 365 - 10 - 60);
    EXPECT_EQ(Date::GetDaysInMonth(2, 1582), 28);
    const std::pair<int, int> lengths[] = {{1582, 355}, {1500, 366}, {1581, 365}, {1583, 365},
                                           {1600, 366}, {1700, 365}, {2000, 366}, {-1, 366},
                                           {-2, 365},   {-4, 365},   {-5, 366},   {-101, 366},
                                           {1900, 365}, {2024, 366}, {2100, 365}};
    for (const auto& [year, days] : lengths) {
        EXPECT_EQ(Date::GetDaysInYear(year), days) << year;
        const auto start = static_cast<std::int16_t>(year);
        const auto next = static_cast<std::int16_t>(year == -1 ? 1 : year + 1);
        EXPECT_EQ(Date(1, 1, next).GetDayNumber() - Date(1, 1, start).GetDayNumber(), days) << year;
    }
    EXPECT_EQ(Date(1, 1, 1).GetDayNumber(), 0);
    EXPECT_EQ(Date(-1), Date(31, 12, -1));
    // As the host's calendar has it.
    std::tm host;
    const std::time_t now = std::time(nullptr);
    gmtime_r(&now, &host);
    const Date today(Date(1, 1, 1970).GetDayNumber() + static_cast<std::int32_t>(now / 86400));
    EXPECT_EQ(today.GetDay(), host.tm_mday);
    EXPECT_EQ(today.GetYear(), host.tm_year + 1900);
    EXPECT_EQ(today.GetWeekDay(), host.tm_wday);
}

TEST(Date, NumbersBeyondTheYearsGiveTheDefaultDate) {
    using Limits = std::numeric_limits<std::int32_t>;
    const Date first(1, 1, -32767);
    const Date last(31, 12, 32767);
    EXPECT_EQ(Date(first.GetDayNumber()), first);
    EXPECT_EQ(Date(last.GetDayNumber()), last);
    for (const std::int32_t number :
         {first.GetDayNumber() - 1, last.GetDayNumber() + 1, Limits::min(), Limits::max()}) {
        EXPECT_EQ(Date(number), Date(1, 1, 1)) << number;
    }
}

TEST(TimeOfDay, SplitsTicksAndCarriesDays) {
    const TimeOfDay time(51840000LL * 2 + 599 + 600LL * (3600 * 23 + 60 * 59 + 58));
    EXPECT_EQ(time, TimeOfDay(23, 59, 58, 599, 2));
    EXPECT_EQ(time.GetTotalSeconds(), 2 * 86400 + 86398);
    EXPECT_EQ(TimeOfDay(-1), TimeOfDay(23, 59, 59, 599, -1));
    EXPECT_EQ(TimeOfDay(-51840000), TimeOfDay(0, 0, 0, 0, -1));
    EXPECT_EQ(TimeOfDay(-1).GetTotalTicks(), -1);
}

TEST(DateTime, ZonesMoveTheFieldsAndKeepTheMoment) {
    const TimeZone newfoundland(3, 30, true, false);
    EXPECT_EQ(newfoundland.GetOffsetMinutes(), -210);
    const DateTime newYear(TimeOfDay(1, 15, 0, 7), Date(1, 1, 2000), kUniversal);
    const struct {
        TimeZone zone;
        const char* text;
    } cases[] = {
        {kUniversal, "01:15:00+7/600-1.1.2000-UTC"},
        {newfoundland, "21:45:00+7/600-31.12.1999-UTC-03:30"},
        {TimeZone(12, 45, false, true), "14:00:00+7/600-1.1.2000-UTC+12:45DST"},
        {TimeZone(0, 30, true, false), "00:45:00+7/600-1.1.2000-UTC-00:30"},
        {TimeZone(23, 0, false, false), "00:15:00+7/600-2.1.2000-UTC+23:00"},
    };
    for (const auto& from : cases) {
        DateTime time = newYear;
        time.ConvertToZone(from.zone);
        EXPECT_EQ(Written(time), from.text);
        EXPECT_EQ(time.GetTotalTicks(), newYear.GetTotalTicks());
        EXPECT_EQ(DateTime(newYear.GetTotalTicks(), from.zone), time);
        for (const auto& to : cases) {
            DateTime other = time;
            other.ConvertToZone(to.zone);
            EXPECT_EQ(Written(other), to.text);
        }
    }
}

TEST(DateTime, CountsTicksAcrossTheStart) {
    EXPECT_EQ(DateTime(0, kUniversal), DateTime(TimeOfDay(), Date(1, 1, 1), kUniversal));
    const DateTime before(-1, kUniversal);
    EXPECT_EQ(Written(before), "23:59:59+599/600-31.12.1BCE-UTC");
    EXPECT_EQ(before.GetTotalTicks(), -1);
    EXPECT_EQ(DateTime(-51840000, kUniversal).GetDate(), Date(31, 12, -1));
    using Limits = std::numeric_limits<std::int64_t>;
    for (const std::int64_t ticks : {Limits::min(), Limits::max()}) {
        EXPECT_EQ(DateTime(ticks, kUniversal).GetDate(), Date());
    }
}

TEST(DateTime, AddsSecondsInTheLocalZone) {
    UseZone("EST5");
    const DateTime late(TimeOfDay(23, 59, 59), Date(21, 10, 1582), TimeZone(5, 0, true, false));
    const DateTime next = late.AddSeconds(1);
    EXPECT_EQ(Written(next), "00:00:00-1.11.1582-UTC-05:00");
    EXPECT_EQ(next.GetSecondsBetween(late), 1);
    EXPECT_EQ(late.GetSecondsBetween(next), -1);
    EXPECT_EQ(Written(next.AddSeconds(-86400)), "00:00:00-21.10.1582-UTC-05:00");
    EXPECT_EQ(Written(DateTime(TimeOfDay(3, 0, 0), Date(1, 1, 2000), kUniversal).AddSeconds(0)),
              "22:00:00-31.12.1999-UTC-05:00");
    using Limits = std::numeric_limits<std::int64_t>;
    UseZone("UTC0");
    for (const std::int64_t seconds : {Limits::min(), Limits::max()}) {
        EXPECT_EQ(late.AddSeconds(seconds).GetDate(), Date());
    }
}

TEST(TimeZone, TheHostsZonesComeBackToTheirOffsets) {
    const struct {
        std::string host;
        TimeZone zone;
    } cases[] = {
        {"UTC0", kUniversal},
        {"XST3:30", TimeZone(3, 30, true, false)},
        {"XST-5:45", TimeZone(5, 45, false, false)},
        {"XST3:30XDT2:30" + DaylightNow(), TimeZone(2, 30, true, true)},
        {"XST-10:30XDT-11" + DaylightNow(), TimeZone(11, 0, false, true)},
    };
    for (const auto& sample : cases) {
        UseZone(sample.host.c_str());
        EXPECT_EQ(TimeZone::GetLocal(), sample.zone) << sample.host;
        const std::time_t now = std::time(nullptr);
        std::tm local;
        localtime_r(&now, &local);
        EXPECT_EQ(TimeZone::GetLocal().GetOffsetMinutes(), local.tm_gmtoff / 60) << sample.host;
    }
}

TEST(DateTime, FileTimesComeBackAtAnyDate) {
    // Steps of 1/600 second that a millisecond holds: every fifth of one, in 100-nanosecond steps.
    constexpr std::uint64_t kFiveMilliseconds = 50000;
    for (const char* zone : {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "NST3:30NDT,M3.2.0,M11.1.0"}) {
        UseZone(zone);
        // 1601, a winter and a summer of our time, and the far end of the calendar.
        for (const std::uint64_t stamp : {864000000000ULL, 130644576000050000ULL,
                                          130800096000050000ULL, 2650467743990000000ULL}) {
            const std::uint64_t steps = stamp / kFiveMilliseconds * kFiveMilliseconds;
            const FILETIME time = {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
            const FILETIME back = DateTime::FromFileTime(time).ToFileTime();
            EXPECT_EQ(back.dwLowDateTime, time.dwLowDateTime) << zone << ' ' << stamp;
            EXPECT_EQ(back.dwHighDateTime, time.dwHighDateTime) << zone << ' ' << stamp;
        }
    }
    // What the platform's calendar cannot hold.
    const FILETIME none = DateTime(TimeOfDay(), Date(15, 3, -44), kUniversal).ToFileTime();
    EXPECT_EQ(none.dwLowDateTime, 0u);
    EXPECT_EQ(DateTime::FromFileTime({0, 0x90000000}), DateTime());
}

TEST(DateTime, SystemTimesAreCutToTheirUnits) {
    UseZone("UTC0");
    SYSTEMTIME fields = {2024, 2, 0, 29, 23, 59, 59, 999};
    const DateTime time = DateTime::FromSystemTime(fields);
    EXPECT_EQ(Written(time), "23:59:59+599/600-29.2.2024-UTC");
    EXPECT_EQ(time.ToSystemTime().wMilliseconds, 998);
    EXPECT_EQ(time.ToSystemTime().wDayOfWeek, 4);  // a Thursday
    EXPECT_EQ(time.ToSystemTime().wDay, 29);
    fields.wMilliseconds = 1;
    EXPECT_EQ(DateTime::FromSystemTime(fields).GetTime().GetTicks(), 0);
}

TEST(DateTime, TheRunTimeLibrarysTimesComeBack) {
    for (const char* zone : {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "NST3:30NDT,M3.2.0,M11.1.0"}) {
        UseZone(zone);
        for (const __time64_t seconds : {__time64_t{86400}, __time64_t{1704067199},
                                         __time64_t{1720000000}, __time64_t{4102444800}}) {
            EXPECT_EQ(DateTime::FromTimeT(seconds).ToTimeT(), seconds) << zone;
        }
        const __time64_t before = std::time(nullptr);
        const __time64_t now = DateTime::GetNow().ToTimeT();
        EXPECT_GE(now, before) << zone;
        EXPECT_LE(now, std::time(nullptr)) << zone;
        EXPECT_EQ(DateTime::GetNow().GetTime().GetTicks(), 0);
    }
}

TEST(DateText, FormsAreWrittenAndReadAgain) {
    EXPECT_EQ(Written(TimeOfDay(9, 5, 0)), "09:05:00");
    EXPECT_EQ(Written(TimeOfDay(23, 59, 59, 599)), "23:59:59+599/600");
    EXPECT_EQ(Written(Date(1, 2, 2003)), "1.2.2003");
    EXPECT_EQ(Written(Date(15, 3, -44)), "15.3.44BCE");
    EXPECT_EQ(Written(Date(1, 1, 0)), "1.1.1");
    EXPECT_EQ(Written(kUniversal), "UTC");
    EXPECT_EQ(Written(TimeZone(0, 30, true, true)), "UTC-00:30DST");
    EXPECT_EQ(Written(TimeZone(0, 0, true, true)), "UTCDST");
    // The stream's own settings for numbers do not show.
    std::ostringstream stream;
    stream << std::hex << std::showpos << DateTime(TimeOfDay(10, 0, 0), Date(31, 12, -1999), {});
    EXPECT_EQ(stream.str(), "10:00:00-31.12.1999BCE-UTC");

    for (const char* text : {"09:05:00-1.2.2003-UTC", "00:00:00+1/600-29.2.5BCE-UTC-13:59DST"}) {
        EXPECT_EQ(Reread<DateTime>(text), text);
    }
    std::istringstream several(" 09:05:00-1.2.2003-UTC+1 10:00:00-1.1.1-UTC");
    DateTime first;
    DateTime second;
    EXPECT_TRUE(several >> first >> second);
    EXPECT_EQ(Written(first), "09:05:00-1.2.2003-UTC+01:00");
    EXPECT_EQ(Written(second), "10:00:00-1.1.1-UTC");
    EXPECT_TRUE(several.eof());
}

TEST(DateText, OtherBasesAndShortFormsAreRead) {
    EXPECT_EQ(Reread<TimeOfDay>("01:02:03+1/2"), "01:02:03+300/600");
    EXPECT_EQ(Reread<TimeOfDay>("01:02:03+999/1000"), "01:02:03+599/600");
    EXPECT_EQ(Reread<TimeOfDay>("01:02:03+1/4294967295"), "01:02:03");
    EXPECT_EQ(Reread<TimeOfDay>("1:2:3"), "01:02:03");
    EXPECT_EQ(Reread<TimeZone>("UTC-9"), "UTC-09:00");
    EXPECT_EQ(Reread<TimeZone>("UTC+13:59"), "UTC+13:59");
}

TEST(DateText, WhatDoesNotParseFailsAndChangesNothing) {
    const TimeOfDay time(1, 2, 3, 4);
    for (const char* text :
         {"", "1", "01:02", "01:02:", "01.02.03", "24:00:00", "00:60:00", "00:00:60", "-1:00:00",
          "01:02:03+", "01:02:03+5", "01:02:03+5-600", "01:02:03+600/600", "01:02:03+0/0",
          "01:02:03+4294967296/4294967297", "99999999999999999999:00:00"}) {
        EXPECT_EQ(Reread(text, time), "failed") << text;
    }
    const Date date(4, 5, 6);
    for (const char* text : {"", "1", "1.2", "1.2.", "1-2-3", "0.1.2000", "32.1.2000", "1.1.0",
                             "1.0.2000", "1.13.2000", "29.2.2001", "22.10.1582", "1.1.32768",
                             "1.1.44BC", "1.1.44BCD", "1.1.-44"}) {
        EXPECT_EQ(Reread(text, date), "failed") << text;
    }
    const TimeZone zone(1, 2, true, true);
    for (const char* text : {"", "UT", "GMT", "utc", "UTC+", "UTC-14", "UTC+14:00",
                             "UTC+01:", "UTC+01:60", "UTCD", "UTC+01:00DSX"}) {
        EXPECT_EQ(Reread(text, zone), "failed") << text;
    }
    const DateTime whole(time, date, zone);
    for (const char* text : {"01:02:03", "01:02:03-1.1.2000", "01:02:03-1.1.2000-",
                             "01:02:03 1.1.2000 UTC", "01:02:03-1.1.2000-UTC+14"}) {
        EXPECT_EQ(Reread(text, whole), "failed") << text;
    }
}

}  // namespace
