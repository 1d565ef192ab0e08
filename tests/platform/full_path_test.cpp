// The full path and the temporary folder in a caller's buffer.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "platform/folders.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/host_text.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;

std::string TempPath() {
    WCHAR path[1024];
    return Utf8FromWide({path, GetTempPathW(1024, path)});
}

TEST(GetFullPathName, GivesTheLengthOrAsksForRoom) {
    ASSERT_TRUE(SetCurrentDirectoryW(u"C:\\windows"));
    const struct {
        const WCHAR* path;
        const char* full;
    } cases[] = {
        {u"c:a", "C:\\windows\\a"}, {u"C:\\a\\b", "C:\\a\\b"}, {u"C:\\a\\b..", "C:\\a\\b"}};
    for (const auto& row : cases) {
        WCHAR buffer[64] = u"?";
        const auto room = static_cast<DWORD>(std::string(row.full).size() + 1);
        EXPECT_EQ(GetFullPathNameW(row.path, 0, nullptr, nullptr), room) << row.full;
        EXPECT_EQ(GetFullPathNameW(row.path, room - 1, buffer, nullptr), room) << row.full;
        EXPECT_EQ(buffer[0], u'?');
        EXPECT_EQ(GetFullPathNameW(row.path, room, buffer, nullptr), room - 1) << row.full;
        EXPECT_EQ(Utf8FromWide(buffer), row.full);
    }
    const std::u16string longPath = u"C:\\" + std::u16string(30'000, u'a');
    EXPECT_EQ(GetFullPathNameW(longPath.c_str(), 0, nullptr, nullptr), 30'004u);
}

TEST(GetFullPathName, HasNoneOfNothing) {
    WCHAR buffer[64];
    SetLastError(0);
    EXPECT_EQ(GetFullPathNameW(u"", 64, buffer, nullptr), 0u);
    EXPECT_EQ(GetLastError(), 0u);

    const fs::path gone = fs::path(Machine::Current().Folder()) / "drives/c/Gone";
    fs::create_directory(gone);
    fs::current_path(gone);
    fs::remove(gone);
    EXPECT_EQ(GetFullPathNameW(u"a", 64, buffer, nullptr), 0u);
    EXPECT_EQ(GetLastError(), 3u);
    EXPECT_EQ(GetFullPathNameW(u"C:\\a", 64, buffer, nullptr), 4u);
    fs::current_path("/");
}

TEST(GetTempPath, IsTheMachinesElseTheHosts) {
    const fs::path machines = fs::path(Machine::Current().Folder()) / "drives/c/Windows/Temp";
    EXPECT_EQ(TempPath(), "C:\\Windows\\Temp\\");
    WCHAR path[17] = u"?";
    EXPECT_EQ(GetTempPathW(16, path), 17u);
    EXPECT_EQ(path[0], u'?');
    EXPECT_EQ(GetTempPathW(17, path), 16u);

    fs::remove(machines);
    const fs::path scratch = fs::canonical(TestMachine::ScratchFolder());
    setenv("TMPDIR", scratch.c_str(), 1);
    EXPECT_EQ(TempPath(), Utf8FromWide(WindowsPath(scratch.string())) + "\\");
    for (const char* useless : {"relative", "/missing/folder", ""}) {
        setenv("TMPDIR", useless, 1);
        EXPECT_EQ(TempPath(), Utf8FromWide(WindowsPath(fs::canonical("/tmp").string())) + "\\")
            << useless;
    }
    unsetenv("TMPDIR");
    fs::create_directory(machines);
    EXPECT_EQ(TempPath(), "C:\\Windows\\Temp\\");
}

}  // namespace
