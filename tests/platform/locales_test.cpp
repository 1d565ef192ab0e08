// Facts about a language.

#include "platform/locales.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/posix/text/host_text.h"

namespace {

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
