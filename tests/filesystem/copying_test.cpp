// Copying and moving files and folders.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include "filesystem/dates/DateTime.h"
#include "support/faulty_api.h"
#include "support/file_library.h"
#include "support/forwarding_file.h"
#include "text/Texts.h"

namespace {

namespace fs = std::filesystem;
using namespace FileSystem;
using testing::ElementsAre;

// ---- A file, on both routes ----

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
    EXPECT_EQ(ReadHostFile(Host("C:\\target")), text);
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
    EXPECT_EQ(ReadHostFile(Host("C:\\target")), "old");
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
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = {100'000, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const Failure failure = FailureOf([this] { Copy(); });
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(failure.number, Texts::volumeFull.GetId());
    // Block by block what was written stays.
    EXPECT_EQ(IsTargetPresent(), GetParam());
    EXPECT_NO_THROW(File("C:\\source").Delete());
    EXPECT_NO_THROW(File("C:\\target").Delete());
}

INSTANTIATE_TEST_SUITE_P(, CopyRoutes, testing::Bool(), [](const auto& parameter) {
    return std::string(parameter.param ? "Blocks" : "Platform");
});

// ---- Folders, and moving ----

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
    EXPECT_EQ(ReadHostFile(Host("C:\\target")), "text");
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

TEST_F(FileUtilities, FailuresOfThePlatformBearTheirKindAndPath) {
    FaultyApi api;
    api.Break("MoveFileW", ERROR_NOT_SAME_DEVICE);
    Write("C:\\source", "text");
    Move(File("C:\\target"), File("C:\\source"), tickler);
    EXPECT_EQ(ReadHostFile(Host("C:\\target")), "text");
    EXPECT_FALSE(fs::exists(Host("C:\\source")));

    api.Break("CopyFileExW", ERROR_DISK_FULL);
    Failure failure = FailureOf([&] { Move(File("C:\\new"), File("C:\\target"), tickler); });
    EXPECT_EQ(failure.message, "volume full");
    EXPECT_EQ(failure.path, "C:\\target");
    EXPECT_TRUE(fs::exists(Host("C:\\target")));

    api.Break("GetTempPathW", ERROR_ACCESS_DENIED);
    failure = FailureOf([] { GetTempFolder(); });
    EXPECT_EQ(failure.message, "access denied");
    EXPECT_EQ(failure.path, "");
    api.Break("GetCurrentDirectoryW", ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(MessageOf([] { GetCurrentFolder(); }), "file path not found");
}

}  // namespace
