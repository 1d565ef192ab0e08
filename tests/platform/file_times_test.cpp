// Clocks, file times, the system's calendar, and the zone.

#include "platform/clock.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>

#include "platform/posix/text/host_text.h"
#include "platform/posix/time/host_times.h"

namespace {

constexpr std::uint64_t kSecond = 10'000'000;
constexpr time_t kWinter = 1'704'974'400;  // 11 January 2024, noon in Greenwich
constexpr time_t kSummer = 1'720'000'000;  // 3 July 2024

class Zone : public testing::Test {
  protected:
    static void Use(const char* zone) {
        setenv("TZ", zone, 1);
        tzset();
    }
    ~Zone() override {
        unsetenv("TZ");
        tzset();
    }
};

std::string Text(const SYSTEMTIME& time) {
    char text[64];
    std::snprintf(text, sizeof text, "%u-%u-%u(%u) %u:%u:%u.%u", time.wYear, time.wMonth, time.wDay,
                  time.wDayOfWeek, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds);
    return text;
}

TEST(FileTimes, HaveTheFieldsOfTheCalendar) {
    const struct {
        std::uint64_t count;
        const char* fields;
    } cases[] = {
        {0, "1601-1-1(1) 0:0:0.0"},
        {86'400 * kSecond - 1, "1601-1-1(1) 23:59:59.999"},
        {133'644'735'999'990'000, "2024-7-3(3) 9:46:39.999"},
        {0x7FFF'35F4'F06C'58F0, "30827-12-31(5) 23:59:59.999"},
    };
    for (const auto& row : cases) {
        const FILETIME time = FileTimeOfCount(row.count);
        SYSTEMTIME fields;
        ASSERT_TRUE(FileTimeToSystemTime(&time, &fields)) << row.fields;
        EXPECT_EQ(Text(fields), row.fields);
        fields.wDayOfWeek = 9;
        FILETIME back;
        ASSERT_TRUE(SystemTimeToFileTime(&fields, &back)) << row.fields;
        EXPECT_EQ(CountOf(back), row.count / 10'000 * 10'000) << row.fields;
    }
}

TEST(FileTimes, AgreeWithTheHostOnEveryDay) {
    for (std::int64_t day = -134'774; day < 300'000; ++day) {
        const time_t moment = day * 86'400 + 43'200;
        const FILETIME time = FileTimeFromHost({moment, 0});
        SYSTEMTIME fields;
        ASSERT_TRUE(FileTimeToSystemTime(&time, &fields));
        std::tm host;
        gmtime_r(&moment, &host);
        ASSERT_TRUE(fields.wYear == host.tm_year + 1900 && fields.wMonth == host.tm_mon + 1 &&
                    fields.wDay == host.tm_mday && fields.wDayOfWeek == host.tm_wday)
            << Text(fields);
    }
}

TEST(FileTimes, EndWithTheCalendar) {
    SYSTEMTIME fields = {};
    const FILETIME last = FileTimeOfCount(INT64_MAX);
    EXPECT_TRUE(FileTimeToSystemTime(&last, &fields));
    EXPECT_EQ(Text(fields), "30828-9-14(4) 2:48:5.477");
    for (const std::uint64_t beyond : {std::uint64_t{INT64_MAX} + 1, UINT64_MAX}) {
        const FILETIME time = FileTimeOfCount(beyond);
        SetLastError(0);
        EXPECT_FALSE(FileTimeToSystemTime(&time, &fields));
        EXPECT_EQ(GetLastError(), 87u);
    }
    const SYSTEMTIME refused[] = {
        {1600, 12, 0, 31, 0, 0, 0, 0}, {30828, 1, 0, 1, 0, 0, 0, 0},  {2023, 2, 0, 29, 0, 0, 0, 0},
        {1900, 2, 0, 29, 0, 0, 0, 0},  {2024, 0, 0, 1, 0, 0, 0, 0},   {2024, 13, 0, 1, 0, 0, 0, 0},
        {2024, 257, 0, 1, 0, 0, 0, 0}, {2024, 4, 0, 31, 0, 0, 0, 0},  {2024, 1, 0, 0, 0, 0, 0, 0},
        {2024, 1, 0, 257, 0, 0, 0, 0}, {2024, 1, 0, 1, 24, 0, 0, 0},  {2024, 1, 0, 1, 0, 60, 0, 0},
        {2024, 1, 0, 1, 0, 0, 60, 0},  {2024, 1, 0, 1, 0, 0, 0, 1000}};
    for (const SYSTEMTIME& row : refused) {
        FILETIME time = {1, 2};
        SetLastError(0);
        EXPECT_FALSE(SystemTimeToFileTime(&row, &time)) << Text(row);
        EXPECT_EQ(GetLastError(), 87u);
        EXPECT_EQ(time.dwLowDateTime, 1u);
    }
}

TEST(FileTimes, ComeFromTheHostAndGoBack) {
    const struct {
        timespec host;
        std::uint64_t count;
        timespec back;
    } cases[] = {
        {{0, 0}, 116'444'736'000'000'000, {0, 0}},
        {{-1, 999'999'999}, 116'444'735'999'999'999, {-1, 999'999'900}},
        {{-11'644'473'600, 0}, 0, {-11'644'473'600, 0}},
        {{-11'644'473'601, 0}, 0, {-11'644'473'600, 0}},
        {{INT64_MIN, 0}, 0, {-11'644'473'600, 0}},
        {{INT64_MAX, 0}, INT64_MAX, {910'692'730'085, 477'580'700}},
    };
    for (const auto& row : cases) {
        const FILETIME time = FileTimeFromHost(row.host);
        EXPECT_EQ(CountOf(time), row.count);
        const timespec back = HostTimeFromFileTime(time);
        EXPECT_EQ(back.tv_sec, row.back.tv_sec);
        EXPECT_EQ(back.tv_nsec, row.back.tv_nsec);
    }
}

// Rules are spelled out, so that no zone data of the host is needed.
TEST_F(Zone, HasTheTimesOfItsRules) {
    const struct {
        const char* zone;
        time_t moment;
        bool daylight;
        LONG bias;
        LONG daylightBias;
    } cases[] = {
        {"CET-1CEST,M3.5.0,M10.5.0/3", kWinter, false, -60, 0},
        {"CET-1CEST,M3.5.0,M10.5.0/3", kSummer, true, -60, -60},
        // South of the equator the year begins and ends in daylight time.
        {"<-03>3<-02>,M10.3.0/0,M2.3.0/0", kWinter, true, 180, -60},
        {"<-03>3<-02>,M10.3.0/0,M2.3.0/0", kSummer, false, 180, 0},
        {"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", kWinter, true, -630, -30},
        {"NST3:30NDT,M3.2.0,M11.1.0", kSummer, true, 210, -60},
        // Negative daylight time, in winter.
        {"IST-1GMT0,M10.5.0,M3.5.0/1", kWinter, true, -60, 60},
        {"IST-1GMT0,M10.5.0,M3.5.0/1", kSummer, false, -60, 0},
        {"UTC0", kSummer, false, 0, 0},
        {"<+0545>-5:45", kSummer, false, -345, 0},
        // Daylight time all the year.
        {"EST5EDT,0/0,J365/25", kWinter, false, 240, 0},
    };
    for (const auto& row : cases) {
        Use(row.zone);
        TIME_ZONE_INFORMATION zone;
        std::memset(&zone, 0xEE, sizeof zone);
        EXPECT_EQ(ZoneInformationAt(row.moment, &zone) == TIME_ZONE_ID_DAYLIGHT, row.daylight)
            << row.zone;
        EXPECT_EQ(zone.Bias, row.bias) << row.zone;
        EXPECT_EQ(zone.DaylightBias, row.daylightBias) << row.zone;
        EXPECT_EQ(ZoneOffsetAt(row.moment), -row.bias - row.daylightBias) << row.zone;
    }
}

TEST_F(Zone, ShiftsEveryTimeByWhatIsInForceNow) {
    for (const char* rule : {"XXX-5:45", "XXX3:30", "XXX-13"}) {
        Use(rule);
        TIME_ZONE_INFORMATION zone;
        ASSERT_EQ(GetTimeZoneInformation(&zone), TIME_ZONE_ID_UNKNOWN);
        for (const time_t moment : {kWinter, kSummer}) {
            const FILETIME time = FileTimeFromHost({moment, 500});
            FILETIME local;
            FILETIME back;
            ASSERT_TRUE(FileTimeToLocalFileTime(&time, &local));
            EXPECT_EQ(static_cast<std::int64_t>(CountOf(time) - CountOf(local)),
                      zone.Bias * 60 * std::int64_t{kSecond})
                << rule;
            ASSERT_TRUE(LocalFileTimeToFileTime(&local, &back));
            EXPECT_EQ(CountOf(back), CountOf(time)) << rule;
        }
    }
    // A file without a time has none in local time either.
    Use("XXX5");
    const FILETIME none = {};
    FILETIME local;
    SYSTEMTIME fields;
    FileTimeToLocalFileTime(&none, &local);
    EXPECT_FALSE(FileTimeToSystemTime(&local, &fields));
}

TEST_F(Zone, LocalTimeIsTheHosts) {
    Use("XXX-2:30");
    const time_t before = time(nullptr);
    SYSTEMTIME fields;
    GetLocalTime(&fields);
    FILETIME local;
    FILETIME now;
    ASSERT_TRUE(SystemTimeToFileTime(&fields, &local));
    ASSERT_TRUE(LocalFileTimeToFileTime(&local, &now));
    EXPECT_LE(before, HostTimeFromFileTime(now).tv_sec);
    EXPECT_LE(HostTimeFromFileTime(now).tv_sec, time(nullptr));
}

// The system's own clock is read before and after: the answer lies between, however slow the
// machine.
TEST(Clock, CounterRunsAtItsRate) {
    LARGE_INTEGER frequency;
    ASSERT_TRUE(QueryPerformanceFrequency(&frequency));
    EXPECT_EQ(frequency.QuadPart, 10'000'000);
    const auto now = [] {
        return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(100);
    };
    const auto before = now();
    LARGE_INTEGER counter;
    ASSERT_TRUE(QueryPerformanceCounter(&counter));
    EXPECT_LE(before, counter.QuadPart);
    EXPECT_LE(counter.QuadPart, now());
}

TEST_F(Zone, LocalTimeGoesThereAndBack) {
    Use("CET-1CEST,M3.5.0,M10.5.0/3");
    const __time64_t summer = 1'720'000'000;  // 3 July 2024, 09:46:40 in Greenwich
    std::tm fields;
    ASSERT_EQ(_localtime64_s(&fields, &summer), 0);
    EXPECT_EQ(fields.tm_year, 124);
    EXPECT_EQ(fields.tm_mon, 6);
    EXPECT_EQ(fields.tm_mday, 3);
    EXPECT_EQ(fields.tm_hour, 11);
    EXPECT_EQ(fields.tm_min, 46);
    EXPECT_EQ(fields.tm_sec, 40);
    EXPECT_EQ(fields.tm_wday, 3);
    EXPECT_EQ(fields.tm_isdst, 1);
    EXPECT_EQ(_mktime64(&fields), summer);
}

TEST_F(Zone, EndsWithTheYear3000) {
    Use("UTC0");
    std::tm fields;
    const __time64_t last = 32'535'215'999;
    ASSERT_EQ(_localtime64_s(&fields, &last), 0);
    EXPECT_EQ(fields.tm_year, 1100);
    EXPECT_EQ(fields.tm_mon, 11);
    EXPECT_EQ(fields.tm_mday, 31);
    for (const __time64_t outside : {last + 1, __time64_t{-1}, INT64_MAX, INT64_MIN}) {
        EXPECT_EQ(_localtime64_s(&fields, &outside), EINVAL) << outside;
    }
}

TEST_F(Zone, NormalisesFieldsAndRefusesTimesBefore1970) {
    Use("UTC0");
    std::tm fields = {};
    fields.tm_year = 99;
    fields.tm_mon = 11;
    fields.tm_mday = 32;
    EXPECT_EQ(_mktime64(&fields), 946'684'800);
    fields = {};
    fields.tm_year = 60;
    fields.tm_mday = 1;
    EXPECT_EQ(_mktime64(&fields), -1);
}

}  // namespace
