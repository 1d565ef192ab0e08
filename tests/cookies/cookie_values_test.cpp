#include "cookies/CookieValues.h"

#include <gtest/gtest.h>

#include <string>

#include "support/cookie_machine.h"

namespace {

class CookieValuesTest : public CookieMachine {};

TEST_F(CookieValuesTest, TextsThatAreNotWholeAreRefused) {
    const WideString half = {u'a', 0xD83C};
    const WideString swapped = {0xDFB5, 0xD83C};
    const WideString nul = {u'a', u'\0', u'b'};
    for (const WideString& text : {half, swapped, nul}) {
        EXPECT_EQ(CookieValues::WriteOndrelValue(u"k", text), 1);
        EXPECT_EQ(CookieValues::WriteOndrelValue(text, u"v"), 1);
        EXPECT_EQ(CookieValues::WriteValue(u"example.test", text, u"k", u"v"), 1);
        EXPECT_EQ(CookieValues::WriteValue(text, u"c", u"k", u"v"), 1);
    }
    EXPECT_EQ(CookieValues::WriteOndrelValue(u"k", u""), 1);
    EXPECT_FALSE(std::filesystem::exists(CookieFilePath()));
}

}  // namespace
