#include "platform/clock.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <cerrno>
#include <chrono>

namespace {

class CalendarTest : public testing::Test {
  protected:
    static void UseZone(const char* zone) {
        setenv("TZ", zone, 1);
        tzset();
    }
    ~CalendarTest() override {
        unsetenv("TZ");
        tzset();
    }
};

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

TEST_F(CalendarTest, LocalTimeGoesThereAndBack) {
    UseZone("CET-1CEST,M3.5.0,M10.5.0/3");
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

TEST_F(CalendarTest, EndsWithTheYear3000) {
    UseZone("UTC0");
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

TEST_F(CalendarTest, NormalisesFieldsAndRefusesTimesBefore1970) {
    UseZone("UTC0");
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
