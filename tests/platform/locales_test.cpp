// Facts about a language.

#include "platform/locales.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/posix/host_text.h"

namespace {

std::string AbbreviationOf(LCID locale) {
    WCHAR text[8] = {};
    const int written = GetLocaleInfoW(locale, LOCALE_SABBREVLANGNAME, text, 8);
    return written > 0 ? Utf8FromWide({text, static_cast<std::size_t>(written) - 1})
                       : "error " + std::to_string(GetLastError());
}

TEST(Locales, HaveAnAbbreviation) {
    EXPECT_EQ(AbbreviationOf(1031), "DEU");
    EXPECT_EQ(AbbreviationOf(MAKELCID(4108, SORT_DEFAULT)), "FRS");
    EXPECT_EQ(AbbreviationOf(9), "ENU");
    EXPECT_EQ(AbbreviationOf(7), "DEU");
    EXPECT_EQ(AbbreviationOf(0), "ENU");
    EXPECT_EQ(AbbreviationOf(65535), "error 87");
    EXPECT_EQ(AbbreviationOf(1047), "error 87");

    WCHAR text[4] = {u'x', u'x', u'x', u'x'};
    EXPECT_EQ(GetLocaleInfoW(1031, LOCALE_SABBREVLANGNAME, nullptr, 0), 4);
    EXPECT_EQ(GetLocaleInfoW(1031, LOCALE_SABBREVLANGNAME, text, 3), 0);
    EXPECT_EQ(GetLastError(), 122u);
    EXPECT_EQ(text[0], u'x');
    EXPECT_EQ(GetLocaleInfoW(1031, 2, text, 4), 0);
    EXPECT_EQ(GetLastError(), 1004u);
}

}  // namespace
