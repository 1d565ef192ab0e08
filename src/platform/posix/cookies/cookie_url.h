// The place that a cookie is asked for: what a URL says about host and path, and how hosts and
// paths of cookies match it.
#pragma once

#include <string>
#include <string_view>

#include "platform/errors.h"

namespace brevik::platform {

struct CookieUrl {
    std::string host;  // lower case, without user, port and brackets
    std::string path;  // from its "/" on, without query and fragment
};

// NO_ERROR; ERROR_INVALID_PARAMETER for an empty URL and for one without a host, with one of more
// than 255 bytes or with blanks or control characters in it, ERROR_INTERNET_UNRECOGNIZED_SCHEME for
// one that does not begin with "http://".
PLATFORM_API DWORD ParseCookieUrl(std::string_view url, CookieUrl* parts);

// Whether the host is the domain or lies beneath it. Nothing lies beneath an IP address. Both in
// lower case, the domain without a leading dot.
PLATFORM_API bool IsHostWithin(const std::string& host, const std::string& domain);

PLATFORM_API bool IsIpAddress(const std::string& host);

// Whether the path of a URL is the path of a cookie or lies beneath it.
PLATFORM_API bool IsPathWithin(std::string_view path, std::string_view cookiePath);

// ASCII letters alone; a host in any other alphabet is compared byte by byte.
PLATFORM_API std::string LowerAscii(std::string_view text);

constexpr bool IsControlCharacter(char character) {
    return (character >= 0 && character < 0x20) || character == 0x7F;
}

}  // namespace brevik::platform
