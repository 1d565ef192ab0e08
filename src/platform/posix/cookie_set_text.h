// What a program asks the cookie store to keep: "name=body; name=body; domain=D; expires=T".
//
// Other programs' cookies may bear any name, also "path" or "domain", and a text may hold them
// ahead of its attributes. So the attributes are the longest run of segments at the end that bear
// attribute names, and the first segment is never one. Where the last attribute follows its
// semicolon at once, the run ends at the first segment with a blank in front: whoever writes
// ";domain=D;expires=T" behind "a=1; secure=2" means the cookie "secure".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/errors.h"

namespace brevik::platform {

// What a caller does with a pair of its text.
enum class CookiePairUse {
    kWritten,   // it is the caller's own: stored whatever the store holds
    kRepeated,  // it is what the caller was told: stored again, unless others have changed it since
    kPassedOn,  // it is what the caller was told, beside one that it writes: left to the store
};

struct CookiePair {
    std::string name;
    std::string body;
    CookiePairUse use = CookiePairUse::kWritten;
};

struct CookieSetText {
    std::vector<CookiePair> pairs;
    std::string domain;                   // lower case, without a leading dot; empty: not told
    std::string path = "/";               // begins with "/"
    std::optional<std::int64_t> expires;  // seconds since 1970; nothing for the end of the session
    bool isSecure = false;
    bool isHttpOnly = false;
};

// Takes a text apart at the time `now`. With a `name` the first segment is the body of the one
// cookie of this name, and what follows are attributes. NO_ERROR; 87 for a text without a pair, for
// a pair without a name or without "=", and for any control character. An expiry date that cannot
// be understood counts as none, and so does an attribute of another name behind a named cookie.
PLATFORM_API DWORD ParseCookieSetText(const char* name, std::string_view data, std::int64_t now,
                                      CookieSetText* parts);

}  // namespace brevik::platform
