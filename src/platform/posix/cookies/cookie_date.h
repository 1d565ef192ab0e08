// Dates of cookies.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/types.h"

namespace brevik::platform {

// Seconds since 1970 of a date as web servers write it, in Coordinated Universal Time whatever zone
// it names: "Sun, 06 Nov 1994 08:49:37 GMT", "Sunday, 06-Nov-94 08:49:37 GMT", "Sun Nov  6 08:49:37
// 1994", and with a time padded by blanks, "Fri, 5-Mar-2032  9: 7: 5 GMT". Years of two digits lie
// between 1970 and 2069. Nothing for any other text and for a day that does not exist.
PLATFORM_API std::optional<std::int64_t> ParseCookieDate(std::string_view text);

}  // namespace brevik::platform
