#include "cookies/StorageParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

std::string Find(StorageParser& parser, const std::string& name, const std::string& key) {
    Utf8String value;
    parser.FindValue(name, key, value);
    return Utf8ToNarrow(value);
}

void Parse(StorageParser& parser, const std::string& text) {
    parser.Parse(NarrowToWide(text).c_str(), static_cast<std::uint32_t>(text.size() + 1));
}

void Store(StorageParser& parser, const char* name, const char* key, const char* value) {
    parser.StoreValue(NarrowToUtf8(name), NarrowToUtf8(key), NarrowToUtf8(value));
}

std::string Sections(const StorageParser& parser) {
    return Utf8ToNarrow(parser.FormatSections());
}

struct Value {
    const char* name;
    const char* key;
    const char* value;
};

TEST(StorageParser, ReadsTheTextForm) {
    const struct {
        const char* text;
        std::vector<Value> values;
    } cases[] = {
        {"a=1; b=2", {{"a", "a", "1"}, {"b", "b", "2"}, {" b", "b", "-1"}}},
        {"s=x=1&y=2&z", {{"s", "x", "1"}, {"s", "y", "2"}, {"s", "s", "z"}, {"s", "z", "-1"}}},
        {"s=k=a=b", {{"s", "k", "a=b"}}},
        {"a=; b=", {{"a", "a", "-1"}, {"b", "b", "-1"}}},
        {"s=k=1; s=k=2; s=j=3", {{"s", "k", "-1"}, {"s", "j", "3"}}},
        {"s=k=1&k=2&a&b", {{"s", "k", "2"}, {"s", "s", "b"}}},
        {"s==v&&k=1&", {{"s", "", "v"}, {"s", "s", "-1"}, {"s", "k", "1"}}},
        {"\t\n\v\f\r a=1;b=2", {{"a", "a", "1"}, {"b", "b", "2"}}},
        {"\xC2\xA0 a=1", {{"\xC2\xA0 a", "\xC2\xA0 a", "1"}}},
        {"s=k= 1 ;t= 2", {{"s", "k", " 1 "}, {"t", "t", " 2"}}},
        {"\xC3\xA4=k\xC3\xB6=\xF0\x9F\x8E\xB5", {{"\xC3\xA4", "k\xC3\xB6", "\xF0\x9F\x8E\xB5"}}},
        {"flag; S=1", {{"flag", "flag", "-1"}, {"s", "s", "-1"}, {"S", "S", "1"}}},
    };
    for (const auto& [text, values] : cases) {
        StorageParser parser;
        Parse(parser, text);
        for (const Value& value : values) {
            EXPECT_EQ(Find(parser, value.name, value.key), value.value)
                << text << ": " << value.name << ", " << value.key;
        }
    }
}

TEST(StorageParser, WritesSectionsAndKeysInByteOrder) {
    StorageParser parser;
    Store(parser, "qdr_cookie", "beta", "2");
    Store(parser, "qdr_cookie", "alpha", "1");
    EXPECT_THAT(Utf8ToNarrow(parser.Format(NarrowToUtf8("D"))),
                testing::StartsWith("qdr_cookie=alpha=1&beta=2;domain=D;expires="));
    Store(parser, "\xC3\xA4", "k", "v");
    Store(parser, "Z", "\xC3\xA4", "1");
    Store(parser, "Z", "z", "2");
    Store(parser, "Z", "za", "3");
    EXPECT_EQ(Sections(parser), "Z=z=2&za=3&\xC3\xA4=1; qdr_cookie=alpha=1&beta=2; \xC3\xA4=k=v");
}

TEST(StorageParser, AKeyOfTheSectionsOwnNameReadsBack) {
    const struct {
        std::vector<std::pair<const char*, const char*>> items;
        const char* text;
    } cases[] = {
        {{{"a", "dark"}}, "a=dark"},
        {{{"a", "x=1"}}, "a=a=x=1"},
        {{{"a", "x"}, {"b", "y"}}, "a=a=x&b=y"},
        {{{"0", "y"}, {"a", "x"}}, "a=0=y&a=x"},
    };
    for (const auto& [items, text] : cases) {
        StorageParser parser;
        StorageParser later;
        for (const auto& [key, value] : items) {
            Store(parser, "a", key, value);
        }
        EXPECT_EQ(Sections(parser), text);
        Parse(later, text);
        for (const auto& [key, value] : items) {
            EXPECT_EQ(Find(later, "a", key), value) << text;
        }
    }
}

TEST(StorageParser, AWriteGoesToTheFirstSectionWhoseNameContainsTheGivenOne) {
    StorageParser parser;
    Parse(parser, "b_cookie=1; my_cookie_2=x=1; cookie=y=1");
    Store(parser, "cookie", "k", "v");
    EXPECT_EQ(Sections(parser), "b_cookie=b_cookie=1&k=v; cookie=y=1; my_cookie_2=x=1");
    Store(parser, "y_c", "k", "v");
    EXPECT_EQ(Sections(parser), "b_cookie=b_cookie=1&k=v; cookie=y=1; my_cookie_2=k=v&x=1");
    Store(parser, "Cookie", "k", "v");
    EXPECT_THAT(Sections(parser), testing::StartsWith("Cookie=k=v; b_cookie="));
}

TEST(StorageParser, SectionsWithoutKeysAreWrittenAsNothing) {
    StorageParser parser;
    Parse(parser, "m; a=1; flag; z=2; none=");
    EXPECT_EQ(Find(parser, "missing", "k"), "-1");
    EXPECT_EQ(Sections(parser), "a=1; z=2");
    StorageParser trailing;
    Parse(trailing, "a=1; none=");
    EXPECT_EQ(Sections(trailing), "a=1; ");
}

TEST(StorageParser, ACookieTooLongEndsTheParse) {
    // A step counts the cookie and the sign behind it, also at the end of the text where none
    // stands.
    const std::string longest = "b=" + std::string(32764, 'x');
    for (const auto& [text, ended] : std::map<std::string, bool>{{"a=1;" + longest + ";c=2", false},
                                                                 {"c=2;" + longest, false},
                                                                 {"c=2;" + longest + "y;d=3", true},
                                                                 {"c=2;" + longest + "y", true}}) {
        StorageParser parser;
        Parse(parser, text);
        EXPECT_EQ(parser.EndedEarly(), ended);
        EXPECT_EQ(Find(parser, "c", "c"), "2");
        EXPECT_EQ(Find(parser, "b", "b").size(), ended ? 2u : 32764u);
        EXPECT_EQ(Find(parser, "d", "d"), "-1");
    }
    StorageParser parser;
    Parse(parser, longest + std::string(40000, 'x') + ";c=2");
    EXPECT_EQ(Find(parser, "c", "c"), "-1");
}

TEST(StorageParser, SealingAddsTheStamp) {
    StorageParser parser;
    Parse(parser, "s=k=v; t=1");
    EXPECT_TRUE(parser.SealSection(NarrowToUtf8("s"), NarrowToUtf8("d")));
    EXPECT_THAT(Find(parser, "s", "1"), testing::MatchesRegex("[0-9]+l"));
    EXPECT_EQ(Sections(parser), "s=1=" + Find(parser, "s", "1") + "&k=v; t=1");
    EXPECT_TRUE(parser.SealSection(NarrowToUtf8("new"), NarrowToUtf8("d")));
    EXPECT_THAT(Find(parser, "new", "1"), testing::MatchesRegex("[0-9]+l"));
    const std::string before = Sections(parser);
    EXPECT_FALSE(parser.UnsealSection(NarrowToUtf8("s"), NarrowToUtf8("d")));
    EXPECT_EQ(Sections(parser), before);
}

}  // namespace
