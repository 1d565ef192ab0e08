#include "filesystem/FileUtilities.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "filesystem/DateTime.h"
#include "filesystem/FileException.h"
#include "filesystem/FileSystem.h"
#include "filesystem/Private/Windows/API.h"
#include "platform/modules.h"
#include "support/forwarding_file.h"
#include "support/test_machine.h"
#include "text/SystemException.h"
#include "text/Texts.h"

namespace {

namespace fs = std::filesystem;
using namespace FileSystem;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::string Text(const Utf8String& text) {
    return {text.begin(), text.end()};
}

FileSpec File(const std::string& path) {
    return FileSpec(FilePath(path));
}
FolderSpec Folder(const std::string& path) {
    return FolderSpec(FilePath(path));
}

std::vector<std::string> Names(const std::vector<FileSpec>& files) {
    std::vector<std::string> names;
    for (const FileSpec& file : files) {
        names.push_back(Text(file.GetName()));
    }
    return names;
}

class Sink : public TickleImplBase {
  public:
    bool IsCancelled() override { return positions.size() >= cancelAt; }
    void SetMessage(const VelmarText& message) override {
        messages.push_back(Text(message.GetText()));
    }
    void SetProgress(double position) override {
        if (fails) {
            throw std::runtime_error("sink");
        }
        positions.push_back(position);
    }
    void Tickle() override {}

    std::size_t cancelAt = 1'000'000;  // reports
    bool fails = false;
    std::vector<std::string> messages;
    std::vector<double> positions;
};

// The failure of an action: its number and its path, and the system's code beneath it.
struct Failure {
    long number = 0;
    std::string path;
    unsigned long code = 0;
};

Failure FailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const FileException& failure) {
        const auto* inner = dynamic_cast<const SystemException::Win32*>(failure.GetInner());
        return {failure.GetNumber(), Text(failure.GetPath()),
                inner != nullptr ? inner->GetCode() : 0};
    }
    return {};
}

class FileUtilities : public testing::Test {
  protected:
    void SetUp() override {
        FileSystem_Start(nullptr);
        fs::create_directory(Host("D:\\"));
    }

    // Where a path of a drive lies on the host.
    static fs::path Host(std::string path) {
        std::replace(path.begin(), path.end(), '\\', '/');
        std::string drive(1, static_cast<char>(std::tolower(path[0])));
        return TestMachine::Folder() / "drives" / (drive + path.substr(2));
    }

    static void Write(const std::string& path, const std::string& text) {
        fs::create_directories(Host(path).parent_path());
        std::ofstream(Host(path), std::ios::binary) << text;
    }

    static std::string Read(const fs::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    Sink sink;
    Tickler tickler = Tickler(&sink);
};

// ---- Copying a file, on both routes ----

class CopyRoutes : public FileUtilities, public testing::WithParamInterface<bool> {
  protected:
    void Copy() { CopyFile(Source(), File("C:\\source"), tickler); }
    FileSpec Source() const {
        const FileSpec target = File("C:\\target");
        return GetParam() ? ForwardingFile::Make(target) : target;
    }
    static bool IsTargetPresent() { return fs::exists(Host("C:\\target")); }
};

TEST_P(CopyRoutes, CopiesContentsAndTimeAndReports) {
    std::string text(150'000, 'x');
    text[0] = 'a';
    text.back() = 'z';
    Write("C:\\source", text);
    const DateTime time(TimeOfDay(1, 2, 3), Date(4, 5, 2006), TimeZone::GetLocal());
    File("C:\\source").SetModificationTime(time);
    tickler.SetBase(0.5);
    Copy();
    EXPECT_EQ(Read(Host("C:\\target")), text);
    EXPECT_EQ(File("C:\\target").GetModificationTime(), time);
    EXPECT_THAT(sink.messages, ElementsAre("copying C:\\source"));
    ASSERT_GE(sink.positions.size(), 2u);
    EXPECT_EQ(sink.positions.front(), 0.0);
    EXPECT_EQ(sink.positions.back(), 1.0);
    EXPECT_TRUE(std::is_sorted(sink.positions.begin(), sink.positions.end()));
    if (GetParam()) {
        EXPECT_THAT(sink.positions, ElementsAre(0.0, 65536.0 / 150'000, 131072.0 / 150'000, 1.0));
    }
}

TEST_P(CopyRoutes, AnEmptyFileKeepsItsTime) {
    Write("C:\\source", "");
    const DateTime time(TimeOfDay(1, 2, 3), Date(4, 5, 2006), TimeZone::GetLocal());
    File("C:\\source").SetModificationTime(time);
    Copy();
    EXPECT_EQ(fs::file_size(Host("C:\\target")), 0u);
    EXPECT_EQ(File("C:\\target").GetModificationTime(), time);
    EXPECT_THAT(sink.messages, ElementsAre("copying C:\\source"));
}

TEST_P(CopyRoutes, ATargetThatExistsStays) {
    Write("C:\\source", "new");
    Write("C:\\target", "old");
    const Failure failure = FailureOf([this] { Copy(); });
    EXPECT_EQ(failure.number, Texts::fileExists.GetId());
    EXPECT_EQ(Read(Host("C:\\target")), "old");
}

TEST_P(CopyRoutes, AMissingSourceLeavesNoTarget) {
    const Failure failure = FailureOf([this] { Copy(); });
    EXPECT_EQ(failure.number, Texts::fileNotFound.GetId());
    EXPECT_EQ(failure.path, "C:\\source");
    EXPECT_FALSE(IsTargetPresent());
}

TEST_P(CopyRoutes, AStopLeavesNoTarget) {
    Write("C:\\source", std::string(3'000'000, 'x'));
    sink.cancelAt = 2;
    const Failure failure = FailureOf([this] { Copy(); });
    EXPECT_EQ(failure.number, -12);
    EXPECT_EQ(failure.code, 1235u);
    EXPECT_EQ(failure.path, "C:\\source");
    EXPECT_FALSE(IsTargetPresent());
    // Neither file is still held open.
    EXPECT_NO_THROW(File("C:\\source").Delete());
}

TEST_P(CopyRoutes, AFailingSinkIsHeard) {
    Write("C:\\source", "text");
    sink.fails = true;
    EXPECT_THROW(Copy(), std::runtime_error);
    EXPECT_FALSE(IsTargetPresent());
    EXPECT_NO_THROW(File("C:\\source").Delete());
}

TEST_P(CopyRoutes, AHostThatTakesNoMoreIsAFailure) {
    Write("C:\\source", std::string(1'000'000, 'x'));
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = {100'000, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const Failure failure = FailureOf([this] { Copy(); });
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_NE(failure.number, 0);
    // Block by block what was written stays.
    EXPECT_EQ(IsTargetPresent(), GetParam());
    EXPECT_NO_THROW(File("C:\\source").Delete());
    EXPECT_NO_THROW(File("C:\\target").Delete());
}

INSTANTIATE_TEST_SUITE_P(, CopyRoutes, testing::Bool(), [](const auto& parameter) {
    return std::string(parameter.param ? "Blocks" : "Platform");
});

// ---- Trees ----

// A tree of random folders and files below a host folder. Names differ by more than their case.
class RandomTree {
  public:
    RandomTree(unsigned seed, const fs::path& root) : random_(seed) {
        fs::create_directories(root);
        Fill(root, 3);
    }

    unsigned Below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

    // A pattern of letters that occur in names, and of wildcards.
    std::string Pattern() {
        std::string pattern;
        for (unsigned length = 1 + Below(5); pattern.size() < length;) {
            pattern += "abT.?**"[Below(7)];
        }
        return pattern;
    }

  private:
    std::string Name(std::size_t number) {
        static const char* const kParts[] = {"a",        "B", "at", "T",   "b a",
                                             "\xC3\xA9", ".", "-",  ".txt"};
        std::string name = Below(6) == 0 ? "." : "";
        for (unsigned parts = Below(4); parts > 0; --parts) {
            name += kParts[Below(std::size(kParts))];
        }
        return name + std::to_string(number) + (Below(3) == 0 ? ".tXt" : "");
    }

    void Fill(const fs::path& folder, int depth) {
        const std::size_t count = Below(8);
        for (std::size_t number = 0; number < count; ++number) {
            const fs::path entry = folder / Name(number);
            if (depth > 0 && Below(3) == 0) {
                fs::create_directory(entry);
                Fill(entry, depth - 1);
                continue;
            }
            std::ofstream(entry, std::ios::binary)
                << std::string(Below(10) == 0 ? Below(300'000) : Below(50), 'x');
            fs::last_write_time(
                entry, fs::file_time_type::clock::now() - std::chrono::seconds(Below(100'000'000)));
        }
    }

    std::mt19937 random_;
};

// Everything of a tree that a copy keeps, a line an entry.
std::vector<std::string> Listing(const fs::path& root) {
    std::vector<std::string> lines;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        std::string line = entry.path().lexically_relative(root).string();
        if (entry.is_directory()) {
            line += "/";
        } else {
            std::ifstream file(entry.path(), std::ios::binary);
            line += " " + std::to_string(entry.last_write_time().time_since_epoch().count() / 100) +
                    " " + std::string(std::istreambuf_iterator<char>(file), {});
        }
        lines.push_back(line);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

// By a regular expression of its own: a "*" at the end takes at least one byte.
bool Matches(std::string name, const std::string& pattern) {
    std::string expression;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool isLast = i + 1 == pattern.size();
        expression += pattern[i] == '*'   ? (isLast ? ".+" : ".*")
                      : pattern[i] == '?' ? std::string("[^.]")
                      : pattern[i] == '.' ? std::string("\\.")
                                          : std::string(1, pattern[i]);
    }
    return std::regex_match(name, std::regex(expression, std::regex::icase));
}

class Trees : public FileUtilities, public testing::WithParamInterface<unsigned> {};

TEST_P(Trees, CopiesAndMovesKeepEveryEntry) {
    RandomTree tree(GetParam(), Host("C:\\source"));
    const std::vector<std::string> listing = Listing(Host("C:\\source"));
    CopyFolder(File("C:\\copy"), File("C:\\source"), true, tickler);
    EXPECT_EQ(Listing(Host("C:\\copy")), listing);
    EXPECT_EQ(Listing(Host("C:\\source")), listing);

    Move(File("C:\\moved"), File("C:\\copy"), tickler);
    EXPECT_EQ(Listing(Host("C:\\moved")), listing);
    EXPECT_FALSE(fs::exists(Host("C:\\copy")));
    // To another volume a folder cannot be renamed.
    Move(File("D:\\moved"), File("C:\\moved"), tickler);
    EXPECT_EQ(Listing(Host("D:\\moved")), listing);
    EXPECT_FALSE(fs::exists(Host("C:\\moved")));
}

TEST_P(Trees, SizesAndFindsAgreeWithTheHost) {
    const fs::path root = Host("C:\\source");
    RandomTree tree(GetParam(), root);
    std::uint64_t size = 0;
    std::uint64_t ownSize = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        if (entry.is_regular_file()) {
            size += entry.file_size();
            ownSize += entry.path().parent_path() == root ? entry.file_size() : 0;
        }
    }
    EXPECT_EQ(GetFolderSize(Folder("C:\\source"), true), size);
    EXPECT_EQ(GetFolderSize(Folder("C:\\source"), false), ownSize);

    for (int round = 0; round < 20; ++round) {
        const std::string pattern = tree.Pattern();
        std::vector<std::string> deep;
        std::vector<std::string> flat;
        std::vector<std::string> folders;
        for (fs::recursive_directory_iterator entry(root), end; entry != end; ++entry) {
            const std::string name = entry->path().filename().string();
            if (!Matches(name, pattern)) {
                continue;
            }
            if (entry->is_regular_file()) {
                deep.push_back(name);
            } else {
                folders.push_back(name);
                entry.disable_recursion_pending();
            }
        }
        // What lies in a folder that matches is left out above.
        deep.clear();
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
            const std::string name = entry.path().filename().string();
            if (Matches(name, pattern)) {
                if (entry.is_regular_file()) {
                    deep.push_back(name);
                }
                if (entry.path().parent_path() == root) {
                    flat.push_back(name);
                }
            }
        }
        SCOPED_TRACE(pattern);
        const FolderSpec folder = Folder("C:\\source");
        EXPECT_THAT(Names(FindFiles(folder, pattern, true)),
                    testing::UnorderedElementsAreArray(deep));
        EXPECT_THAT(Names(FindFiles(folder, pattern, false)),
                    testing::UnorderedElementsAreArray(flat));
        EXPECT_THAT(Names(FindFolders(folder, pattern, true)),
                    testing::UnorderedElementsAreArray(folders));
    }
}

TEST_P(Trees, RelativePathsAgreeWithTheHost) {
    const fs::path root = Host("C:\\source");
    RandomTree tree(GetParam(), root);
    std::vector<fs::path> paths = {root};
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        paths.push_back(entry.path());
    }
    const auto file = [&root](const fs::path& path) {
        return File("C:\\source").MakeChild(path.lexically_relative(root).string());
    };
    for (int round = 0; round < 50; ++round) {
        const fs::path& target = paths[tree.Below(static_cast<unsigned>(paths.size()))];
        const fs::path& base = paths[tree.Below(static_cast<unsigned>(paths.size()))];
        const std::string way = target.lexically_relative(base).string();
        EXPECT_EQ(Text(MakeRelativePath(file(target), file(base))), way == "." ? way : "./" + way);
    }
}

INSTANTIATE_TEST_SUITE_P(Seed, Trees, testing::Range(1u, 21u));

TEST_F(FileUtilities, CopyFolderTakesShortcutsAsFilesAndLeavesFoldersOut) {
    Write("C:\\source\\file", "1");
    Write("C:\\source\\link.lnk", "2");
    Write("C:\\source\\folder\\file", "3");
    File("C:\\source").SetAttributes(FileAttributes::kHidden);
    CopyFolder(File("C:\\copy"), File("C:\\source"), false, tickler);
    EXPECT_EQ(Listing(Host("C:\\copy")).size(), 2u);
    EXPECT_EQ(File("C:\\copy").GetAttributes(), FileAttributes::kHidden);

    // A target that exists is added to and keeps its attributes.
    Write("C:\\other\\old", "4");
    CopyFolder(File("C:\\other"), File("C:\\source"), true, tickler);
    EXPECT_EQ(Listing(Host("C:\\other")).size(), 5u);
    EXPECT_EQ(File("C:\\other").GetAttributes(), 0u);
    EXPECT_THAT(sink.messages, testing::Contains("copying C:\\source\\folder\\file"));
}

TEST_F(FileUtilities, AFolderIsNotCopiedOrMovedIntoItself) {
    Write("C:\\source\\folder\\file", "1");
    for (const char* target : {"C:\\source\\new", "C:\\SOURCE\\folder\\new\\deep"}) {
        EXPECT_EQ(
            FailureOf([&] { CopyFolder(File(target), File("C:\\source"), true, tickler); }).number,
            Texts::accessDenied.GetId());
        EXPECT_EQ(FailureOf([&] { Move(File(target), File("C:\\source"), tickler); }).number,
                  Texts::accessDenied.GetId());
    }
    EXPECT_EQ(Listing(Host("C:\\source")).size(), 2u);
}

TEST_F(FileUtilities, MoveReportsAndKeepsTheSourceOfAStoppedCopy) {
    Write("C:\\source", "text");
    Move(File("C:\\target"), File("C:\\source"), tickler);
    EXPECT_EQ(Read(Host("C:\\target")), "text");
    EXPECT_THAT(sink.messages, ElementsAre("copying C:\\source"));
    EXPECT_THAT(sink.positions, ElementsAre(0.0, 1.0));

    Write("C:\\folder\\file", std::string(100'000, 'x'));
    sink.cancelAt = 0;
    EXPECT_EQ(FailureOf([&] { Move(File("D:\\folder"), File("C:\\folder"), tickler); }).code,
              1235u);
    EXPECT_EQ(fs::file_size(Host("C:\\folder\\file")), 100'000u);

    EXPECT_EQ(FailureOf([&] { Move(File("C:\\x"), File("C:\\none"), tickler); }).number,
              Texts::fileNotFound.GetId());
    EXPECT_EQ(FailureOf([&] { Move(File("C:\\x"), FileSpec(), tickler); }).number,
              Texts::accessDenied.GetId());
}

// A platform on which moving and copying fail.
class FailingApi : public FileSystem_Win32::API {
  public:
    BOOL MoveFileW(const WCHAR*, const WCHAR*) override {
        SetLastError(ERROR_NOT_SAME_DEVICE);
        return FALSE;
    }
    BOOL CopyFileExW(const WCHAR* from, const WCHAR* to, LPPROGRESS_ROUTINE progress, void* data,
                     BOOL* cancel, DWORD flags) override {
        if (copies) {
            return API::CopyFileExW(from, to, progress, data, cancel, flags);
        }
        SetLastError(ERROR_DISK_FULL);
        return FALSE;
    }
    DWORD GetTempPathW(DWORD, WCHAR*) override {
        SetLastError(ERROR_ACCESS_DENIED);
        return 0;
    }
    DWORD GetCurrentDirectoryW(DWORD, WCHAR*) override {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return 0;
    }

    bool copies = true;
};

TEST_F(FileUtilities, FailuresOfThePlatformBearTheirKindAndPath) {
    FailingApi api;
    FileSystem_Win32::SetApi(&api);
    Write("C:\\source", "text");
    Move(File("C:\\target"), File("C:\\source"), tickler);
    EXPECT_EQ(Read(Host("C:\\target")), "text");
    EXPECT_FALSE(fs::exists(Host("C:\\source")));

    api.copies = false;
    Failure failure = FailureOf([&] { Move(File("C:\\new"), File("C:\\target"), tickler); });
    EXPECT_EQ(failure.number, Texts::volumeFull.GetId());
    EXPECT_EQ(failure.path, "C:\\target");
    EXPECT_TRUE(fs::exists(Host("C:\\target")));

    failure = FailureOf([] { GetTempFolder(); });
    EXPECT_EQ(failure.number, Texts::accessDenied.GetId());
    EXPECT_EQ(failure.path, "");
    EXPECT_EQ(FailureOf([] { GetCurrentFolder(); }).number, Texts::filePathNotFound.GetId());
    FileSystem_Win32::SetApi(nullptr);
}

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
