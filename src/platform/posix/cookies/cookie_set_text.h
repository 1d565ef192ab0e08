// What a program asks the cookie store to keep: "name=body;domain=D;expires=T".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/errors.h"

namespace brevik::platform {

struct CookieSetText {
    std::string name;
    std::string body;
    std::string domain;                   // lower case, without a leading dot; empty: not given
    std::optional<std::int64_t> expires;  // seconds since 1970; nothing for the end of the session
};

// Takes a text apart: the cookie, and what follows its first ";" as attributes, of which others
// than these count for nothing. NO_ERROR; ERROR_INVALID_PARAMETER for a cookie without a name or
// without "=", and for any control character. The one form of a date that is understood is "Fri,
// 5-Mar-2032  9: 7: 5 GMT"; any other counts as none.
PLATFORM_API DWORD ParseCookieSetText(std::string_view data, CookieSetText* parts);

}  // namespace brevik::platform
