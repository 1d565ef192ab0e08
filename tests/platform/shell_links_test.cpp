// The bytes of shortcut files, and the class of the component object that reads them.

#include "platform/shell_links.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/posix/files/shortcut_file.h"
#include "platform/posix/text/host_text.h"
#include "support/shortcut_bytes.h"

namespace {

// Everything that a file can have, its block of further data aside.
ShortcutParts Everything() {
    return {.itemList = true,
            .local = "C:\\a",
            .localWide = u"C:\\a\u4E2D",
            .share = "\\\\srv\\Music",
            .shareWide = u"\\\\srv\\Mus\u00EF\u4E2D",
            .suffix = "b\\c.txt",
            .name = u"note",
            .relative = u"..\\b\\c.txt",
            .workingFolder = u"C:\\work"};
}

TEST(ShortcutFile, TellsItsTargetInEveryForm) {
    const struct {
        ShortcutParts parts;
        std::u16string local;
        std::u16string share;
        std::u16string relative;
        std::u16string workingFolder;
    } cases[] = {
        {Everything(), u"C:\\a\u4E2D\\b\\c.txt", u"\\\\srv\\Mus\u00EF\u4E2D\\b\\c.txt",
         u"..\\b\\c.txt", u"C:\\work"},
        {{.local = "C:\\a\\b.txt"}, u"C:\\a\\b.txt", u"", u"", u""},
        {{.local = "C:\\", .suffix = "b"}, u"C:\\b", u"", u"", u""},
        // Narrow texts are UTF-8, else in the western code page.
        {{.local = "C:\\\xC3\xA9"}, u"C:\\\u00E9", u"", u"", u""},
        {{.local = "C:\\\xE9\x80\x9F"}, u"C:\\\u901F", u"", u"", u""},
        {{.local = "C:\\\xE9\x80\x96"}, u"C:\\\u9016", u"", u"", u""},
        {{.local = "C:\\\xE9\x80 \x9F"}, u"C:\\\u00E9\u20AC \u0178", u"", u"", u""},
        {{.itemList = true, .share = "\\\\srv\\Music", .suffix = "x"},
         u"",
         u"\\\\srv\\Music\\x",
         u"",
         u""},
        {{.ignoreLinkInfo = true, .local = "C:\\a", .relative = u"b"}, u"", u"", u"b", u""},
        {{.wideTexts = false, .name = u"n", .relative = u".\\b\u00E9"},
         u"",
         u"",
         u".\\b\u00E9",
         u""},
        {{.itemList = true}, u"", u"", u"", u""},
        {{.relative = std::u16string(u"a\0b", 3)}, u"", u"", u"a", u""},
    };
    for (const auto& row : cases) {
        const auto shortcut = ParseShortcut(MakeShortcut(row.parts));
        ASSERT_TRUE(shortcut) << &row - cases;
        EXPECT_EQ(shortcut->localPath, row.local) << Utf8FromWide(shortcut->localPath);
        EXPECT_EQ(shortcut->sharePath, row.share) << Utf8FromWide(shortcut->sharePath);
        EXPECT_EQ(shortcut->relativePath, row.relative) << Utf8FromWide(shortcut->relativePath);
        EXPECT_EQ(shortcut->workingFolder, row.workingFolder);
    }
}

TEST(ShortcutFile, IsRefusedWhereverItIsCut) {
    const std::string whole = MakeShortcut(Everything());
    const std::size_t end = whole.size() - 4;
    ASSERT_TRUE(ParseShortcut(whole.substr(0, end)));
    for (std::size_t size = 0; size < end; ++size) {
        EXPECT_FALSE(ParseShortcut(whole.substr(0, size))) << size;
    }
}

TEST(ShortcutFile, IsRefusedWithANumberThatLeadsAstray) {
    const std::string whole = MakeShortcut(Everything());
    constexpr std::size_t kItemList = 0x4C;
    constexpr std::size_t kInfo = kItemList + 2 + 8;
    std::vector<std::size_t> places = {0, 4, kItemList, kInfo};
    for (const std::size_t place : {0x4, 0x14, 0x18, 0x1C}) {
        places.push_back(kInfo + place);
    }
    const std::size_t share = whole.find("\\\\srv") - 0x1C;
    for (const std::size_t place : {0x0, 0x14}) {
        places.push_back(share + place);
    }
    for (const std::size_t place : places) {
        std::string broken = whole;
        broken[place + 1] = '\x7F';
        broken[place + 3] = '\x7F';
        EXPECT_FALSE(ParseShortcut(broken)) << place;
    }
}

TEST(CoCreateInstance, KnowsTheClassesOfTheSystem) {
    constexpr CLSID kUnknown = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    int mark = 0;
    void* object = &mark;
    const auto create = [&](REFCLSID id, DWORD context, REFIID iid) {
        object = &mark;
        return CoCreateInstance(id, nullptr, context, iid, &object);
    };
    EXPECT_EQ(create(CLSID_ShellLink, CLSCTX_INPROC_SERVER, IID_IUnknown), CO_E_NOTINITIALIZED);
    EXPECT_EQ(object, nullptr);
    for (const DWORD kind : {COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED}) {
        ASSERT_EQ(CoInitializeEx(nullptr, kind), S_OK);
        EXPECT_EQ(create(kUnknown, CLSCTX_INPROC_SERVER, IID_IUnknown), REGDB_E_CLASSNOTREG);
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(create(CLSID_ShellLink, 0x4, IID_IUnknown), REGDB_E_CLASSNOTREG);
        EXPECT_EQ(create(CLSID_ShellLink, CLSCTX_INPROC_SERVER, IID_IClassFactory), E_NOINTERFACE);
        EXPECT_EQ(object, nullptr);
        ASSERT_EQ(create(CLSID_ShellLink, CLSCTX_INPROC_SERVER, IID_IUnknown), S_OK);
        auto* const outer = static_cast<IUnknown*>(object);
        EXPECT_EQ(
            CoCreateInstance(CLSID_ShellLink, outer, CLSCTX_INPROC_SERVER, IID_IUnknown, &object),
            CLASS_E_NOAGGREGATION);
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(outer->Release(), 0u);
        CoUninitialize();
        // Asking did not leave the thread in the apartment.
        EXPECT_EQ(create(CLSID_ShellLink, CLSCTX_INPROC_SERVER, IID_IUnknown), CO_E_NOTINITIALIZED);
    }
    EXPECT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, 1, IID_IUnknown, nullptr), E_INVALIDARG);
}

}  // namespace
