#include <gtest/gtest.h>

#include <climits>

#include "text/StringConversions.h"

namespace {

Utf8String Utf8(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

TEST(StringConversions, EveryDirectionKeepsText) {
    for (const char* text : {"", "plain",
                             "Gr\xC3\xBC\xC3\x9F"
                             "e",
                             "\xE6\x97\xA5\xE6\x9C\xAC", "\xF0\x9F\x98\x80"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(WideToNarrow(NarrowToWide(text)), text);
        EXPECT_EQ(WideToUtf8(Utf8ToWide(Utf8(text))), Utf8(text));
        EXPECT_EQ(Utf8ToNarrow(NarrowToUtf8(text)), text);
    }
    EXPECT_EQ(NarrowToWide("\xC3\xA9"), WIDE("\u00E9"));
}

TEST(StringConversions, SourceEndsAtItsFirstNul) {
    EXPECT_EQ(NarrowToWide(std::string("a\0b", 3)), WIDE("a"));
    EXPECT_EQ(WideToUtf8(WideString(WIDE("a\0b"), 3)), Utf8("a"));
}

TEST(StringConversions, IllFormedTextIsReplaced) {
    EXPECT_EQ(NarrowToUtf8("a\xFF"
                           "b"),
              Utf8("a\xEF\xBF\xBD"
                   "b"));
    EXPECT_EQ(WideToNarrow(WideString(1, WCHAR{0xD800})), "\xEF\xBF\xBD");
}

TEST(StringConversions, CaseOfTheWholeAlphabetAndOfAsciiAlone) {
    EXPECT_EQ(StringToLower(WideString(WIDE("\u00C4Bc\u0416"))), WIDE("\u00E4bc\u0436"));
    EXPECT_EQ(StringToUpper(std::string("\xC3\xA4x")), "\xC3\x84X");
    EXPECT_EQ(StringToUpper(Utf8("\xC3\xA4x")), Utf8("\xC3\x84X"));
    EXPECT_EQ(AsciiToUpper(std::string("\xC3\xA4x")), "\xC3\xA4X");
    EXPECT_EQ(AsciiToLower(Utf8("\xC3\x84X")), Utf8("\xC3\x84x"));
}

TEST(StringConversions, CompareNoCase) {
    const struct {
        const char* a;
        const char* b;
        int result;
    } rows[] = {
        {"", "", 0},
        {"HeLLo", "hEllO", 0},
        {"ab", "abc", -1},
        {"abc", "ab", 1},
        {"a", "C", 'a' - 'c'},
        {"[", "a", '[' - 'a'},                  // folds to lower case: 'A' would stand below '['
        {"\xC3\xA4", "\xC3\x84", 0xA4 - 0x84},  // letters outside ASCII keep their case
        {"z", "\xC3\xA4", 'z' - 0xC3},          // bytes are unsigned
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.a) + " / " + row.b);
        EXPECT_EQ(CompareNoCase(row.a, row.b), row.result);
        EXPECT_EQ(CompareNoCase(std::string(row.a), Utf8(row.b)), row.result);
        EXPECT_EQ(CompareNoCase(Utf8(row.a), row.b), row.result);
        EXPECT_EQ(EqualNoCase(Utf8(row.a), std::string(row.b)), row.result == 0);
    }
}

TEST(StringConversions, Int64ToTextWritesAndCuts) {
    const struct {
        long long value;
        unsigned size;
        int base;
        const char* text;
    } rows[] = {
        {0, 8, 10, "0"},
        {-42, 8, 10, "-42"},
        {255, 8, 16, "FF"},
        {-1, 32, 16, "FFFFFFFFFFFFFFFF"},
        {LLONG_MIN, 32, 10, "-9223372036854775808"},
        {35, 8, 36, "Z"},
        {12345, 4, 10, "123"},
        {-12345, 4, 10, "-12"},
        {7, 1, 10, ""},
        {-7, 1, 10, ""},
    };
    for (const auto& row : rows) {
        char buffer[33] = "................................";
        SCOPED_TRACE(row.text);
        EXPECT_EQ(Int64ToText(row.value, buffer, row.size, row.base), buffer);
        EXPECT_STREQ(buffer, row.text);
        EXPECT_TRUE(row.size == 32 || buffer[row.size] == '.');
    }
    char untouched = '.';
    Int64ToText(5, &untouched, 0, 10);
    EXPECT_EQ(untouched, '.');
}

TEST(StringConversions, NumbersFromText) {
    const struct {
        const char* text;
        std::uint32_t value;
    } hexadecimal[] = {{"", 0},   {"0x1aF", 0x1AF},         {"1AF", 0x1AF}, {"0X1afz9", 0x1AF},
                       {"x1", 0}, {"123456789", 0x23456789}};
    for (const auto& row : hexadecimal) {
        EXPECT_EQ(HexTextToNumber(row.text), row.value) << row.text;
    }
    EXPECT_EQ(TextToInt(" 12ab"), 12);
    EXPECT_EQ(TextToInt("-3"), -3);
    EXPECT_EQ(TextToInt("ab"), 0);
    EXPECT_EQ(TextToInt(""), 0);
    EXPECT_EQ(Int64ToString(-1234567890123), "-1234567890123");
}

}  // namespace
