#include "platform/posix/cookies/cookie_set_text.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "platform/posix/cookies/cookie_date.h"
#include "platform/posix/cookies/cookie_url.h"

namespace brevik::platform {
namespace {

std::string_view WithoutLeadingBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

std::string_view Trimmed(std::string_view text) {
    text = WithoutLeadingBlanks(text);
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

// Cuts what stands in front of the sign from a text, and the sign.
std::string_view CutAt(char sign, std::string_view* text) {
    const std::string_view part = text->substr(0, text->find(sign));
    text->remove_prefix(std::min(part.size() + 1, text->size()));
    return part;
}

// The end of so many seconds from now; a number too large is far away.
std::optional<std::int64_t> ParseMaxAge(std::string_view text, std::int64_t now) {
    std::int64_t seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (error == std::errc::invalid_argument || end != text.data() + text.size()) {
        return {};
    }
    if (error == std::errc::result_out_of_range) {
        seconds = std::numeric_limits<std::int64_t>::max();
    }
    if (text.starts_with('-') || seconds == 0) {
        return std::int64_t{0};
    }
    return now + std::min(seconds, std::numeric_limits<std::int64_t>::max() - now);
}

}  // namespace

DWORD ParseCookieSetText(std::string_view data, std::int64_t now, CookieSetText* parts) {
    if (std::ranges::any_of(data, IsControlCharacter)) {
        return ERROR_INVALID_PARAMETER;
    }
    std::string_view body = WithoutLeadingBlanks(CutAt(';', &data));
    const bool hasSign = body.find('=') != body.npos;
    parts->name = CutAt('=', &body);
    parts->body = body;
    if (!hasSign || parts->name.empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    std::optional<std::int64_t> maxAge;
    while (!data.empty()) {
        std::string_view value = CutAt(';', &data);
        const std::string name = LowerAscii(Trimmed(CutAt('=', &value)));
        value = Trimmed(value);
        if (name == "domain") {
            parts->domain = LowerAscii(value.substr(value.starts_with('.') ? 1 : 0));
        } else if (name == "path") {
            parts->path = value.starts_with('/') ? value : "/";
        } else if (name == "expires") {
            parts->expires = ParseCookieDate(value);
        } else if (name == "max-age") {
            maxAge = ParseMaxAge(value, now);
        } else if (name == "secure") {
            parts->isSecure = true;
        } else if (name == "httponly") {
            parts->isHttpOnly = true;
        }
    }
    if (maxAge) {
        parts->expires = maxAge;
    }
    return NO_ERROR;
}

}  // namespace brevik::platform
