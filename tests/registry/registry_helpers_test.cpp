// The registry key class and the list reader, on the registry of the test's machine.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "registry/CRegKeyW.h"
#include "registry/ReadStringList.h"
#include "support/registry_machine.h"

namespace {

class RegistryHelpers : public RegistryMachine {
  protected:
    void SetUp() override {
        RegistryMachine::SetUp();
        WriteRegistry(
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Full]\n"
            "@=\"default\"\n"
            "\"Text\"=\"caf\xc3\xa9\"\n"
            "\"Folder\"=hex(2):25,00,61,00,25,00,00,00\n"
            "\"Empty\"=\"\"\n"
            "\"NoBytes\"=hex(1):\n"
            "\"NoNul\"=hex(1):61,00\n"
            "\"Number\"=dword:0000001a\n"
            "\"Quad\"=hex(b):01,02,03,04,05,06,07,08\n"
            "\"List\"=hex(7):61,00,62,00,00,00,63,00,00,00,00,00\n"
            "\"Gap\"=hex(7):61,00,00,00,00,00,62,00,00,00,00,00\n"
            "\"Open\"=hex(7):61,00,62,00\n"
            "\"Fits\"=\"" +
            std::string(511, 'x') +
            "\"\n"
            "\"Long\"=\"" +
            std::string(512, 'x') +
            "\"\n"
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Other]\n\"Text\"=\"other\"\n");
    }

    static LONG Open(CRegKeyW& key, const WCHAR* path) {
        return key.Open(HKEY_LOCAL_MACHINE, path, KEY_QUERY_VALUE);
    }

    static constexpr const WCHAR* kFull = u"SOFTWARE\\Full";
};

// What QueryStringValue leaves of a buffer of 16 units that held sharps.
struct Reading {
    LONG error;
    DWORD count;
    std::u16string text;
    bool restIsZero;
};

Reading Read(CRegKeyW& key, const WCHAR* name, DWORD count = 16) {
    std::u16string buffer(16, u'#');
    const LONG error = key.QueryStringValue(name, buffer.data(), &count);
    const std::size_t end = std::min(buffer.find(u'\0'), buffer.size());
    return {error, count, buffer.substr(0, end),
            buffer.find_first_not_of(u'\0', end) == std::string::npos};
}

TEST_F(RegistryHelpers, FailedOpeningKeepsTheOpenKey) {
    CRegKeyW key;
    EXPECT_EQ(key.Close(), 0);
    ASSERT_EQ(Open(key, kFull), 0);
    EXPECT_EQ(Open(key, u"SOFTWARE\\Absent"), LONG{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Read(key, u"").text, u"default");
    ASSERT_EQ(Open(key, u"SOFTWARE\\Other"), 0);
    EXPECT_EQ(Read(key, u"Text").text, u"other");
    EXPECT_EQ(key.Close(), 0);
    EXPECT_EQ(Read(key, u"Text").error, LONG{ERROR_INVALID_HANDLE});
}

TEST_F(RegistryHelpers, NumbersAreReadWithTheirType) {
    CRegKeyW key;
    ASSERT_EQ(Open(key, kFull), 0);
    DWORD value = 0;
    EXPECT_EQ(key.QueryDWORDValue(u"number", &value), 0);
    EXPECT_EQ(value, 26u);
    EXPECT_EQ(key.QueryDWORDValue(u"Absent", &value), LONG{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(key.QueryDWORDValue(u"Quad", &value), LONG{ERROR_MORE_DATA});
    EXPECT_EQ(key.QueryDWORDValue(u"Text", &value), LONG{ERROR_MORE_DATA});
    EXPECT_EQ(value, 26u);
    // A text that fits has been written when its type is looked at.
    EXPECT_EQ(key.QueryDWORDValue(u"Empty", &value), LONG{ERROR_INVALID_DATA});
}

TEST_F(RegistryHelpers, TextsFillTheirBuffer) {
    CRegKeyW key;
    ASSERT_EQ(Open(key, kFull), 0);
    const Reading text = Read(key, u"Text");
    EXPECT_EQ(text.error, 0);
    EXPECT_EQ(text.count, 6u);  // bytes in the narrow form, with the NUL
    EXPECT_EQ(text.text, u"caf\u00e9");
    EXPECT_TRUE(text.restIsZero);
    EXPECT_EQ(Read(key, u"Folder").text, u"%a%");
    EXPECT_EQ(Read(key, u"Empty").text, u"");
    EXPECT_EQ(Read(key, u"Empty").count, 1u);
}

TEST_F(RegistryHelpers, TextsThatCannotBeHadLeaveTheBuffer) {
    CRegKeyW key;
    ASSERT_EQ(Open(key, kFull), 0);
    const struct {
        const WCHAR* name;
        DWORD count;
        DWORD error;
    } cases[] = {
        {u"Number", 16, ERROR_INVALID_DATA},  {u"List", 16, ERROR_INVALID_DATA},
        {u"NoBytes", 16, ERROR_INVALID_DATA}, {u"NoNul", 16, ERROR_INVALID_DATA},
        {u"Text", 5, ERROR_MORE_DATA},        {u"Absent", 16, ERROR_FILE_NOT_FOUND},
        {u"Text", 0, ERROR_MORE_DATA},
    };
    for (const auto& testCase : cases) {
        const Reading reading = Read(key, testCase.name, testCase.count);
        EXPECT_EQ(reading.error, static_cast<LONG>(testCase.error)) << Utf8FromWide(testCase.name);
        EXPECT_EQ(reading.count, 0u);
        EXPECT_EQ(reading.text, std::u16string(16, u'#'));
    }
}

TEST_F(RegistryHelpers, ListsOfTexts) {
    using List = std::vector<std::u16string>;
    const struct {
        const WCHAR* name;
        HRESULT result;
        List list;
    } cases[] = {
        {u"List", S_OK, {u"ab", u"c"}},
        {u"Gap", S_OK, {u"a"}},
        {u"Open", S_OK, {u"ab"}},
        {u"Text", S_OK, {u"caf\u00e9"}},
        {u"Empty", S_OK, {u""}},
        {u"Number", S_OK, {}},
        {u"Fits", S_OK, {std::u16string(511, u'x')}},
        {u"Long", E_FAIL, {}},
        {u"Absent", E_FAIL, {}},
    };
    for (const auto& testCase : cases) {
        List list = {u"before"};
        EXPECT_EQ(ReadStringList(HKEY_LOCAL_MACHINE, kFull, testCase.name, &list), testCase.result)
            << Utf8FromWide(testCase.name);
        EXPECT_EQ(list, testCase.list) << Utf8FromWide(testCase.name);
    }
    List list = {u"before"};
    EXPECT_EQ(ReadStringList(HKEY_LOCAL_MACHINE, u"SOFTWARE\\Absent", u"Text", &list), E_FAIL);
    EXPECT_EQ(list, List());
}

}  // namespace
