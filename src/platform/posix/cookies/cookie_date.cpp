#include "platform/posix/cookies/cookie_date.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>

#include "platform/posix/cookies/cookie_url.h"

namespace brevik::platform {
namespace {

constexpr std::array<std::string_view, 12> kMonths = {"jan", "feb", "mar", "apr", "may", "jun",
                                                      "jul", "aug", "sep", "oct", "nov", "dec"};

constexpr bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

// What stands between the words of a date: anything but digits, letters and the colon of a time.
constexpr bool IsSeparator(char character) {
    return !IsDigit(character) && !(character >= 'a' && character <= 'z') && character != ':';
}

// The number that a word begins with, where it has as many digits as that; what stands behind it
// does not matter.
std::optional<int> LeadingNumber(std::string_view word, std::size_t fewest, std::size_t most) {
    std::size_t digits = 0;
    int number = 0;
    for (; digits < word.size() && IsDigit(word[digits]); ++digits) {
        if (digits == most) {
            return {};
        }
        number = number * 10 + (word[digits] - '0');
    }
    return digits >= fewest ? std::optional(number) : std::nullopt;
}

std::optional<std::chrono::seconds> TimeOfDay(std::string_view word) {
    std::array<int, 3> fields;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::size_t colon = word.find(':');
        const bool isLast = i + 1 == fields.size();
        const auto field = LeadingNumber(isLast ? word : word.substr(0, colon), 1, 2);
        if (!field || (!isLast && colon == word.npos)) {
            return {};
        }
        fields[i] = *field;
        word.remove_prefix(isLast ? 0 : colon + 1);
    }
    if (fields[0] > 23 || fields[1] > 59 || fields[2] > 59) {
        return {};
    }
    return std::chrono::hours(fields[0]) + std::chrono::minutes(fields[1]) +
           std::chrono::seconds(fields[2]);
}

std::optional<std::chrono::month> Month(std::string_view word) {
    const auto* found = std::ranges::find(kMonths, word.substr(0, 3));
    if (found == kMonths.end()) {
        return {};
    }
    return std::chrono::month(static_cast<unsigned>(found - kMonths.begin()) + 1);
}

std::optional<std::chrono::year> Year(std::string_view word) {
    const auto number = LeadingNumber(word, 2, 4);
    if (!number) {
        return {};
    }
    const int century = *number > 99 ? 0 : *number >= 70 ? 1900 : 2000;
    return std::chrono::year(century + *number);
}

struct DateFields {
    std::optional<std::chrono::seconds> time;
    std::optional<int> day;
    std::optional<std::chrono::month> month;
    std::optional<std::chrono::year> year;
};

// Gives the word to the first field that it can be and that is not told yet. The day stands ahead
// of the year in every form, so two digits are the day first.
void TakeWord(std::string_view word, DateFields* fields) {
    if (!fields->time && (fields->time = TimeOfDay(word))) {
        return;
    }
    if (!fields->day && (fields->day = LeadingNumber(word, 1, 2))) {
        return;
    }
    if (!fields->month && (fields->month = Month(word))) {
        return;
    }
    if (!fields->year) {
        fields->year = Year(word);
    }
}

// Lower case, with the blanks behind a colon taken out, so that a padded time is one word.
std::string Normalised(std::string_view text) {
    std::string normalised;
    for (const char character : LowerAscii(text)) {
        if (character != ' ' || !normalised.ends_with(':')) {
            normalised += character;
        }
    }
    return normalised;
}

}  // namespace

std::optional<std::int64_t> ParseCookieDate(std::string_view text) {
    constexpr std::chrono::year kFirstYear{1601};
    const std::string normalised = Normalised(text);
    DateFields fields;
    for (auto begin = normalised.begin(); begin != normalised.end();) {
        begin = std::find_if_not(begin, normalised.end(), IsSeparator);
        const auto end = std::find_if(begin, normalised.end(), IsSeparator);
        TakeWord(std::string_view(begin, end), &fields);
        begin = end;
    }
    if (!fields.time || !fields.day || !fields.month || !fields.year) {
        return {};
    }
    const std::chrono::year_month_day date(*fields.year, *fields.month,
                                           std::chrono::day(static_cast<unsigned>(*fields.day)));
    if (!date.ok() || date.year() < kFirstYear) {
        return {};
    }
    return (std::chrono::sys_days(date).time_since_epoch() + *fields.time) /
           std::chrono::seconds(1);
}

}  // namespace brevik::platform
