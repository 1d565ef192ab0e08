#include "brevikctl/output/terminal.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include "brevikctl/output/trouble.h"
#include "platform/posix/text/host_text.h"

namespace {

constexpr std::array<const char*, 4> kColourMarks = {"", "\x1b[31m", "\x1b[33m", "\x1b[2m"};
constexpr const char* kPlainMark = "\x1b[0m";

// The characters that are never written as they are: controls, line and paragraph separators, and
// the marks that reorder what stands around them.
struct Range {
    char16_t first;
    char16_t last;
};
constexpr Range kUnsafe[] = {
    {0x0000, 0x001F}, {0x007F, 0x009F}, {0x2028, 0x202E}, {0x2066, 0x2069}};

bool IsUnsafe(char16_t unit) {
    return std::ranges::any_of(
        kUnsafe, [unit](const Range& range) { return unit >= range.first && unit <= range.last; });
}

void Append(std::u16string* target, const char* format, unsigned value) {
    char escape[16];
    std::snprintf(escape, sizeof escape, format, value);
    for (const char* at = escape; *at != '\0'; ++at) {
        *target += static_cast<char16_t>(*at);
    }
}

}  // namespace

bool IsColourWelcome(int descriptor) {
    const char* unwanted = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return isatty(descriptor) == 1 && (unwanted == nullptr || *unwanted == '\0') &&
           terminal != nullptr && std::string_view(terminal) != "dumb";
}

std::string Coloured(Colour colour, const std::string& text) {
    return colour == Colour::kNone
               ? text
               : kColourMarks[static_cast<std::size_t>(colour)] + text + kPlainMark;
}

std::string SafeText(std::string_view text) {
    std::u16string safe;
    for (const char16_t unit : WideFromUtf8(text)) {
        if (IsUnsafe(unit)) {
            Append(&safe, unit < 0x80 ? "\\x%02X" : "\\u%04X", unit);
        } else {
            safe += unit;
        }
    }
    return Utf8FromWide(safe);
}

std::string Quoted(std::string_view text) {
    return "'" + SafeText(text) + "'";
}

void PrintLine(const std::string& line) {
    std::printf("%s\n", isatty(STDOUT_FILENO) == 1 ? SafeText(line).c_str() : line.c_str());
}

std::string JsonString(std::string_view text) {
    std::u16string quoted = u"\"";
    for (const char16_t unit : WideFromUtf8(text)) {
        if (IsUnsafe(unit)) {
            Append(&quoted, "\\u%04x", unit);
        } else {
            if (unit == u'"' || unit == u'\\') {
                quoted += u'\\';
            }
            quoted += unit;
        }
    }
    return Utf8FromWide(quoted + u"\"");
}

bool WriteText(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count < 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

std::u16string WideArgument(const std::string& text) {
    std::u16string wide = WideFromUtf8(text);
    if (Utf8FromWide(wide) != text) {
        Fail(Quoted(text) + " is no UTF-8 text");
    }
    return wide;
}
