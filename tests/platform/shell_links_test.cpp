// Shortcut files, and the component object that reads them.

#include "platform/shell_links.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/posix/host_text.h"
#include "platform/posix/machine.h"
#include "platform/posix/shortcut_file.h"
#include "support/shortcut_bytes.h"

namespace {

namespace fs = std::filesystem;

constexpr HRESULT ResultOf(std::uint32_t error) {
    return static_cast<HRESULT>(0x80070000u | error);
}

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
        EXPECT_EQ(shortcut->size, 1234u);
        EXPECT_EQ(shortcut->attributes, 0x20u);
        EXPECT_EQ(shortcut->write.dwHighDateTime, 0x01010101u);
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

class Link : public testing::Test {
  protected:
    Link() {
        EXPECT_TRUE(SUCCEEDED(CoInitialize(nullptr)));
        EXPECT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                   reinterpret_cast<void**>(&link_)),
                  S_OK);
        EXPECT_EQ(link_->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&file_)), S_OK);
        fs::create_directories(DriveC() / "Links/Sub");
        fs::create_directories(fs::path(Machine::Current().Folder()) / "shares/Srv/Music");
    }
    ~Link() override {
        EXPECT_EQ(file_->Release(), 1u);
        EXPECT_EQ(link_->Release(), 0u);
        CoUninitialize();
    }

    static fs::path DriveC() { return fs::path(Machine::Current().Folder()) / "drives/c"; }

    static void Write(const std::string& name, const std::string& bytes) {
        std::ofstream(DriveC() / "Links" / name, std::ios::binary) << bytes;
    }

    // Loads C:\Links\Sub\Test.lnk as the file objects do, with the prefix.
    HRESULT Load(const ShortcutParts& parts) {
        Write("Sub/Test.lnk", MakeShortcut(parts));
        return file_->Load(u"\\\\?\\c:\\links\\sub\\test.lnk", STGM_READ);
    }

    HRESULT Resolve() { return link_->Resolve(nullptr, SLR_NO_UI | SLR_ANY_MATCH | SLR_UPDATE); }

    std::string Path(DWORD flags = SLGP_UNCPRIORITY) {
        WCHAR path[1024] = u"?";
        const HRESULT result = link_->GetPath(path, 1024, nullptr, flags);
        EXPECT_EQ(result, *path == u'\0' ? S_FALSE : S_OK);
        return Utf8FromWide(path);
    }

    IShellLinkW* link_ = nullptr;
    IPersistFile* file_ = nullptr;
};

TEST_F(Link, LeadsWhereItSays) {
    Write("Target.txt", "text");
    std::ofstream(fs::path(Machine::Current().Folder()) / "shares/Srv/Music/Song") << "text";
    ASSERT_EQ(Load({.local = "C:\\links\\TARGET.txt"}), S_OK);
    EXPECT_EQ(Path(), "C:\\links\\TARGET.txt");
    EXPECT_EQ(Resolve(), S_OK);
    EXPECT_EQ(Path(), "C:\\links\\TARGET.txt");
    WCHAR cut[4];
    WIN32_FIND_DATAW data;
    EXPECT_EQ(link_->GetPath(cut, 4, &data, 0), S_OK);
    EXPECT_EQ(Utf8FromWide(cut), "C:\\");
    EXPECT_EQ(Utf8FromWide(data.cFileName), "TARGET.txt");
    EXPECT_EQ(data.nFileSizeLow, 1234u);

    // A folder is a target too, and the share comes ahead of the place that it has on its server.
    ASSERT_EQ(Load({.local = "C:\\links"}), S_OK);
    EXPECT_EQ(Resolve(), S_OK);
    ASSERT_EQ(Load({.local = "C:\\links\\target.txt", .share = "\\\\srv\\music", .suffix = ""}),
              S_OK);
    EXPECT_EQ(Path(), "\\\\srv\\music");
    EXPECT_EQ(Path(0), "C:\\links\\target.txt");
    ASSERT_EQ(Load({.share = "\\\\srv\\music", .suffix = "song"}), S_OK);
    EXPECT_EQ(Resolve(), S_OK);
    EXPECT_EQ(Path(), "\\\\srv\\music\\song");
    ASSERT_EQ(Load({.local = "C:\\Links\\Target.txt", .share = "\\\\gone\\music"}), S_OK);
    EXPECT_EQ(Resolve(), S_OK);
    EXPECT_EQ(Path(), "C:\\Links\\Target.txt");
}

TEST_F(Link, IsFollowedFromItsOwnFolder) {
    Write("Target.txt", "text");
    for (const WCHAR* relative : {u"..\\target.txt", u"C:\\Links\\target.txt"}) {
        ASSERT_EQ(Load({.relative = relative}), S_OK);
        EXPECT_EQ(Resolve(), S_OK);
        EXPECT_EQ(fs::path(Path()).filename().string().find("arget.txt") != std::string::npos,
                  true);
        EXPECT_EQ(Path().size(), std::string("C:\\Links\\target.txt").size()) << Path();
    }
    // Both were moved to another drive together.
    ASSERT_EQ(Load({.local = "D:\\links\\target.txt", .relative = u"..\\target.txt"}), S_OK);
    EXPECT_EQ(Path(), "D:\\links\\target.txt");
    EXPECT_EQ(Resolve(), S_OK);
    EXPECT_EQ(Path(), "c:\\links\\target.txt");
    ASSERT_EQ(Load({.relative = u".\\target.txt", .workingFolder = u"C:\\links"}), S_OK);
    EXPECT_EQ(Resolve(), S_OK);
    EXPECT_EQ(Path(), "C:\\links\\target.txt");
}

TEST_F(Link, SaysWhyItLeadsNowhere) {
    const struct {
        ShortcutParts parts;
        HRESULT result;
    } cases[] = {
        {{.local = "C:\\Links\\missing"}, ResultOf(2)},
        {{.local = "C:\\missing\\file", .relative = u"missing"}, ResultOf(3)},
        {{.share = "\\\\nosrv\\share"}, ResultOf(53)},
        {{.local = "C:\\a?b"}, ResultOf(123)},
        {{.local = "Q:\\a"}, ResultOf(3)},
        // What has no path at all is settled as it is.
        {{.itemList = true}, S_OK},
    };
    for (const auto& row : cases) {
        ASSERT_EQ(Load(row.parts), S_OK);
        EXPECT_EQ(Resolve(), row.result) << Path();
    }
    EXPECT_EQ(Path(), "");
}

TEST_F(Link, RefusesWhatIsNoLink) {
    Write("Empty.lnk", "");
    Write("Text.lnk",
          "text that is no shortcut, though long enough to hold the head of one; so "
          "the reader has to look at what it says");
    Write("Huge.lnk", MakeShortcut({.local = "C:\\"}) + std::string(2 << 20, 'x'));
    const struct {
        const WCHAR* path;
        HRESULT result;
    } cases[] = {
        {u"C:\\links\\empty.lnk", E_FAIL},
        {u"C:\\links\\text.lnk", E_FAIL},
        {u"C:\\links\\huge.lnk", E_FAIL},
        {u"C:\\links\\missing.lnk", ResultOf(2)},
        {u"C:\\missing\\missing.lnk", ResultOf(3)},
        {u"C:\\links", ResultOf(5)},
        {nullptr, E_INVALIDARG},
    };
    ASSERT_EQ(Load({.local = "C:\\Links"}), S_OK);
    for (const auto& row : cases) {
        EXPECT_EQ(file_->Load(row.path, STGM_READ), row.result)
            << Utf8FromWide(row.path ? row.path : u"null");
    }
    // The link that was there before stays.
    EXPECT_EQ(Path(), "C:\\Links");
    const HANDLE holder =
        CreateFileW(u"C:\\links\\text.lnk", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(holder, INVALID_HANDLE_VALUE);
    EXPECT_EQ(file_->Load(u"C:\\links\\text.lnk", STGM_READ), ResultOf(32));
    CloseHandle(holder);
}

TEST_F(Link, HasTheInterfacesOfOneObject) {
    IUnknown* first = nullptr;
    IUnknown* second = nullptr;
    EXPECT_EQ(link_->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&first)), S_OK);
    EXPECT_EQ(file_->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&second)), S_OK);
    EXPECT_EQ(first, second);
    first->Release();
    second->Release();
    void* none = this;
    EXPECT_EQ(link_->QueryInterface(IID_IClassFactory, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
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
