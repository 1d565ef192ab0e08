// The text of a cookie file in the Netscape form, which curl, wget and others read and write: one
// cookie a line, with tabs between domain, subdomains flag, path, secure flag, expiry, name and
// value.
//
// Lines that are not understood, comments among them, stay as they are, byte for byte and in their
// place. An object is the text of one moment and knows nothing of the disk; it belongs to one
// thread at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/errors.h"
#include "platform/posix/cookies/cookie_url.h"

namespace brevik::platform {

struct CookieRow {
    std::string domain;              // lower case, without a leading dot
    bool includesSubdomains = true;  // else the cookie is for this host alone
    std::string path = "/";
    bool isSecure = false;
    bool isHttpOnly = false;
    std::int64_t expires = 0;  // seconds since 1970; 0: at the end of the session
    std::string name;
    std::string value;

    bool IsExpired(std::int64_t now) const { return expires != 0 && expires <= now; }
};

// What a program asks the store to keep: "name=body;domain=D;expires=T".
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

class PLATFORM_API CookieFile {
  public:
    explicit CookieFile(std::string_view text);

    std::string Text() const;

    // The cookies that programs may see for the URL at the time `now`, "a=1; b=2" in the order of
    // the file, which is the order of their last storing.
    std::string CookiesFor(const CookieUrl& url, std::int64_t now) const;

    // Stores the cookie at the end, in place of the one with its name, domain and path; with an
    // expiry in the past it removes that one. NO_ERROR. With an error nothing is stored:
    // ERROR_INVALID_PARAMETER when the domain does not cover the URL's host or is a single label
    // that is not the host, ERROR_ACCESS_DENIED when a cookie to replace is marked HttpOnly or
    // secure.
    DWORD Store(const CookieUrl& url, const CookieSetText& order, std::int64_t now);

    // Every cookie of the file.
    std::vector<CookieRow> Rows() const;

  private:
    struct Line {
        std::string text;              // with its end
        std::optional<CookieRow> row;  // nothing for a line that is not understood
    };

    void Append(const CookieRow& row);

    std::vector<Line> lines_;
};

// The path of the user's cookie file; empty when there is no folder for it.
PLATFORM_API std::string CookieFilePath();

}  // namespace brevik::platform
