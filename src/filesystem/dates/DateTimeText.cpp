// The text forms of dates, times, zones and time stamps.

#include <algorithm>
#include <cstdio>
#include <istream>
#include <ostream>
#include <string_view>

#include "filesystem/dates/DateTime.h"

namespace {

// Takes characters off a stream one at a time, without marking it as failed at its end.
class Reader {
  public:
    explicit Reader(std::istream& stream) : stream_(stream), isReady_(stream) {}

    bool IsReady() const { return static_cast<bool>(isReady_); }

    // The next character; -1 at the stream's end.
    int Peek() {
        const auto next = stream_.rdbuf()->sgetc();
        if (next == Traits::eof()) {
            stream_.setstate(std::ios::eofbit);
            return -1;
        }
        return static_cast<unsigned char>(Traits::to_char_type(next));
    }

    bool Take(char wanted) {
        if (Peek() != wanted) {
            return false;
        }
        stream_.rdbuf()->sbumpc();
        return true;
    }

    bool Take(std::string_view wanted) {
        return std::ranges::all_of(wanted, [this](char character) { return Take(character); });
    }

    // Decimal digits, at least one, of a value up to `limit`.
    bool Take(std::uint32_t* value, std::uint32_t limit) {
        std::uint64_t number = 0;
        bool any = false;
        for (int digit; (digit = Peek()) >= '0' && digit <= '9'; any = true) {
            stream_.rdbuf()->sbumpc();
            number = number * 10 + static_cast<std::uint32_t>(digit - '0');
            if (number > limit) {
                return false;
            }
        }
        *value = static_cast<std::uint32_t>(number);
        return any;
    }

  private:
    using Traits = std::istream::traits_type;

    std::istream& stream_;
    std::istream::sentry isReady_;
};

bool Read(Reader& reader, TimeOfDay* time) {
    constexpr std::uint32_t kLargest = 0xFFFFFFFF;
    std::uint32_t hour = 0;
    std::uint32_t minute = 0;
    std::uint32_t second = 0;
    if (!reader.Take(&hour, 23) || !reader.Take(':') || !reader.Take(&minute, 59) ||
        !reader.Take(':') || !reader.Take(&second, 59)) {
        return false;
    }
    std::uint32_t ticks = 0;
    std::uint32_t base = TimeOfDay::kTicksPerSecond;
    if (reader.Take('+') && (!reader.Take(&ticks, kLargest) || !reader.Take('/') ||
                             !reader.Take(&base, kLargest) || ticks >= base)) {
        return false;
    }
    *time = TimeOfDay(
        static_cast<std::uint8_t>(hour), static_cast<std::uint8_t>(minute),
        static_cast<std::uint8_t>(second),
        static_cast<std::uint32_t>(std::uint64_t{ticks} * TimeOfDay::kTicksPerSecond / base));
    return true;
}

bool Read(Reader& reader, Date* date) {
    constexpr std::uint32_t kLastYear = 32767;
    std::uint32_t day = 0;
    std::uint32_t month = 0;
    std::uint32_t number = 0;
    if (!reader.Take(&day, 31) || !reader.Take('.') || !reader.Take(&month, 12) ||
        !reader.Take('.') || !reader.Take(&number, kLastYear)) {
        return false;
    }
    int year = static_cast<int>(number);
    if (reader.Peek() == 'B') {
        if (!reader.Take("BCE")) {
            return false;
        }
        year = -year;
    }
    if (year == 0 || day == 0 ||
        static_cast<int>(day) > Date::GetDaysInMonth(static_cast<int>(month), year)) {
        return false;
    }
    *date = Date(static_cast<std::uint8_t>(day), static_cast<std::uint8_t>(month),
                 static_cast<std::int16_t>(year));
    return true;
}

bool Read(Reader& reader, TimeZone* zone) {
    constexpr std::uint32_t kMostHours = 13;
    if (!reader.Take("UTC")) {
        return false;
    }
    std::uint32_t hours = 0;
    std::uint32_t minutes = 0;
    const bool isWest = reader.Peek() == '-';
    if (reader.Take('-') || reader.Take('+')) {
        if (!reader.Take(&hours, kMostHours) || (reader.Take(':') && !reader.Take(&minutes, 59))) {
            return false;
        }
    }
    const bool isDaylight = reader.Peek() == 'D';
    if (isDaylight && !reader.Take("DST")) {
        return false;
    }
    *zone = TimeZone(static_cast<std::uint8_t>(hours), static_cast<std::uint8_t>(minutes), isWest,
                     isDaylight);
    return true;
}

bool Read(Reader& reader, DateTime* time) {
    TimeOfDay timeOfDay;
    Date date;
    TimeZone zone;
    if (!Read(reader, &timeOfDay) || !reader.Take('-') || !Read(reader, &date) ||
        !reader.Take('-') || !Read(reader, &zone)) {
        return false;
    }
    *time = DateTime(timeOfDay, date, zone);
    return true;
}

template <typename T>
std::istream& ReadFrom(std::istream& stream, T* value) {
    Reader reader(stream);
    if (!reader.IsReady() || !Read(reader, value)) {
        stream.setstate(std::ios::failbit);
    }
    return stream;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const TimeOfDay& time) {
    char text[48];
    if (time.GetTicks() == 0) {
        std::snprintf(text, sizeof text, "%02d:%02d:%02d", time.GetHour(), time.GetMinute(),
                      time.GetSecond());
    } else {
        std::snprintf(text, sizeof text, "%02d:%02d:%02d+%d/%d", time.GetHour(), time.GetMinute(),
                      time.GetSecond(), time.GetTicks(), TimeOfDay::kTicksPerSecond);
    }
    return stream << text;
}

std::ostream& operator<<(std::ostream& stream, const Date& date) {
    const int year = date.GetYear() == 0 ? 1 : date.GetYear();
    char text[32];
    std::snprintf(text, sizeof text, "%d.%d.%d%s", date.GetDay(), date.GetMonth(),
                  year < 0 ? -year : year, year < 0 ? "BCE" : "");
    return stream << text;
}

std::ostream& operator<<(std::ostream& stream, const TimeZone& zone) {
    char offset[16] = "";
    if (zone.GetHours() != 0 || zone.GetMinutes() != 0) {
        std::snprintf(offset, sizeof offset, "%c%02d:%02d", zone.IsWest() ? '-' : '+',
                      zone.GetHours(), zone.GetMinutes());
    }
    char text[32];
    std::snprintf(text, sizeof text, "UTC%s%s", offset, zone.IsDaylight() ? "DST" : "");
    return stream << text;
}

std::ostream& operator<<(std::ostream& stream, const DateTime& time) {
    return stream << time.GetTime() << '-' << time.GetDate() << '-' << time.GetZone();
}

std::istream& operator>>(std::istream& stream, TimeOfDay& time) {
    return ReadFrom(stream, &time);
}
std::istream& operator>>(std::istream& stream, Date& date) {
    return ReadFrom(stream, &date);
}
std::istream& operator>>(std::istream& stream, TimeZone& zone) {
    return ReadFrom(stream, &zone);
}
std::istream& operator>>(std::istream& stream, DateTime& time) {
    return ReadFrom(stream, &time);
}
