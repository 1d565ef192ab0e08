// The current folder, the system's folders, streams, and the full path in a caller's buffer.

#include "platform/folders.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <string>

#include "platform/component_model.h"
#include "platform/files.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/host_text.h"
#include "support/drive_files.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;

std::string CurrentFolder() {
    WCHAR path[1024];
    return Utf8FromWide({path, GetCurrentDirectoryW(1024, path)});
}

TEST(CurrentFolder, IsTheOneSetAsItWasSpelled) {
    fs::create_directories(fs::path(Machine::Current().Folder()) / "shares/Srv/Music");
    fs::create_directories(DriveC() / "Windows/Sub");
    const struct {
        const WCHAR* set;
        const char* current;
    } cases[] = {
        {u"C:\\", "C:\\"},
        {u"c:\\WINDOWS\\", "c:\\WINDOWS"},
        {u"SUB", "c:\\WINDOWS\\SUB"},
        {u"..", "c:\\WINDOWS"},
        {u"\\\\?\\C:\\windows", "C:\\windows"},
        {u"C:/Windows/sub/. ", "C:\\Windows\\sub"},
        {u"\\", "C:\\"},
        {u"\\\\?\\UNC\\srv\\MUSIC\\", "\\\\srv\\MUSIC"},
        {u"z:\\", "z:\\"},
    };
    for (const auto& row : cases) {
        ASSERT_TRUE(SetCurrentDirectoryW(row.set)) << Utf8FromWide(row.set);
        EXPECT_EQ(CurrentFolder(), row.current) << Utf8FromWide(row.set);
    }

    // The host's own changes count, and are told as the disk spells them.
    ASSERT_TRUE(SetCurrentDirectoryW(u"c:\\WINDOWS"));
    EXPECT_TRUE(fs::equivalent(fs::current_path(), DriveC() / "Windows"));
    fs::current_path(DriveC() / "Windows/Sub");
    EXPECT_EQ(CurrentFolder(), "C:\\Windows\\Sub");
    fs::current_path(fs::path(Machine::Current().Folder()) / "shares/Srv/Music");
    EXPECT_EQ(CurrentFolder(), "\\\\Srv\\Music");
    fs::current_path(DriveC());
    EXPECT_EQ(CurrentFolder(), "C:\\");
}

TEST(CurrentFolder, StaysWhereItCannotBeChanged) {
    WriteHostFile(DriveC() / "Windows/win.ini");
    ASSERT_TRUE(SetCurrentDirectoryW(u"C:\\Windows"));
    const struct {
        const WCHAR* path;
        DWORD error;
    } cases[] = {
        {u"C:\\nofolder", 2}, {u"C:\\nofolder\\x", 3}, {u"C:\\windows\\win.ini", 267}, {u"Q:\\", 3},
        {u"", 123},           {u"C:\\a*", 123},        {u"\\\\nosrv\\share", 53},
    };
    for (const auto& row : cases) {
        SetLastError(0);
        EXPECT_FALSE(SetCurrentDirectoryW(row.path));
        EXPECT_EQ(GetLastError(), row.error) << Utf8FromWide(row.path);
    }
    EXPECT_EQ(CurrentFolder(), "C:\\Windows");
    WCHAR path[11] = u"?";
    EXPECT_EQ(GetCurrentDirectoryW(10, path), 11u);
    EXPECT_EQ(path[0], u'?');
    EXPECT_EQ(GetCurrentDirectoryW(11, path), 10u);
    EXPECT_EQ(GetCurrentDirectoryW(0, nullptr), 11u);

    // A folder that is gone is none, and nothing is completed with it.
    fs::create_directory(DriveC() / "Gone");
    ASSERT_TRUE(SetCurrentDirectoryW(u"C:\\Gone"));
    fs::remove(DriveC() / "Gone");
    EXPECT_EQ(GetCurrentDirectoryW(11, path), 0u);
    EXPECT_EQ(_wfopen(u"file", u"r"), nullptr);
    fs::current_path(DriveC());
}

TEST(SpecialFolders, AreTheSystems) {
    const struct {
        int number;
        const char* path;
    } cases[] = {{35, "C:\\ProgramData"}, {43, "C:\\Program Files\\Common Files"}};
    for (const auto& row : cases) {
        WCHAR path[MAX_PATH];
        EXPECT_TRUE(SHGetSpecialFolderPathW(nullptr, path, row.number, FALSE));
        EXPECT_EQ(Utf8FromWide(path), row.path);
        ITEMIDLIST* list = nullptr;
        EXPECT_EQ(SHGetSpecialFolderLocation(nullptr, row.number, &list), S_OK);
        WCHAR place[MAX_PATH];
        EXPECT_TRUE(SHGetPathFromIDListW(list, place));
        EXPECT_EQ(Utf8FromWide(place), row.path);
        CoTaskMemFree(list);
    }
    WCHAR path[MAX_PATH];
    EXPECT_FALSE(SHGetSpecialFolderPathW(nullptr, path, 1, FALSE));

    EXPECT_EQ(GetWindowsDirectoryW(path, 10), 11u);
    EXPECT_EQ(GetWindowsDirectoryW(path, 11), 10u);
    EXPECT_EQ(Utf8FromWide(path), "C:\\Windows");
    EXPECT_TRUE(PathFileExistsW(path));
    EXPECT_FALSE(PathFileExistsW(u"C:\\Windows\\none"));

    fs::remove(DriveC() / "ProgramData");
    EXPECT_FALSE(SHGetSpecialFolderPathW(nullptr, path, CSIDL_COMMON_APPDATA, FALSE));
    fs::create_directory(DriveC() / "ProgramData");
}

TEST(Streams, ReadFilesInAnyCaseAndNothingElse) {
    const fs::path folder = DriveC() / "Streams";
    fs::create_directories(folder);
    WriteHostFile(folder / "Note.txt");
    ASSERT_EQ(mkfifo((folder / "Pipe").c_str(), 0600), 0);
    std::FILE* stream = _wfopen(u"c:\\STREAMS\\note.TXT", u"rb");
    ASSERT_NE(stream, nullptr);
    char text[16] = "";
    EXPECT_STREQ(std::fgets(text, sizeof text, stream), "text");
    EXPECT_NE(fcntl(fileno(stream), F_GETFD) & FD_CLOEXEC, 0);
    std::fclose(stream);
    for (const WCHAR* none : {u"C:\\streams", u"C:\\streams\\missing",
                              u"C:\\streams\\note.txt\\file", u"Q:\\file", u"C:\\streams\\a*"}) {
        EXPECT_EQ(_wfopen(none, u"r"), nullptr) << Utf8FromWide(none);
    }
    // Reading a pipe that no program writes to ends at once.
    std::FILE* pipe = _wfopen(u"C:\\streams\\pipe", u"r");
    ASSERT_NE(pipe, nullptr);
    EXPECT_EQ(std::fgetc(pipe), EOF);
    std::fclose(pipe);
}

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
