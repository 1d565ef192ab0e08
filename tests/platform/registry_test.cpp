// What the operations on keys and values answer.

#include "platform/registry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/registry_machine.h"

namespace {

using testing::ElementsAre;

constexpr const char* kFacts = R"([HKEY_LOCAL_MACHINE\SOFTWARE\Facts]
"sz"="hello"
"sznonul"=hex(1):68,00,65,00,6c,00,6c,00,6f,00
"szodd"=hex(1):68,00,65
"szempty"=""
"szzero"=hex(1):
"uni"=hex(1):e9,00,00,4e,00,00
"exp"=hex(2):25,00,57,00,49,00,4e,00,44,00,49,00,52,00,25,00,00,00
"dw"=dword:12345678
"bin8"=hex:01,02,03,04,05,06,07,08
"multi"=hex(7):6f,00,6e,00,65,00,00,00,74,00,77,00,6f,00,00,00,00,00
"multinonul"=hex(7):6f,00,6e,00,65,00,00,00,74,00,77,00,6f,00,00,00
@="default"

[HKEY_LOCAL_MACHINE\SOFTWARE\Facts\order\_x]
[HKEY_LOCAL_MACHINE\SOFTWARE\Facts\order\b]
[HKEY_LOCAL_MACHINE\SOFTWARE\Facts\order\a-b]
[HKEY_LOCAL_MACHINE\SOFTWARE\Facts\order\9]
[HKEY_LOCAL_MACHINE\SOFTWARE\Facts\order\é]
[HKEY_LOCAL_MACHINE\SOFTWARE\Facts\order\{B}]
[HKEY_LOCAL_MACHINE\SOFTWARE\Facts\order\{A}]
[HKEY_LOCAL_MACHINE\SOFTWARE\Facts\order\Z]
[HKEY_LOCAL_MACHINE\SOFTWARE\Facts\order\a1]
[HKEY_LOCAL_MACHINE\SOFTWARE\Facts\order\A]
[HKEY_LOCAL_MACHINE\SOFTWARE\Facts\order\a b]
[HKEY_LOCAL_MACHINE\SOFTWARE\Facts\order\ab]
[HKEY_LOCAL_MACHINE\SOFTWARE\Facts\order\10]
)";

class Registry : public RegistryMachine {};

// Asks for a value into a buffer of which `size` bytes are told.
struct Answer {
    LONG error;
    DWORD type = 99;
    DWORD size;
    std::string buffer = std::string(64, '\xEE');

    Answer(HKEY key, const WCHAR* name, DWORD room) : size(room) {
        error = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()),
                                 &size);
    }
    Answer(HKEY key, const char* name, DWORD room) : size(room) {
        error = RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()),
                                 &size);
    }
    std::size_t Written() const { return buffer.find_last_not_of('\xEE') + 1; }
};

TEST_F(Registry, ValuesInWideForm) {
    WriteRegistry(kFacts);
    const TestKey key(u"SOFTWARE\\Facts");
    const struct {
        const WCHAR* name;
        DWORD room;
        LONG error;
        DWORD type;
        DWORD size;
        std::size_t written;
    } cases[] = {
        {u"none", 64, 2, 99, 64, 0},    {u"sz", 64, 0, 1, 12, 12},
        {u"sz", 4, 234, 1, 12, 0},      {u"SZ", 12, 0, 1, 12, 12},
        {u"dw", 4, 0, 4, 4, 4},         {u"dw", 2, 234, 4, 4, 0},
        {u"bin8", 4, 234, 3, 8, 0},     {u"sznonul", 64, 0, 1, 10, 10},
        {u"multi", 64, 0, 7, 18, 18},   {u"multinonul", 64, 0, 7, 16, 16},
        {u"szzero", 64, 0, 1, 0, 0},    {u"exp", 64, 0, 2, 18, 18},
        {u"sznonul", 9, 234, 1, 10, 0}, {u"szodd", 64, 0, 1, 3, 3},
        {u"", 64, 0, 1, 16, 16},        {nullptr, 64, 0, 1, 16, 16},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name == nullptr ? "null" : Utf8FromWide(row.name));
        const Answer answer(key.Get(), row.name, row.room);
        EXPECT_EQ(answer.error, row.error);
        EXPECT_EQ(answer.type, row.type);
        EXPECT_EQ(answer.size, row.size);
        EXPECT_EQ(answer.Written(), row.written);
    }
}

// Where another system has a code page, narrow text is UTF-8 here.
TEST_F(Registry, ValuesInNarrowForm) {
    WriteRegistry(kFacts);
    const TestKey key(u"SOFTWARE\\Facts");
    using namespace std::string_literals;
    const struct {
        const char* name;
        DWORD room;
        LONG error;
        DWORD type;
        DWORD size;
        std::string written;
    } cases[] = {
        {"sz", 64, 0, 1, 6, "hello\0"s},
        {"sz", 6, 0, 1, 6, "hello\0"s},
        {"sz", 5, 234, 1, 6, ""s},
        {"sznonul", 64, 0, 1, 5, "hello"s},
        {"sznonul", 4, 234, 1, 5, ""s},
        {"uni", 64, 0, 1, 6, "\xC3\xA9\xE4\xB8\x80\0"s},
        {"dw", 64, 0, 4, 4, "\x78\x56\x34\x12"s},
        {"multi", 64, 0, 7, 9, "one\0two\0\0"s},
        {"szempty", 64, 0, 1, 1, "\0"s},
        {"szzero", 64, 0, 1, 0, ""s},
        {"NONE", 64, 2, 99, 64, ""s},
        {nullptr, 64, 0, 1, 8, "default\0"s},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name == nullptr ? "null" : row.name);
        const Answer answer(key.Get(), row.name, row.room);
        EXPECT_EQ(answer.error, row.error);
        EXPECT_EQ(answer.type, row.type);
        EXPECT_EQ(answer.size, row.size);
        EXPECT_EQ(answer.buffer.substr(0, answer.Written()), row.written);
    }
}

TEST_F(Registry, SubKeysComeInTheOrderOfTheirUpperCasedUnits) {
    WriteRegistry(kFacts);
    const TestKey key(u"SOFTWARE\\Facts\\order");
    EXPECT_THAT(SubKeysOf(key.Get()), ElementsAre("10", "9", "A", "a b", "a-b", "a1", "ab", "b",
                                                  "Z", "_x", "{A}", "{B}", "\xC3\xA9"));
    const struct {
        DWORD index;
        DWORD room;
        LONG error;
        DWORD length;
    } cases[] = {
        {13, 64, 259, 64}, {0, 1, 234, 1}, {4, 3, 234, 3}, {4, 4, 0, 3}, {0xFFFFFFFF, 64, 259, 64},
    };
    for (const auto& row : cases) {
        WCHAR name[64] = u"untouched";
        DWORD length = row.room;
        EXPECT_EQ(
            RegEnumKeyExW(key.Get(), row.index, name, &length, nullptr, nullptr, nullptr, nullptr),
            row.error)
            << row.index;
        EXPECT_EQ(length, row.length) << row.index;
        EXPECT_EQ(std::u16string(name), row.error == 0 ? u"a-b" : u"untouched") << row.index;
    }
}

TEST_F(Registry, Opening) {
    WriteRegistry(kFacts);
    const struct {
        const WCHAR* path;
        LONG error;
    } cases[] = {
        {u"SOFTWARE\\Missing", 2},
        {u"SOFTWARE\\Facts\\order\\ab\\deeper", 2},
        {u"SOFTWARE\\Facts\\", 0},
        {u"\\SOFTWARE\\Facts", 161},
        {u"\\", 161},
        {u"SOFTWARE\\\\Facts", 0},
        {u"software\\FACTS\\Order\\\u00C9", 0},
        {u"SOFTWARE/Facts", 2},
        {u"", 0},
        {nullptr, 0},
    };
    for (const auto& [path, error] : cases) {
        SetLastError(12345);
        EXPECT_EQ(TestKey(path).error, error) << (path != nullptr ? Utf8FromWide(path) : "null");
        EXPECT_EQ(GetLastError(), 12345u);
    }
    const TestKey facts(u"SOFTWARE\\Facts");
    EXPECT_EQ(TestKey(u"", KEY_READ, facts.Get()).error, 0);
    EXPECT_EQ(TestKey(u"order\\", KEY_READ, facts.Get()).error, 0);
    EXPECT_EQ(TestKey(u"sz", KEY_READ, facts.Get()).error, 2);
}

TEST_F(Registry, WhatIsNoHandle) {
    WriteRegistry(kFacts);
    HKEY closed = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"SOFTWARE", 0, KEY_READ, &closed), 0);
    EXPECT_EQ(RegCloseKey(closed), 0);
    EXPECT_EQ(RegCloseKey(HKEY_LOCAL_MACHINE), 0);
    for (const HKEY none : {HKEY(nullptr), closed, reinterpret_cast<HKEY>(std::uintptr_t{12345})}) {
        SetLastError(12345);
        WCHAR name[8];
        DWORD length = 8;
        EXPECT_EQ(RegCloseKey(none), 6);
        EXPECT_EQ(TestKey(u"SOFTWARE", KEY_READ, none).error, 6);
        EXPECT_EQ(TestKey(u"", KEY_READ, none).error, 6);
        EXPECT_EQ(TextOf(none, u"sz"), "error 6");
        EXPECT_EQ(RegEnumKeyExW(none, 0, name, &length, nullptr, nullptr, nullptr, nullptr), 6);
        EXPECT_EQ(GetLastError(), 12345u);
    }
}

constexpr const char* kViews = R"([HKEY_LOCAL_MACHINE\SOFTWARE\Both]
"view"="64"
[HKEY_LOCAL_MACHINE\SOFTWARE\Both\Only64]
"view"="64"
[HKEY_LOCAL_MACHINE\SOFTWARE\Facts]
"view"="64"
[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Both]
"view"="32"
[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Only32]
"view"="32"
[HKEY_LOCAL_MACHINE\SYSTEM\Wow6432Node\Both]
[HKEY_CURRENT_USER\Software\Wow6432Node\Only32]
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\CLSID]
"view"="64"
[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Classes\CLSID]
"view"="32"
)";

// A key that is there in the plain view alone is found through the view of 32 bits as well, where
// another system gives 2: one library reads what programs of both widths have registered.
TEST_F(Registry, TheViewOf32BitsComesFirstAndFallsBack) {
    WriteRegistry(kViews);
    constexpr const char* kMissing = "error 2";
    const struct {
        HKEY root;
        const WCHAR* path;
        const char* answer;
    } cases[] = {
        {HKEY_LOCAL_MACHINE, u"SOFTWARE\\Both", "32"},
        {HKEY_LOCAL_MACHINE, u"software\\both\\", "32"},
        {HKEY_LOCAL_MACHINE, u"SOFTWARE\\\\Both", "32"},
        {HKEY_LOCAL_MACHINE, u"SOFTWARE\\Both\\Only64", "64"},
        {HKEY_LOCAL_MACHINE, u"SOFTWARE\\Facts", "64"},
        {HKEY_LOCAL_MACHINE, u"SOFTWARE\\Only32", "32"},
        {HKEY_LOCAL_MACHINE, u"SOFTWARE\\Wow6432Node\\Both", "32"},
        {HKEY_LOCAL_MACHINE, u"SYSTEM\\Both", kMissing},
        {HKEY_CURRENT_USER, u"Software\\Only32", kMissing},
        {HKEY_CLASSES_ROOT, u"CLSID", "32"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(Utf8FromWide(row.path));
        EXPECT_EQ(TextAt(row.path, u"view", KEY_READ, row.root), row.answer);
        EXPECT_EQ(TextAt(row.path, u"view", KEY_READ | KEY_WOW64_32KEY, row.root), row.answer);
    }
}

TEST_F(Registry, OpeningInStepsFindsWhatOpeningAtOnceFinds) {
    WriteRegistry(kViews);
    const TestKey software(u"SOFTWARE");
    EXPECT_EQ(TextAt(u"Both", u"view", KEY_READ, software.Get()), "32");
    const TestKey both(u"SOFTWARE\\Both");
    EXPECT_EQ(TextAt(u"Only64", u"view", KEY_READ, both.Get()), "64");
}

TEST_F(Registry, RootsAreThereWithoutAFile) {
    for (const HKEY root : {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        EXPECT_THAT(SubKeysOf(root), ElementsAre());
        EXPECT_EQ(TextOf(root, u""), "error 2");
        EXPECT_EQ(TestKey(u"SOFTWARE", KEY_READ, root).error, 2);
        const TestKey same(u"", KEY_READ, root);
        EXPECT_EQ(same.Get(), root);
    }
    WriteRegistry("[HKEY_CLASSES_ROOT\\.x]\n@=\"classes\"\n[HKEY_USERS\\S-1-5-18]\n@=\"users\"\n");
    EXPECT_EQ(TextAt(u"SOFTWARE\\Classes\\.x", u""), "classes");
    EXPECT_EQ(TextAt(u".X", u"", KEY_READ, HKEY_CLASSES_ROOT), "classes");
    const HKEY users = reinterpret_cast<HKEY>(std::uintptr_t{0x80000003});
    EXPECT_EQ(TextAt(u"s-1-5-18", u"", KEY_READ, users), "users");
    EXPECT_EQ(TestKey(u".x", KEY_READ, HKEY_CURRENT_USER).error, 2);
}

}  // namespace
