#include "platform/posix/cookie_set_text.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "platform/cookie_store.h"
#include "platform/posix/cookie_date.h"
#include "platform/posix/cookie_url.h"

namespace brevik::platform {
namespace {

std::string_view WithoutLeadingBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

std::string_view Trimmed(std::string_view text) {
    text = WithoutLeadingBlanks(text);
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::string AttributeName(std::string_view segment) {
    return LowerAscii(Trimmed(segment.substr(0, segment.find('='))));
}

bool IsAttribute(std::string_view segment) {
    return IsCookieAttributeName(segment.substr(0, segment.find('=')));
}

// The segments as they stand; those of blanks alone are left out.
std::vector<std::string_view> Segments(std::string_view text) {
    std::vector<std::string_view> segments;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(';', begin), text.size());
        const std::string_view segment = text.substr(begin, end - begin);
        if (!Trimmed(segment).empty()) {
            segments.push_back(segment);
        }
        begin = end + 1;
    }
    return segments;
}

// The index of the first attribute.
std::size_t AttributesBegin(const std::vector<std::string_view>& segments) {
    std::size_t begin = segments.size();
    const bool isTight = !segments.empty() && !segments.back().starts_with(' ');
    while (begin > 1 && IsAttribute(segments[begin - 1]) &&
           !(isTight && segments[begin - 1].starts_with(' '))) {
        --begin;
    }
    return begin;
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

void TakeAttributes(const std::vector<std::string_view>& segments, std::size_t begin,
                    std::int64_t now, CookieSetText* parts) {
    std::optional<std::int64_t> maxAge;
    for (std::size_t i = begin; i < segments.size(); ++i) {
        const std::size_t equals = segments[i].find('=');
        const std::string_view value =
            equals == std::string_view::npos ? "" : Trimmed(segments[i].substr(equals + 1));
        const std::string name = AttributeName(segments[i]);
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
}

bool TakePair(std::string_view segment, CookieSetText* parts) {
    segment = WithoutLeadingBlanks(segment);
    const std::size_t equals = segment.find('=');
    if (equals == segment.npos || equals == 0) {
        return false;
    }
    parts->pairs.push_back(
        {std::string(segment.substr(0, equals)), std::string(segment.substr(equals + 1))});
    return true;
}

}  // namespace

DWORD ParseCookieSetText(const char* name, std::string_view data, std::int64_t now,
                         CookieSetText* parts) {
    std::string text(data);
    if (name != nullptr) {
        if (std::string_view(name).find_first_of("=;") != std::string_view::npos) {
            return ERROR_INVALID_PARAMETER;
        }
        text = std::string(name) + '=' + text;
    }
    if (std::ranges::any_of(text, IsControlCharacter)) {
        return ERROR_INVALID_PARAMETER;
    }
    const std::vector<std::string_view> segments = Segments(text);
    const std::size_t attributesBegin =
        name != nullptr ? std::min<std::size_t>(1, segments.size()) : AttributesBegin(segments);
    for (std::size_t i = 0; i < attributesBegin; ++i) {
        if (!TakePair(segments[i], parts)) {
            return ERROR_INVALID_PARAMETER;
        }
    }
    TakeAttributes(segments, attributesBegin, now, parts);
    return parts->pairs.empty() ? ERROR_INVALID_PARAMETER : NO_ERROR;
}

}  // namespace brevik::platform
