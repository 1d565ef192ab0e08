// The three kinds of text, and the ways between them.
//
//   narrow  std::string, in the system's code page (UTF-8 off Windows) or plain ASCII
//   wide    WideString, UTF-16
//   UTF-8   Utf8String
//
// A conversion takes its source up to the first NUL. It never fails: ill-formed input comes out as
// the platform's replacement characters. All functions may be called on any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

using Utf8String = std::basic_string<unsigned char>;
using Utf8StringList = std::vector<Utf8String>;

WideString NarrowToWide(const std::string& text);
std::string WideToNarrow(const WideString& text);
WideString Utf8ToWide(const Utf8String& text);
Utf8String WideToUtf8(const WideString& text);
Utf8String NarrowToUtf8(const std::string& text);
std::string Utf8ToNarrow(const Utf8String& text);

// Changes the case of letters of every alphabet, one UTF-16 unit to one.
WideString StringToLower(const WideString& text);
std::string StringToLower(const std::string& text);
Utf8String StringToLower(const Utf8String& text);
WideString StringToUpper(const WideString& text);
std::string StringToUpper(const std::string& text);
Utf8String StringToUpper(const Utf8String& text);

// Changes the case of ASCII letters alone, whatever the host's locale.
std::string AsciiToLower(const std::string& text);
Utf8String AsciiToLower(const Utf8String& text);
std::string AsciiToUpper(const std::string& text);
Utf8String AsciiToUpper(const Utf8String& text);

int CompareBytesNoCase(std::string_view a, std::string_view b);

inline std::string_view BytesOf(std::string_view text) {
    return text;
}
inline std::string_view BytesOf(const Utf8String& text) {
    return {reinterpret_cast<const char*>(text.data()), text.size()};
}

// Compares byte by byte with ASCII letters folded to lower case: the difference of the first two
// bytes that differ; else 1 when `a` is longer, -1 when `b` is, 0 when both end. Each text is a
// Utf8String, a std::string or a null-terminated one.
template <typename A, typename B>
int CompareNoCase(const A& a, const B& b) {
    return CompareBytesNoCase(BytesOf(a), BytesOf(b));
}

template <typename A, typename B>
bool EqualNoCase(const A& a, const B& b) {
    return CompareNoCase(a, b) == 0;
}

// Writes `value` in `base` (2 to 36, digits above 9 as upper-case letters) and a NUL into a buffer
// of `size` bytes, cut to fit. In another base than 10 a negative value is its 64-bit two's
// complement. Returns `buffer`.
char* Int64ToText(long long value, char* buffer, unsigned size, int base);

inline std::string Int64ToString(long long value) {
    return std::to_string(value);
}

// The number of hexadecimal text, with or without a leading "0x", up to the first other character;
// of more than eight digits the last eight count.
std::uint32_t HexTextToNumber(const std::string& text);

// The decimal number at the start of a text, leading white space skipped; 0 without one.
int TextToInt(const std::string& text);

// Whether the platform is of the Windows 9x family.
bool IsWin9x();
