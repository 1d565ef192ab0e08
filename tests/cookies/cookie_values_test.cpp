#include "cookies/CookieValues.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/component_model.h"
#include "support/cookie_machine.h"

namespace {

class CookieValuesTest : public CookieMachine {};

// The text of a block that was handed out.
WideString Take(WCHAR* block) {
    const WideString text = block;
    CoTaskMemFree(block);
    return text;
}

TEST_F(CookieValuesTest, TheSuitesValuesLieInItsOwnCookie) {
    WCHAR* value = nullptr;
    ASSERT_EQ(CookieValues::ReadOndrelValue(u"theme", &value), 0);
    EXPECT_EQ(Take(value), u"-1");
    EXPECT_EQ(CookieValues::WriteOndrelValue(u"theme", u"\u00E4 \U0001F3B5"), 0);
    ASSERT_EQ(CookieValues::ReadOndrelValue(u"theme", &value), 0);
    EXPECT_EQ(Take(value), u"\u00E4 \U0001F3B5");
    ASSERT_EQ(CookieValues::ReadValue(u"www.ondrel.example", u"qdr_cookie", u"theme", &value), 0);
    EXPECT_EQ(Take(value), u"\u00E4 \U0001F3B5");
    ASSERT_EQ(CookieValues::ReadValue(u"other.example", u"qdr_cookie", u"theme", &value), 0);
    EXPECT_EQ(Take(value), u"-1");
    EXPECT_EQ(VisibleCookies("http://www.ondrel.example"),
              "qdr_cookie=theme=\xC3\xA4 \xF0\x9F\x8E\xB5");
}

TEST_F(CookieValuesTest, AnyCookieOfAnyDomain) {
    EXPECT_EQ(CookieValues::WriteValue(u"example.test", u"theme", u"theme", u"dark"), 0);
    EXPECT_EQ(VisibleCookies("http://example.test"), "theme=dark");
    WCHAR* value = nullptr;
    ASSERT_EQ(CookieValues::ReadValue(u"example.test", u"theme", u"theme", &value), 0);
    EXPECT_EQ(Take(value), u"dark");
}

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

TEST_F(CookieValuesTest, WithoutAPlaceThereIsNoResult) {
    EXPECT_EQ(CookieValues::ReadOndrelValue(u"k", nullptr), 1);
}

}  // namespace
