#include "cookies/CookieEncryptor.h"

#include <array>
#include <cstdio>
#include <ctime>

#include "platform/clock.h"

namespace {

constexpr std::int32_t kPeriodInDays = 183;
constexpr std::uint32_t kNoStamp = 0xFFFFFFFF;
constexpr double kChecksumFactor = 0.321;

constexpr std::array<const char*, 7> kDayNames = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<const char*, 12> kMonthNames = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// Stamps count from the beginning of 26 February 2001 in local time.
__time64_t StampBase() {
    std::tm base = {};
    base.tm_year = 101;
    base.tm_mon = 1;
    base.tm_mday = 26;
    base.tm_isdst = -1;
    return _mktime64(&base);
}

std::string FormatDate(const std::tm& date) {
    char text[260];
    std::snprintf(text, sizeof text, "%s, %i-%s-%4i %2i:%2i:%2i GMT",
                  kDayNames[static_cast<std::size_t>(date.tm_wday)], date.tm_mday,
                  kMonthNames[static_cast<std::size_t>(date.tm_mon)], date.tm_year + 1900,
                  date.tm_hour, date.tm_min, date.tm_sec);
    return text;
}

}  // namespace

CookieEncryptor::CookieEncryptor(const std::string& domain)
    : domain_(NarrowToUtf8(domain)), stamp_(kNoStamp) {
    SetExpiry(kPeriodInDays, 0, 0, 0);
}

bool CookieEncryptor::SetExpiry(std::int32_t days, std::int32_t hours, std::int32_t minutes,
                                std::int32_t seconds) {
    const __time64_t period = ((__time64_t{days} * 24 + hours) * 60 + minutes) * 60 + seconds;
    const __time64_t expiry = _time64(nullptr) + period;
    std::tm date = {};
    if (_localtime64_s(&date, &expiry) != 0) {
        return false;
    }
    expires_ = NarrowToUtf8(FormatDate(date));
    stamp_ = static_cast<std::uint32_t>(expiry - StampBase());
    return true;
}

void CookieEncryptor::AppendAttributes(Utf8String& text) const {
    text += NarrowToUtf8(";domain=") + domain_;
    if (!expires_.empty()) {
        text += NarrowToUtf8(";expires=") + expires_;
    }
}

bool CookieEncryptor::AddPair(const std::string& name, const std::string& value) {
    pairs_.emplace_back(NarrowToUtf8(name), NarrowToUtf8(value));
    return true;
}

bool CookieEncryptor::FormatSealed(Utf8String& text, bool withChecksum) const {
    Utf8String covered;
    if (stamp_ != kNoStamp) {
        text += NarrowToUtf8("1=" + std::to_string(stamp_) + "l&");
        covered += expires_;
    }
    Utf8String joined;
    for (const auto& [name, value] : pairs_) {
        joined += joined.empty() ? Utf8String() : Utf8String{'&'};
        joined += name + Utf8String{'='} + value;
    }
    if (!withChecksum) {
        text += joined;
        return true;
    }
    text += NarrowToUtf8("2=1&3=") + joined;
    covered += Utf8String{'1'} + joined;
    text += NarrowToUtf8("&4=" + CookieChecksum(covered));
    return true;
}

std::string CookieChecksum(const Utf8String& text) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        sum += static_cast<std::uint32_t>(text[i] * i);
    }
    const auto scaled = static_cast<std::int64_t>(sum * kChecksumFactor);
    char digits[16];
    return Int64ToText(static_cast<std::int32_t>(scaled), digits, sizeof digits, 10);
}
