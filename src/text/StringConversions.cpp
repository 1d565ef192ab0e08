#include "text/StringConversions.h"

#include <algorithm>
#include <array>
#include <locale>
#include <sstream>
#include <string_view>

#include "platform/text.h"

namespace {

// Changes the case of a text in place; the second operation is for the Windows 9x family.
template <typename ChangeWide, typename ChangeNarrow>
WideString ChangeCase(WideString text, ChangeWide changeWide, ChangeNarrow changeNarrow) {
    if (!IsWin9x()) {
        changeWide(text.data(), static_cast<DWORD>(text.size()));
        return text;
    }
    std::string narrow = WideToNarrow(text);
    changeNarrow(narrow.data(), static_cast<DWORD>(narrow.size()));
    return NarrowToWide(narrow);
}

constexpr unsigned char FoldToLower(unsigned char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

constexpr unsigned char FoldToUpper(unsigned char byte) {
    return byte >= 'a' && byte <= 'z' ? static_cast<unsigned char>(byte - ('a' - 'A')) : byte;
}

template <typename String>
String ChangeAsciiCase(String text, unsigned char (*fold)(unsigned char)) {
    for (auto& unit : text) {
        unit = static_cast<typename String::value_type>(fold(static_cast<unsigned char>(unit)));
    }
    return text;
}

}  // namespace

WideString NarrowToWide(const std::string& text) {
    return WideFromCodePage(CP_ACP, text.c_str());
}

std::string WideToNarrow(const WideString& text) {
    return CodePageFromWide(CP_ACP, text.c_str());
}

WideString Utf8ToWide(const Utf8String& text) {
    return WideFromCodePage(CP_UTF8, reinterpret_cast<const char*>(text.c_str()));
}

Utf8String WideToUtf8(const WideString& text) {
    return CodePageFromWide<Utf8String>(CP_UTF8, text.c_str());
}

Utf8String NarrowToUtf8(const std::string& text) {
    return WideToUtf8(NarrowToWide(text));
}
std::string Utf8ToNarrow(const Utf8String& text) {
    return WideToNarrow(Utf8ToWide(text));
}

WideString StringToLower(const WideString& text) {
    return ChangeCase(text, CharLowerBuffW, CharLowerBuffA);
}
std::string StringToLower(const std::string& text) {
    return WideToNarrow(StringToLower(NarrowToWide(text)));
}
Utf8String StringToLower(const Utf8String& text) {
    return WideToUtf8(StringToLower(Utf8ToWide(text)));
}

WideString StringToUpper(const WideString& text) {
    return ChangeCase(text, CharUpperBuffW, CharUpperBuffA);
}
std::string StringToUpper(const std::string& text) {
    return WideToNarrow(StringToUpper(NarrowToWide(text)));
}
Utf8String StringToUpper(const Utf8String& text) {
    return WideToUtf8(StringToUpper(Utf8ToWide(text)));
}

std::string AsciiToLower(const std::string& text) {
    return ChangeAsciiCase(text, FoldToLower);
}
Utf8String AsciiToLower(const Utf8String& text) {
    return ChangeAsciiCase(text, FoldToLower);
}
std::string AsciiToUpper(const std::string& text) {
    return ChangeAsciiCase(text, FoldToUpper);
}
Utf8String AsciiToUpper(const Utf8String& text) {
    return ChangeAsciiCase(text, FoldToUpper);
}

int CompareBytesNoCase(std::string_view a, std::string_view b) {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        const int left = FoldToLower(static_cast<unsigned char>(a[i]));
        const int right = FoldToLower(static_cast<unsigned char>(b[i]));
        if (left != right) {
            return left - right;
        }
    }
    return a.size() > common ? 1 : b.size() > common ? -1 : 0;
}

char* Int64ToText(long long value, char* buffer, unsigned size, int base) {
    char* target = buffer;
    unsigned room = size;
    auto rest = static_cast<unsigned long long>(value);
    if (base == 10 && value < 0 && room > 1) {
        *target++ = '-';
        --room;
        rest = 0 - rest;
    }
    std::array<char, 64> digits{};
    std::size_t first = digits.size();
    do {
        digits[--first] =
            "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[rest % static_cast<unsigned>(base)];
        rest /= static_cast<unsigned>(base);
    } while (rest != 0);
    if (room > 0) {
        const std::size_t count = std::min<std::size_t>(digits.size() - first, room - 1);
        *std::copy_n(digits.begin() + static_cast<std::ptrdiff_t>(first), count, target) = '\0';
    }
    return buffer;
}

std::uint32_t HexTextToNumber(const std::string& text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const std::string upper = AsciiToUpper(text);
    std::uint32_t value = 0;
    for (std::size_t i = upper.starts_with("0X") ? 2 : 0; i < upper.size(); ++i) {
        const std::size_t digit = kDigits.find(upper[i]);
        if (digit == kDigits.npos) {
            break;
        }
        value = value << 4 | static_cast<std::uint32_t>(digit);
    }
    return value;
}

int TextToInt(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    int value = 0;
    stream >> value;
    return value;
}

bool IsWin9x() {
    return (GetVersion() & 0x80000000u) != 0;
}
