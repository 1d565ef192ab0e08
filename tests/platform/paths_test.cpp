// Paths: the full path, where it leads on the host, and back.

#include "platform/posix/paths/paths.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "platform/folders.h"
#include "platform/posix/text/host_text.h"
#include "support/drive_files.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;

// The host path found, or the error's number.
std::string Find(std::u16string_view path) {
    const HostFile file = FindFile(PlaceOf(path));
    return file.error == 0 ? file.path : std::to_string(file.error);
}

TEST(FullPath, FollowsTheRulesOfTheSystem) {
    ASSERT_TRUE(SetCurrentDirectoryW(u"C:\\windows"));
    const struct {
        std::u16string_view path;
        std::u16string_view full;
    } cases[] = {
        {u"C:\\a\\..\\b", u"C:\\b"},
        {u"c:a", u"C:\\windows\\a"},
        {u"a/b", u"C:\\windows\\a\\b"},
        {u"a\\b", u"C:\\windows\\a\\b"},
        {u"C:\\a\\.", u"C:\\a"},
        {u"C:\\a\\b.", u"C:\\a\\b"},
        {u"C:\\a\\b..", u"C:\\a\\b"},
        {u"C:\\a\\b ", u"C:\\a\\b "},
        {u"C:\\a\\b \\c", u"C:\\a\\b \\c"},
        {u"C:\\a\\b.\\c", u"C:\\a\\b\\c"},
        {u"\\\\srv\\share\\..\\x", u"\\\\srv\\share\\x"},
        {u"\\\\srv\\share", u"\\\\srv\\share"},
        {u"\\\\srv\\share\\", u"\\\\srv\\share\\"},
        {u"\\\\srv", u"\\\\srv"},
        {u"C:", u"C:\\windows\\"},
        {u"C:\\..\\..", u"C:\\"},
        {u"\\x", u"C:\\x"},
        {u"\\", u"C:\\"},
        {u"\\\\.\\X:", u"\\\\.\\X:"},
        {u"C:\\a\\...", u"C:\\a\\"},
        {u"C:\\a\\...\\b", u"C:\\a\\...\\b"},
        {u"C:\\a\\\\b", u"C:\\a\\b"},
        {u"D:x", u"D:\\x"},
        {u"D:", u"D:\\"},
        {u".", u"C:\\windows"},
        {u"..", u"C:\\"},
        {u"...", u"C:\\windows\\"},
        {u"", u""},
        {u"C:\\a\\b\\", u"C:\\a\\b\\"},
        {u"C:\\a\\b\\..", u"C:\\a"},
        {u"C:\\a\\b\\..\\", u"C:\\a\\"},
        {u"C:/a/", u"C:\\a\\"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(Utf8FromWide(FullPath(row.path)), Utf8FromWide(row.full))
            << Utf8FromWide(row.path);
    }
}

TEST(FullPath, CompletesFromTheFolderOfAShare) {
    fs::create_directories(fs::path(Machine::Current().Folder()) / "shares/Srv/Music/Old");
    ASSERT_TRUE(SetCurrentDirectoryW(u"\\\\srv\\music\\old"));
    EXPECT_EQ(FullPath(u"x"), u"\\\\srv\\music\\old\\x");
    EXPECT_EQ(FullPath(u"\\x"), u"\\\\srv\\music\\x");
    EXPECT_EQ(FullPath(u"..\\..\\..\\x"), u"\\\\srv\\music\\x");
    EXPECT_EQ(FullPath(u"C:x"), u"C:\\x");
    ASSERT_TRUE(SetCurrentDirectoryW(u"\\\\srv\\music\\"));
    EXPECT_EQ(FullPath(u"."), u"\\\\srv\\music\\");
    ASSERT_TRUE(SetCurrentDirectoryW(u"C:\\"));
}

TEST(FindFile, TellsWhyNothingIsThere) {
    const fs::path folder = NewFolder("Errors");
    WriteHostFile(folder / "file");
    fs::create_directories(fs::path(Machine::Current().Folder()) / "shares/Srv/Music");
    fs::create_symlink("nowhere", folder / "dangling");
    const std::u16string longest(255, u'n');
    const struct {
        std::u16string path;
        DWORD error;
    } cases[] = {
        {u"C:\\Errors\\missing", 2},
        {u"C:\\errors\\MISSING\\", 2},
        {u"C:\\Errors\\dangling", 2},
        {u"C:\\missing\\file", 3},
        {u"C:\\Errors\\file\\file", 3},
        {u"C:\\errors\\FILE\\file", 3},
        {u"", 3},
        {u"Q:\\", 3},
        {u"Q:\\file", 3},
        {u"1:\\file", 3},
        {u"\\\\nosrv\\share", 53},
        {u"\\\\nosrv\\share\\file", 53},
        {u"\\\\srv\\noshare\\file", 53},
        {u"\\\\srv\\music\\file", 2},
        {u"\\\\srv", 53},
        {u"\\\\..\\..\\file", 123},
        {u"\\\\.\\X:", 2},
        {u"C:\\Errors\\a*", 123},
        {u"C:\\Errors\\a|b", 123},
        {u"C:\\Errors\\a:b", 123},
        {u"C:\\Errors\\a\tb", 123},
        {u"C:\\Errors\\a\xD800", 123},
        {u"\\\\?\\C:\\Errors\\..\\Errors", 123},
        {u"\\\\?\\C:\\Errors/file", 123},
        {u"\\\\?\\C:\\Errors\\\\file", 123},
        {u"\\\\?\\C:\\Errors\\.", 123},
        {u"C:\\Errors\\" + longest, 2},
        {u"C:\\Errors\\" + longest + u"n", 123},
        {u"C:\\Errors\\" + std::u16string(128, u'\xE9'), 123},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(FindFile(PlaceOf(row.path)).error, row.error) << Utf8FromWide(row.path);
    }
    EXPECT_EQ(FindFile(PlaceOf(u"c:\\errors\\New.txt")).path, folder / "New.txt");
}

TEST(FindFile, PassesOverCase) {
    const fs::path folder = NewFolder("Suite/Player Files");
    WriteHostFile(folder / "Player.exe");
    EXPECT_EQ(Find(u"C:\\Suite\\Player Files\\Player.exe"), folder / "Player.exe");
    EXPECT_EQ(Find(u"c:/SUITE/player files/PLAYER.EXE"), folder / "Player.exe");
    EXPECT_EQ(Find(u"\\\\?\\c:\\suite\\player files\\player.exe"), folder / "Player.exe");
    EXPECT_EQ(Find(u"c:\\suite\\player files. .\\player.exe"), "3");
    EXPECT_EQ(Find(u"c:\\suite\\player files\\player.exe. "), folder / "Player.exe");

    // Letters beyond ASCII fold too; a name in no encoding is never found.
    WriteHostFile(folder / "\xC3\x84rger");
    WriteHostFile(folder / "bad\xFF");
    EXPECT_EQ(Find(u"C:\\Suite\\Player Files\\\u00E4RGER"), folder / "\xC3\x84rger");
    EXPECT_EQ(Find(u"C:\\Suite\\Player Files\\bad\uFFFD"), "2");
}

TEST(FindFile, PrefersTheExactNameAndThenTheFirst) {
    const fs::path folder = NewFolder("Choice");
    for (const char* name : {"name", "nAme", "NAME", "Name"}) {
        WriteHostFile(folder / name);
    }
    EXPECT_EQ(Find(u"C:\\choice\\name"), folder / "name");
    EXPECT_EQ(Find(u"C:\\choice\\nAme"), folder / "nAme");
    EXPECT_EQ(Find(u"C:\\Choice\\naME"), folder / "NAME");
}

TEST(FindFile, FollowsDrivesAndSharesThatAreLinks) {
    const fs::path disk = TestMachine::ScratchFolder() / "disk";
    fs::create_directories(disk / "Songs");
    const fs::path machine = Machine::Current().Folder();
    fs::create_directory_symlink(disk, machine / "drives/m");
    fs::create_directories(machine / "shares/Box");
    fs::create_directory_symlink(disk, machine / "shares/Box/Disk");
    EXPECT_EQ(Find(u"M:\\songs"), machine / "drives/m/Songs");
    EXPECT_EQ(Find(u"\\\\BOX\\disk\\SONGS\\"), machine / "shares/Box/Disk/Songs");
    EXPECT_EQ(Find(u"M:\\..\\..\\Songs"), machine / "drives/m/Songs");
    const HostPlace root = PlaceOf(u"m:\\");
    EXPECT_TRUE(root.IsRoot());
    EXPECT_EQ(FindFile(root).path, machine / "drives/m");

    // The longest folder names the path, a drive ahead of a share.
    EXPECT_EQ(WindowsPath((disk / "Songs").string()), u"M:\\Songs");
    EXPECT_EQ(WindowsPath(disk.string()), u"M:\\");
    fs::remove(machine / "drives/m");
    EXPECT_EQ(WindowsPath((disk / "Songs").string()), u"\\\\Box\\Disk\\Songs");
    fs::remove(machine / "shares/Box/Disk");
    EXPECT_TRUE(WindowsPath((disk / "Songs").string()).starts_with(u"Z:\\"));
    EXPECT_EQ(WindowsPath((DriveC() / "Windows").string()), u"C:\\Windows");
    EXPECT_TRUE(WindowsPath(DriveC().string() + "x").starts_with(u"Z:\\"));
    EXPECT_EQ(WindowsPath("/"), u"Z:\\");
    EXPECT_EQ(WindowsPath("relative"), u"");
}

TEST(FindFile, DoesNotTakeForMissingWhatItCannotLookFor) {
    NewFolder("Folder");
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none = {3, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const std::string found = Find(u"C:\\folder");
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(found, "4");
    EXPECT_EQ(Find(u"C:\\folder"), DriveC() / "Folder");
}

// Looks for the path for as long as a listing of its folder needs to become one that is kept.
void LookUntilSettled(std::u16string_view path, const std::string& expected) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(30);
    do {
        ASSERT_EQ(Find(path), expected);
    } while (std::chrono::steady_clock::now() < end);
}

TEST(FindFile, SeesEveryChangeAtTheNextLookup) {
    const fs::path folder = NewFolder("Changing");
    for (int round = 0; round < 3; ++round) {
        LookUntilSettled(u"C:\\changing\\library.dll", "2");
        WriteHostFile(folder / "Library.DLL");
        ASSERT_EQ(Find(u"C:\\changing\\library.dll"), folder / "Library.DLL");
        LookUntilSettled(u"C:\\changing\\library.dll", folder / "Library.DLL");
        fs::rename(folder / "Library.DLL", folder / "LIBRARY.dll");
        ASSERT_EQ(Find(u"C:\\changing\\library.dll"), folder / "LIBRARY.dll");
        fs::remove(folder / "LIBRARY.dll");
    }
    // A change above: the folder is replaced by one that holds the file.
    LookUntilSettled(u"C:\\changing\\library.dll", "2");
    const fs::path other = NewFolder("Other");
    WriteHostFile(other / "Library.dll");
    fs::rename(folder, DriveC() / "Away");
    fs::rename(other, folder);
    EXPECT_EQ(Find(u"C:\\changing\\library.dll"), folder / "Library.dll");
    fs::remove_all(DriveC() / "Away");

    // Many changes within one step of the clock.
    for (int round = 0; round < 200; ++round) {
        WriteHostFile(folder / "Quick");
        ASSERT_EQ(Find(u"C:\\changing\\quick"), folder / "Quick");
        fs::remove(folder / "Quick");
        ASSERT_EQ(Find(u"C:\\changing\\quick"), "2");
    }
}

TEST(FindFile, LooksThroughAVeryLargeFolder) {
    const fs::path folder = NewFolder("Large");
    WriteHostFile(folder / "File0");
    for (int file = 1; file < 10'010; ++file) {
        fs::create_hard_link(folder / "File0", folder / ("File" + std::to_string(file)));
    }
    LookUntilSettled(u"C:\\large\\file10009", folder / "File10009");
    EXPECT_EQ(Find(u"C:\\large\\FILE0"), folder / "File0");
    EXPECT_EQ(Find(u"C:\\large\\FILE"), "2");
    fs::remove_all(folder);
}

TEST(FindFile, ServesThreadsWhileFoldersChange) {
    const fs::path folder = NewFolder("Threads");
    WriteHostFile(folder / "Always");
    std::atomic<bool> stop = false;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            while (!stop) {
                wrong += Find(u"c:\\threads\\always") != folder / "Always";
                wrong += Find(u"c:\\threads\\never") != "2";
                wrong += WindowsPath(folder.string()) != u"C:\\Threads";
            }
        });
    }
    for (int round = 0; round < 200; ++round) {
        WriteHostFile(folder / ("Other" + std::to_string(round)));
        fs::create_directory(fs::path(Machine::Current().Folder()) / "drives/t");
        fs::remove(fs::path(Machine::Current().Folder()) / "drives/t");
    }
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

}  // namespace
