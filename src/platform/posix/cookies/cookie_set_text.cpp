#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

#include "platform/posix/cookies/cookie_file.h"

namespace brevik::platform {
namespace {

std::string_view WithoutLeadingBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

std::string_view Trimmed(std::string_view text) {
    text = WithoutLeadingBlanks(text);
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

// Cuts what precedes the sign from a text, and the sign.
std::string_view CutAt(char sign, std::string_view* text) {
    const std::string_view part = text->substr(0, text->find(sign));
    text->remove_prefix(std::min(part.size() + 1, text->size()));
    return part;
}

// Seconds since 1970 of "Fri, 5-Mar-2032  9: 7: 5 GMT", whose numbers blanks or zeros may pad.
// Nothing for any other text and for a date that does not exist.
std::optional<std::int64_t> ParseDate(std::string_view text) {
    constexpr std::array<std::string_view, 12> kMonths = {"jan", "feb", "mar", "apr", "may", "jun",
                                                          "jul", "aug", "sep", "oct", "nov", "dec"};
    unsigned day = 0, year = 0, hour = 0, minute = 0, second = 0;
    char month[4] = {};
    const int fields =
        std::sscanf(LowerAscii(text).c_str(), "%*3[a-z], %2u-%3[a-z]-%4u %2u:%2u:%2u gmt", &day,
                    month, &year, &hour, &minute, &second);
    const auto* const name = std::ranges::find(kMonths, month);
    const auto place = static_cast<unsigned>(name - kMonths.begin());
    if (fields != 6 || year > 9999 || hour > 23 || minute > 59 || second > 59) {
        return {};
    }
    const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(year)),
                                           std::chrono::month(place + 1), std::chrono::day(day));
    constexpr unsigned kLastDay = 31;
    if (day > kLastDay || !date.ok()) {
        return {};
    }
    const std::chrono::seconds time =
        std::chrono::hours(hour) + std::chrono::minutes(minute) + std::chrono::seconds(second);
    return (std::chrono::sys_days(date).time_since_epoch() + time) / std::chrono::seconds(1);
}

}  // namespace

DWORD ParseCookieSetText(std::string_view data, CookieSetText* parts) {
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
    while (!data.empty()) {
        std::string_view value = CutAt(';', &data);
        const std::string name = LowerAscii(Trimmed(CutAt('=', &value)));
        value = Trimmed(value);
        if (name == "domain") {
            parts->domain = LowerAscii(value.substr(value.starts_with('.') ? 1 : 0));
        } else if (name == "expires") {
            parts->expires = ParseDate(value);
        }
    }
    return NO_ERROR;
}

}  // namespace brevik::platform
