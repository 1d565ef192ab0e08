// Where shortcuts lead, and why one leads nowhere.

#include <gmock/gmock.h>

#include "filesystem/FileSpec_IF.h"
#include "platform/component_model.h"
#include "support/file_library.h"
#include "support/shortcut_bytes.h"

namespace {

using testing::HasSubstr;

constexpr char kShortcut[] = "C:\\work\\links\\test.lnk";

// The target's path; empty where the shortcut has none.
std::string Resolve(const std::string& path = kShortcut) {
    const FileSpec file = File(path);
    auto& alias = dynamic_cast<AliasSpec_IF&>(*FileSpec_Impl(file).Get());
    const SharedHandle<FileSpec_IF> target = alias.ResolveAlias();
    return target != nullptr ? Text(target->GetPath()) : "";
}

using Aliases = FileLibrary;

TEST_F(Aliases, LeadWhereTheySay) {
    Write("C:\\work\\Target.txt", "text");
    const auto shares = std::filesystem::path(Machine::Current().Folder()) / "shares/Srv/Music";
    std::filesystem::create_directories(shares);
    WriteHostFile(shares / "Song");
    const struct {
        ShortcutParts parts;
        const char* target;
    } cases[] = {
        {{.local = "C:\\work\\TARGET.txt"}, "C:\\work\\TARGET.txt"},
        {{.local = "C:\\work"}, "C:\\work"},
        {{.local = "c:\\a", .localWide = u"C:\\work", .suffix = "target.txt"},
         "C:\\work\\target.txt"},
        // The share comes before the place that it has on its server.
        {{.local = "C:\\work\\target.txt", .share = "\\\\srv\\music", .suffix = ""},
         "\\\\srv\\music\\"},
        {{.share = "\\\\srv\\music", .suffix = "song"}, "\\\\srv\\music\\song"},
        {{.local = "C:\\work\\target.txt", .share = "\\\\gone\\music"}, "C:\\work\\target.txt"},
        // From its own folder: both may have been moved to another drive together.
        {{.relative = u"..\\target.txt"}, "C:\\work\\target.txt"},
        {{.relative = u"C:\\work\\target.txt"}, "C:\\work\\target.txt"},
        {{.local = "Q:\\target.txt", .relative = u"..\\target.txt"}, "C:\\work\\target.txt"},
        {{.relative = u".\\target.txt", .workingFolder = u"C:\\work"}, "C:\\work\\target.txt"},
        // What has no path has no target.
        {{.itemList = true}, ""},
        {{}, ""},
    };
    for (const auto& row : cases) {
        Write(kShortcut, MakeShortcut(row.parts));
        EXPECT_EQ(Resolve(), row.target);
    }
}

TEST_F(Aliases, SayWhyTheyLeadNowhere) {
    const struct {
        std::string bytes;
        const char* result;
    } cases[] = {
        {MakeShortcut({.local = "C:\\work\\missing"}), "80070002"},
        {MakeShortcut({.local = "C:\\missing\\file", .relative = u"missing"}), "80070003"},
        {MakeShortcut({.share = "\\\\nosrv\\share"}), "80070035"},
        {MakeShortcut({.local = "C:\\a?b"}), "8007007B"},
        {MakeShortcut({.local = "Q:\\a"}), "80070003"},
        {"", "80004005"},
        {std::string(200, 'x'), "80004005"},
        {MakeShortcut({.local = "C:\\"}) + std::string(2 << 20, 'x'), "80004005"},
    };
    for (const auto& row : cases) {
        Write(kShortcut, row.bytes);
        const Failure failure = FailureOf([] { Resolve(); });
        EXPECT_THAT(failure.message, HasSubstr(row.result)) << &row - cases;
        EXPECT_EQ(failure.path, kShortcut);
    }
    const OpenedFile holder(u"C:\\work\\links\\test.lnk", GENERIC_READ);
    EXPECT_THAT(MessageOf([] { Resolve(); }), HasSubstr("80070020"));
    EXPECT_THAT(MessageOf([] { Resolve("C:\\none.lnk"); }), HasSubstr("80070002"));
    EXPECT_EQ(CoInitialize(nullptr), S_OK) << "the thread was left in an apartment";
    CoUninitialize();
}

}  // namespace
