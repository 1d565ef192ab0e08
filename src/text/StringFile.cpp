#include "text/StringFile.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace {

constexpr std::string_view kSpaces = " \t\v\f\r\n";

WideString UnitsOf(const std::string& bytes, bool bigEndian) {
    // The last byte of an odd file is a unit of its own, completed by 0.
    const std::size_t count = (bytes.size() - 1) / 2;
    WideString units;
    units.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto at = [&](std::size_t index) {
            return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0u;
        };
        const unsigned first = at(2 + 2 * i);
        const unsigned second = at(3 + 2 * i);
        units.push_back(static_cast<WCHAR>(bigEndian ? first << 8 | second : second << 8 | first));
    }
    return units;
}

// Reads the number in the first column and removes it from the line. 0 where there is none.
long TakeId(std::string_view& line) {
    const bool signedNumber = !line.empty() && (line[0] == '-' || line[0] == '+');
    const std::size_t firstDigit = signedNumber ? 1 : 0;
    std::size_t end = line.find_first_not_of("0123456789", firstDigit);
    end = end == std::string_view::npos ? line.size() : end;
    if (end == firstDigit) {
        return 0;
    }
    long id = std::strtol(std::string(line.substr(0, end)).c_str(), nullptr, 10);
    line.remove_prefix(end);
    if (id == 0 && !line.empty() && line[0] == 'x') {
        line.remove_prefix(1);
        end = line.find_first_not_of("0123456789abcdefABCDEF");
        end = end == std::string_view::npos ? line.size() : end;
        id = std::strtol(std::string(line.substr(0, end)).c_str(), nullptr, 16);
        line.remove_prefix(end);
    }
    return id;
}

void ParseLine(std::string_view line, std::map<long, Utf8String>& strings) {
    if (line[0] == ';' || line[0] == '#') {
        return;
    }
    const long id = TakeId(line);
    if (id == 0) {
        return;
    }
    const std::size_t first = line.find_first_not_of(kSpaces);
    const std::string_view text =
        first == std::string_view::npos
            ? std::string_view()
            : line.substr(first, line.find_last_not_of(kSpaces) - first + 1);
    strings[id].assign(text.begin(), text.end());
}

}  // namespace

Utf8String DecodeStringFile(const std::string& bytes) {
    if (bytes.size() < 2) {
        return {};
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        return Utf8String(bytes.begin() + 3, bytes.end());
    }
    return WideToUtf8(UnitsOf(bytes, bytes.starts_with("\xFE\xFF")));
}

std::map<long, Utf8String> ParseStringFile(const Utf8String& text) {
    std::map<long, Utf8String> strings;
    std::string_view rest(reinterpret_cast<const char*>(text.data()), text.size());
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
        if (end > 0) {
            ParseLine(rest.substr(0, end), strings);
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return strings;
}
