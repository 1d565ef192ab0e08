// Dates of cookies: a date that is understood is within the calendar, and stays the same with
// blanks around it and in the other case.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/posix/cookies/cookie_date.h"
#include "platform/posix/cookies/cookie_url.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::int64_t kFirst = -11644473600;  // 1 January 1601
    constexpr std::int64_t kEnd = 253402300800;    // 1 January 10000
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto seconds = ParseCookieDate(text);
    if ((seconds && (*seconds < kFirst || *seconds >= kEnd)) ||
        ParseCookieDate(" " + LowerAscii(text) + " ") != seconds) {
        std::abort();
    }
    return 0;
}
