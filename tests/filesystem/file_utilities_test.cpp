#include "filesystem/utilities/FileUtilities.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "filesystem/Private/Windows/API.h"
#include "platform/modules.h"
#include "support/file_library.h"
#include "text/Texts.h"

namespace {

namespace fs = std::filesystem;
using namespace FileSystem;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// ---- Names ----

TEST_F(FileUtilities, CreatePathMakesWhatIsMissing) {
    CreatePath(File("C:\\a\\b\\c"));
    CreatePath(File("C:\\A\\b\\c"));
    CreatePath(File("C:\\"));
    EXPECT_TRUE(fs::is_directory(Host("C:\\a\\b\\c")));
    Write("C:\\a\\file", "text");
    const Failure failure = FailureOf([] { CreatePath(File("C:\\a\\file\\d")); });
    EXPECT_EQ(failure.number, Texts::fileExists.GetId());
    EXPECT_EQ(failure.path, "C:\\a\\file");
    EXPECT_THROW(CreatePath(FileSpec()), FileException);
}

TEST_F(FileUtilities, UniqueNamesAreTheFirstFreeOnes) {
    const FolderSpec folder = Folder("C:\\");
    const auto make = [&folder](const char* name, const char* extension) {
        return Text(MakeUniqueName(folder, name, extension).GetName());
    };
    EXPECT_EQ(make("a", "txt"), "a.txt");
    EXPECT_EQ(make("a*b", "txt"), "a1b.txt");
    for (const char* taken : {"C:\\A.TXT", "C:\\a1.txt", "C:\\a1b.txt", "C:\\a2b.txt", "C:\\x"}) {
        Write(taken, "");
    }
    EXPECT_EQ(make("a", "txt"), "a2.txt");
    EXPECT_EQ(make("a", ".txt"), "a2.txt");
    EXPECT_EQ(make("a*b", "txt"), "a3b.txt");
    EXPECT_EQ(make("x", ""), "x1");
    EXPECT_EQ(make("*", ""), "1");
    // A second "*" is none that a path could hold.
    EXPECT_EQ(FailureOf([&] { make("a*b*", ""); }).number, Texts::invalidFilePath.GetId());
}

TEST_F(FileUtilities, FoldersAreFoundByTheirOwnRules) {
    for (const char* file :
         {"C:\\t\\ab.x", "C:\\t\\ab\\ab.x", "C:\\t\\ab\\abc\\y", "C:\\t\\c\\AB\\z"}) {
        Write(file, "");
    }
    const FolderSpec folder = Folder("C:\\t");
    EXPECT_THAT(Names(FindFiles(folder, "ab*", false)), UnorderedElementsAre("ab.x"));
    EXPECT_THAT(Names(FindFiles(folder, "a?", false)), ElementsAre("ab"));
    // The folder's own finds come before those below it.
    EXPECT_THAT(Names(FindFiles(folder, "ab*", true)), ElementsAre("ab.x", "ab.x"));
    EXPECT_EQ(Text(FindFiles(folder, "ab*", true).front().GetPath()), "C:\\t\\ab.x");
    EXPECT_THAT(Names(FindFolders(folder, "a*", true)), UnorderedElementsAre("ab", "AB"));
    EXPECT_THAT(Names(FindFolders(folder, "a*", false)), ElementsAre("ab"));
    EXPECT_THAT(Names(FindFolders(folder, "z", true)), IsEmpty());
    EXPECT_EQ(FailureOf([&] { FindFiles(folder, "a\\b", true); }).path, "a\\b");
    EXPECT_THROW(FindFiles(FolderSpec(), "*", true), FileException);
    EXPECT_EQ(FailureOf([] { FindFiles(Folder("C:\\none"), "*", true); }).number,
              Texts::filePathNotFound.GetId());
}

TEST_F(FileUtilities, RelativePathsStayOnOneVolume) {
    const auto way = [](const FileSpec& target, const FileSpec& base) {
        return Text(MakeRelativePath(target, base));
    };
    EXPECT_EQ(way(File("C:\\a\\b"), File("C:\\a\\b")), ".");
    EXPECT_EQ(way(File("C:\\a\\b"), File("C:\\A\\c\\d")), "./../../b");
    EXPECT_EQ(way(File("C:\\"), File("C:\\a")), "./..");
    EXPECT_EQ(way(File("C:\\a"), File("C:\\")), "./a");
    EXPECT_EQ(way(File("C:\\a"), File("D:\\a")), "");
    EXPECT_EQ(way(File("C:\\a"), FileSpec()), "");
    EXPECT_THROW(way(FileSpec(), File("C:\\a")), FileException);
}

// ---- The folders of the process ----

TEST_F(FileUtilities, TheTempFolderIsOneForAllThreadsAndGoesWithTheLibrary) {
    const fs::path shared = Host("C:\\Windows\\Temp");
    fs::create_directories(shared / "Velmar.tmp");
    std::vector<std::string> paths(8);
    std::vector<std::thread> threads;
    for (std::string& path : paths) {
        threads.emplace_back([&path] { path = Text(GetTempFolder().GetPath()); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(paths, Each(paths.front()));
    EXPECT_EQ(Text(GetTempFolder().GetName()), "Velmar1.tmp");
    EXPECT_TRUE(fs::is_directory(shared / "Velmar1.tmp"));

    fs::remove(shared / "Velmar1.tmp");
    fs::remove(shared / "Velmar.tmp");
    EXPECT_EQ(Text(GetTempFolder().GetName()), "Velmar.tmp");
    std::ofstream(shared / "Velmar.tmp/file") << "x";
    FileSystem_Stop();
    EXPECT_THAT(Listing(shared), IsEmpty());
    FileSystem_Start(nullptr);
    EXPECT_TRUE(GetTempFolder().IsPresent());
    FileSystem_Stop();
}

// Takes the name away between its being found free and its being made a folder.
class RacingApi : public FileSystem_Win32::API {
  public:
    BOOL CreateDirectoryW(const WCHAR* path, SECURITY_ATTRIBUTES* security) override {
        if (rivals-- > 0) {
            API::CreateDirectoryW(path, security);
        }
        return API::CreateDirectoryW(path, security);
    }

    int rivals = 2;
};

TEST_F(FileUtilities, NoOtherProcessHasTheSameTempFolder) {
    RacingApi api;
    FileSystem_Win32::SetApi(&api);
    EXPECT_EQ(Text(GetTempFolder().GetName()), "Velmar2.tmp");
    FileSystem_Win32::SetApi(nullptr);
}

TEST_F(FileUtilities, TheCurrentFolderIsThatOfRelativePaths) {
    const FileSpec before = GetCurrentFolder();
    CreatePath(File("C:\\a\\b"));
    SetCurrentFolder(File("c:\\A"));
    EXPECT_TRUE(GetCurrentFolder().IsEqual(File("C:\\a")));
    EXPECT_TRUE(File("b").IsPresent());
    EXPECT_EQ(FailureOf([] { SetCurrentFolder(File("C:\\none")); }).path, "C:\\none");
    EXPECT_TRUE(GetCurrentFolder().IsEqual(File("C:\\a")));
    SetCurrentFolder(before);
}

TEST_F(FileUtilities, ProgramFilesLieBesideTheProgramOrTheLibrary) {
    EXPECT_EQ(Text(GetApplicationFile().GetName()),
              fs::canonical("/proc/self/exe").filename().string());
    EXPECT_TRUE(GetLibraryFile().IsEqual(GetApplicationFile()));
    EXPECT_TRUE(FindProgramFile(GetApplicationFile().GetName()));
    EXPECT_FALSE(FindProgramFile("no such file"));

    fs::create_directories(Host("C:\\lib"));
    fs::copy_file(BREVIK_TEST_MODULE, Host("C:\\lib\\kit.dll"));
    const HMODULE module = LoadLibraryExW(WIDE("C:\\lib\\kit.dll"), nullptr, 0);
    ASSERT_NE(module, nullptr);
    FileSystem_Stop();
    FileSystem_Start(module);
    EXPECT_EQ(Text(GetLibraryFile().GetPath()), "C:\\lib\\kit.dll");
    Write("C:\\lib\\one", "");
    Write("C:\\lib\\Velmar Works\\two", "");
    Write("C:\\lib\\folder\\file", "");
    EXPECT_TRUE(FindProgramFile("one"));
    EXPECT_TRUE(FindProgramFile("two"));
    EXPECT_FALSE(FindProgramFile("folder"));
    EXPECT_TRUE(FindProgramFile(GetApplicationFile().GetName()));

    EXPECT_EQ(Text(GetSiblingFile("one").GetPath()), "C:\\lib\\one");
    EXPECT_EQ(Text(GetSiblingFolder("folder").GetPath()), "C:\\lib\\folder");
    EXPECT_FALSE(GetSiblingFile("none").IsPresent());
    const Failure failure = FailureOf([] { GetSiblingFile("folder"); });
    EXPECT_EQ(failure.number, Texts::accessDenied.GetId());
    EXPECT_EQ(failure.path, "C:\\lib\\folder");
    EXPECT_EQ(FailureOf([] { GetSiblingFolder("one"); }).number, Texts::accessDenied.GetId());
}

}  // namespace
