#include "cookies/CookieEncryptor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

std::string Attributes(const CookieEncryptor& encryptor) {
    Utf8String text = NarrowToUtf8("n=v");
    encryptor.AppendAttributes(text);
    return Utf8ToNarrow(text);
}

std::string Sealed(const CookieEncryptor& encryptor, bool withChecksum) {
    Utf8String text;
    EXPECT_TRUE(encryptor.FormatSealed(text, withChecksum));
    return Utf8ToNarrow(text);
}

class CookieEncryptorInZone : public testing::Test {
  protected:
    void SetUp() override {
        setenv("TZ", "EST5", 1);
        tzset();
    }
    void TearDown() override {
        unsetenv("TZ");
        tzset();
    }

    // Has the encryptor expire at a moment, whatever the clock does meanwhile.
    static void ExpireAt(CookieEncryptor& encryptor, std::time_t moment) {
        std::time_t now;
        do {
            now = std::time(nullptr);
            const std::time_t distance = moment - now;
            ASSERT_TRUE(encryptor.SetExpiry(static_cast<std::int32_t>(distance / 86400), 0, 0,
                                            static_cast<std::int32_t>(distance % 86400)));
        } while (std::time(nullptr) != now);
    }
};

TEST_F(CookieEncryptorInZone, TheDateIsLocalTimePaddedWithBlanks) {
    CookieEncryptor encryptor("www.example.test");
    ExpireAt(encryptor, 1962090425 + 5 * 3600);
    EXPECT_EQ(Attributes(encryptor),
              "n=v;domain=www.example.test;expires=Fri, 5-Mar-2032  9: 7: 5 GMT");
    ExpireAt(encryptor, 1924991999 + 5 * 3600);
    EXPECT_EQ(Attributes(encryptor),
              "n=v;domain=www.example.test;expires=Tue, 31-Dec-2030 23:59:59 GMT");
}

TEST_F(CookieEncryptorInZone, AStampCountsFromTheMorningOfTheBase) {
    CookieEncryptor encryptor("d");
    // One day and one second behind 26 February 2001, 00:00 in the zone.
    ExpireAt(encryptor, 983145600 + 5 * 3600 + 86401);
    EXPECT_EQ(Sealed(encryptor, false), "1=86401l&");
}

TEST_F(CookieEncryptorInZone, TheSealedFormWithItsChecksum) {
    CookieEncryptor encryptor("d");
    ExpireAt(encryptor, 1962090425 + 5 * 3600);
    EXPECT_TRUE(encryptor.AddPair("b", "2"));
    EXPECT_TRUE(encryptor.AddPair("a", "1&="));
    const std::string stamp = std::to_string(1962090425 - 983145600) + "l";
    EXPECT_EQ(Sealed(encryptor, false), "1=" + stamp + "&b=2&a=1&=");
    const std::string covered = "Fri, 5-Mar-2032  9: 7: 5 GMT1b=2&a=1&=";
    EXPECT_EQ(Sealed(encryptor, true),
              "1=" + stamp + "&2=1&3=b=2&a=1&=&4=" + CookieChecksum(NarrowToUtf8(covered)));
}

TEST(CookieEncryptor, ANewOneExpiresInHalfAYear) {
    const std::time_t before = std::time(nullptr);
    const std::string attributes = Attributes(CookieEncryptor("d"));
    const std::time_t after = std::time(nullptr);
    std::vector<std::string> possible;
    for (std::time_t now = before; now <= after; ++now) {
        const std::time_t expiry = now + 183 * 86400;
        char text[64];
        // The C locale's names are the English ones.
        std::strftime(text, sizeof text, "n=v;domain=d;expires=%a, %-d-%b-%Y %_H:%_M:%_S GMT",
                      std::localtime(&expiry));
        possible.push_back(text);
    }
    EXPECT_THAT(possible, testing::Contains(attributes));
}

TEST(CookieEncryptor, ChecksumsWeighBytesByTheirPlace) {
    EXPECT_EQ(CookieChecksum(NarrowToUtf8("abc")), "95");
    EXPECT_EQ(CookieChecksum({}), "0");
    EXPECT_EQ(CookieChecksum({0xFF}), "0");
    // 0xFF * (0 + ... + 5999) is 4,589,235,000; 32 bits hold 294,267,704 of it.
    EXPECT_EQ(CookieChecksum(Utf8String(6000, 0xFF)), "94459932");
}

}  // namespace
