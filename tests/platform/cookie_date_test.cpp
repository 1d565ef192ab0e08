#include "platform/posix/cookies/cookie_date.h"

#include <gtest/gtest.h>

namespace {

struct DateCase {
    const char* text;
    std::optional<std::int64_t> seconds;
};

constexpr std::int64_t kNovember1994 = 784111777;

const DateCase kDates[] = {
    {"Sun, 06 Nov 1994 08:49:37 GMT", kNovember1994},
    {"Sunday, 06-Nov-94 08:49:37 GMT", kNovember1994},
    {"Sun Nov  6 08:49:37 1994", kNovember1994},
    {"sun, 6-NOV-1994 8:49:37 gmt", kNovember1994},
    {"Fri, 5-Mar-2032  9: 7: 5 GMT", 1962090425},
    {"Thu, 01 Jan 1970 00:00:00 GMT", 0},
    {"Wed, 31-Dec-69 23:59:59 GMT", 3155759999},
    {"Thu, 1-Jan-70 00:00:01 GMT", 1},
    {"Mon, 01-Jan-1601 00:00:00 GMT", -11644473600},
    {"Tue, 29 Feb 2028 12:00:00 GMT", 1835438400},
    {"Sun, 29 Feb 2026 12:00:00 GMT", {}},
    {"Sun, 31 Apr 2026 12:00:00 GMT", {}},
    {"Sun, 06 Nov 1994 24:00:00 GMT", {}},
    {"Sun, 06 Nov 1994 08:60:00 GMT", {}},
    {"Sun, 06 Nov 1994 08:49 GMT", {}},
    {"Sun, 06 Nov 1600 08:49:37 GMT", {}},
    {"Sun, 06 Nov 19945 08:49:37 GMT", {}},
    {"06 Nov 08:49:37", {}},
    {"tomorrow", {}},
    {"::", {}},
    {"", {}},
};

TEST(CookieDate, FormsOfWebServers) {
    for (const DateCase& date : kDates) {
        EXPECT_EQ(ParseCookieDate(date.text), date.seconds) << date.text;
    }
}

}  // namespace
