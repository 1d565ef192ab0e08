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
    std::string domain;                   // lower case, without a leading dot; empty: not told
    std::string path = "/";               // begins with "/"
    std::optional<std::int64_t> expires;  // seconds since 1970; nothing for the end of the session
    bool isSecure = false;
    bool isHttpOnly = false;
};

// Takes a text apart at the time `now`: the cookie, and what follows its first ";" as attributes,
// of which unknown ones count for nothing. NO_ERROR; 87 for a cookie without a name or without "=",
// and for any control character. An expiry date that cannot be understood counts as none.
PLATFORM_API DWORD ParseCookieSetText(std::string_view data, std::int64_t now,
                                      CookieSetText* parts);

}  // namespace brevik::platform
