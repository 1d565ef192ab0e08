// The cookie store of the user's web clients.
//
// Off Windows it is the file users/LOGIN/cookies.txt of the machine, in the Netscape form.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/errors.h"
#include "platform/types.h"

#ifdef _WIN32

// The system's store knows nothing of it.
inline void NameWrittenCookie(const char*) {}

#else

namespace brevik::platform {

// All cookies that a web client would send to the URL, "a=1; b=2" in the order of their last
// storing, those marked HttpOnly left out. With a null buffer only `size` is set, to the bytes
// needed with the NUL, and the thread's next call for the same URL answers from the same state of
// the store. False with error 259 without a cookie, 122 when the buffer is too small, 87 for an
// empty URL or one without a host, 12006 for one without a scheme. `name` is not looked at.
PLATFORM_API BOOL InternetGetCookieA(const char* url, const char* name, char* buffer, DWORD* size);

// Stores every `name=body` pair ahead of the attributes (domain, path, expires, max-age, secure,
// httponly, samesite). A pair whose body has not changed keeps its own domain, path, secure mark
// and session nature. A date in the past removes. All pairs are stored or none: false with error 87
// when the domain does not cover the URL's host, 5 when a cookie is one that the URL may not
// overwrite, 32 when another writer holds the store for two seconds. With a `name` that is not
// null, `data` is the body and attributes of this one cookie.
//
// A pair that the thread's last read of this URL told, with this very body, is only passed on: what
// the store holds of it by now stays as it is, its expiry too, and one that has been removed or
// changed since stays so. A date in the past removes it where it has not been changed. When all
// pairs are such, those still held are stored again, and the expiry of none is shortened. Each call
// forgets what the thread was told.
PLATFORM_API BOOL InternetSetCookieA(const char* url, const char* name, const char* data);

// Tells which cookie the thread's next InternetSetCookieA writes: it is stored even if the thread
// was told of it with the same body, and takes the new expiry; all others that it was told of are
// passed on.
PLATFORM_API void NameWrittenCookie(const char* name);

}  // namespace brevik::platform

#endif

// Whether a cookie of this name could be taken for an attribute of another one, in any case and
// with blanks around it.
inline bool IsCookieAttributeName(std::string_view name) {
    constexpr std::array<std::string_view, 9> kNames = {"domain",   "path",     "expires",
                                                        "max-age",  "secure",   "httponly",
                                                        "samesite", "priority", "partitioned"};
    name.remove_prefix(std::min(name.find_first_not_of(' '), name.size()));
    name = name.substr(0, name.find_last_not_of(' ') + 1);
    return std::ranges::any_of(kNames, [name](std::string_view attribute) {
        return std::ranges::equal(name, attribute, [](char a, char b) {
            return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + ('a' - 'A')) : a) == b;
        });
    });
}
