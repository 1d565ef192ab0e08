#include "platform/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>

#include "platform/locales.h"
#include "platform/posix/text/host_text.h"

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

std::u16string ToWide(std::string_view text) {
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
    std::u16string result(static_cast<std::size_t>(size), u'?');
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, text.data(), length, result.data(), size), size);
    return result;
}

std::string ToUtf8(std::u16string_view text) {
    const int length = static_cast<int>(text.size());
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size), '?');
    EXPECT_EQ(
        WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), size, nullptr, nullptr),
        size);
    return result;
}

struct FromUtf8Row {
    std::string_view bytes;
    std::u16string_view units;
};

constexpr FromUtf8Row kFromUtf8[] = {
    {"abc", u"abc"},
    {"\xC3\xA9", u"\u00E9"},
    {"\xC3", u"\uFFFD"},
    {"\xE2\x82", u"\uFFFD"},
    {"\xE2\x82\x61", u"\uFFFDa"},
    {"\xFF\x61", u"\uFFFDa"},
    {"\xC0\x80", u"\uFFFD\uFFFD"},
    {"\xED\xA0\x80", u"\uFFFD\uFFFD"},
    {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
    {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD"},
    {"\xF8\x88\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
    {"\x61\x80\x80\x62", u"a\uFFFD\uFFFDb"},
    {"\xE0\x80\x80", u"\uFFFD\uFFFD"},
    {"\xF0\x9F\x98", u"\uFFFD"},
    // The outermost characters of each length, and the neighbours of the surrogates.
    {"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80", u"\u007F\u0080\u07FF\u0800"},
    {"\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", u"\uD7FF\uE000\uFFFF"},
    {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\xD800\xDC00\xDBFF\xDFFF"},
};

TEST(Text, Utf8BecomesWide) {
    for (const FromUtf8Row& row : kFromUtf8) {
        EXPECT_EQ(ToWide(row.bytes), row.units) << testing::PrintToString(row.bytes);
        EXPECT_EQ(WideFromUtf8(row.bytes), row.units) << testing::PrintToString(row.bytes);
    }
}

struct FromWideRow {
    std::u16string_view units;
    std::string_view bytes;
};

constexpr FromWideRow kFromWide[] = {
    {u"\xD800", "\xEF\xBF\xBD"},
    {u"\xDC00\x61", "\xEF\xBF\xBD\x61"},
    {u"\xD83D\xDE00", "\xF0\x9F\x98\x80"},
    {u"\x61\xD800\x62", "\x61\xEF\xBF\xBD\x62"},
    {u"\xFFFF", "\xEF\xBF\xBF"},
    {u"\xE9", "\xC3\xA9"},
    {u"\xD800\xD83D\xDE00", "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
};

TEST(Text, WideBecomesUtf8) {
    for (const FromWideRow& row : kFromWide) {
        EXPECT_EQ(ToUtf8(row.units), row.bytes);
        EXPECT_EQ(Utf8FromWide(row.units), row.bytes);
    }
}

// ASCII goes in blocks; a character outside it may stand at any place in one.
TEST(Text, SurvivesTheTripAtEveryOffset) {
    for (const std::string character : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", ""}) {
        for (std::size_t before = 0; before < 36; ++before) {
            const std::string text = std::string(before, 'a') + character +
                                     "0123456789abcdefghijklmnopqrstuvwxyz" + character;
            const std::u16string wide = ToWide(text);
            EXPECT_EQ(ToUtf8(wide), text);
            EXPECT_EQ(Utf8FromWide(WideFromUtf8(text)), text);
        }
    }
    for (std::size_t at = 0; at < 40; ++at) {
        std::string text(40, 'x');
        text[at] = '\x80';
        std::u16string wide(40, u'x');
        wide[at] = 0xFFFD;
        EXPECT_EQ(ToWide(text), wide);
    }
}

TEST(Text, TakesTheSourceUpToItsNul) {
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc\xC3\xA9", -1, nullptr, 0), 5);
    char16_t wide[5];
    EXPECT_EQ(MultiByteToWideChar(CP_THREAD_ACP, 0, "abc\xC3\xA9", -1, wide, 5), 5);
    EXPECT_EQ(std::u16string_view(wide, 5), u"abc\u00E9\0"sv);
    char bytes[6];
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, wide, -1, bytes, 6, nullptr, nullptr), 6);
    EXPECT_EQ(std::string_view(bytes, 6), "abc\xC3\xA9\0"sv);
    EXPECT_EQ(ToWide("a\0b"sv), u"a\0b"sv);
}

TEST(Text, NeverWritesBeyondTheTarget) {
    char16_t wide[] = u"????????????????????????";
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abcdefghijklmnopqrstu", -1, wide, 20), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(wide[20], u'?');
    SetLastError(0);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "\xF0\x9F\x98\x80", 4, wide + 21, 1), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(wide[22], u'?');
    char bytes[] = "????";
    SetLastError(0);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"a\u20AC", 2, bytes, 3, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(bytes[3], '?');
}

char16_t Lower(char16_t unit) {
    EXPECT_EQ(CharLowerBuffW(&unit, 1), 1u);
    return unit;
}

char16_t Upper(char16_t unit) {
    EXPECT_EQ(CharUpperBuffW(&unit, 1), 1u);
    return unit;
}

struct CaseRow {
    char16_t unit;
    char16_t lower;
    char16_t upper;
};

// Those that other tables fold differently; that they are pairs is tested for every unit.
constexpr CaseRow kCase[] = {
    {0x00C9, 0x00E9, 0x00C9}, {0x00DF, 0x00DF, 0x00DF}, {0x0130, 0x0130, 0x0130},
    {0x0131, 0x0131, 0x0131}, {0x03C2, 0x03C2, 0x03C2}, {0x01C4, 0x01C6, 0x01C4},
    {0x01C5, 0x01C5, 0x01C5}, {0x1E9E, 0x1E9E, 0x1E9E}, {0x10A0, 0x2D00, 0x10A0},
    {0x0049, 0x0069, 0x0049}, {0x1F88, 0x1F80, 0x1F88}, {0x2126, 0x2126, 0x2126},
    {0x212A, 0x212A, 0x212A}, {0x00FF, 0x00FF, 0x0178}, {0xD801, 0xD801, 0xD801},
};

TEST(Case, ChangesOneUnit) {
    for (const CaseRow& row : kCase) {
        EXPECT_EQ(Lower(row.unit), row.lower) << std::hex << static_cast<unsigned>(row.unit);
        EXPECT_EQ(Upper(row.unit), row.upper) << std::hex << static_cast<unsigned>(row.unit);
        EXPECT_EQ(towlower(row.unit), row.unit < 0x80 ? row.lower : row.unit);
        EXPECT_EQ(towupper(row.unit), row.unit < 0x80 ? row.upper : row.unit);
    }
}

TEST(Case, IsMadeOfPairs) {
    unsigned pairs = 0;
    for (unsigned number = 0; number <= 0xFFFF; ++number) {
        const auto unit = static_cast<char16_t>(number);
        const char16_t lower = Lower(unit);
        const char16_t upper = Upper(unit);
        SCOPED_TRACE(number);
        ASSERT_TRUE(lower == unit || upper == unit);
        ASSERT_TRUE(lower == unit || Upper(lower) == unit);
        ASSERT_TRUE(upper == unit || Lower(upper) == unit);
        ASSERT_EQ(Lower(lower), lower);
        ASSERT_EQ(Upper(upper), upper);
        ASSERT_EQ(lower < 0x80, unit < 0x80);
        ASSERT_EQ(upper < 0x80, unit < 0x80);
        pairs += lower != unit ? 1 : 0;
    }
    // Version 14 of Unicode has 1,163 in its first plane, and later ones add to them.
    EXPECT_GE(pairs, 1163u);
}

TEST(Locales, HaveAnAbbreviation) {
    const struct {
        LCID locale;
        int size;
        LCTYPE item;
        std::string answer;
    } cases[] = {
        {1031, 4, LOCALE_SABBREVLANGNAME, "DEU"},
        {4108, 8, LOCALE_SABBREVLANGNAME, "FRS"},
        {9, 8, LOCALE_SABBREVLANGNAME, "ENU"},
        {7, 8, LOCALE_SABBREVLANGNAME, "DEU"},
        {0, 8, LOCALE_SABBREVLANGNAME, "ENU"},
        {65535, 8, LOCALE_SABBREVLANGNAME, "error 87"},
        {65536, 8, LOCALE_SABBREVLANGNAME, "error 87"},
        {1047, 8, LOCALE_SABBREVLANGNAME, "RMC"},
        {1031, 3, LOCALE_SABBREVLANGNAME, "error 122"},
        {1031, 8, 2, "error 1004"},
    };
    for (const auto& row : cases) {
        WCHAR text[8] = {};
        const int written = GetLocaleInfoW(row.locale, row.item, text, row.size);
        EXPECT_EQ(written > 0 ? Utf8FromWide(text) : "error " + std::to_string(GetLastError()),
                  row.answer);
        EXPECT_EQ(written, row.answer.size() == 3 ? 4 : 0) << row.locale;
    }
}

}  // namespace
