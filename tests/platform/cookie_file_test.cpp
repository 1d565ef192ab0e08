// The cookie file on the disk: what stays in it, and how it is replaced.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/posix/base/scoped_descriptor.h"
#include "platform/posix/base/shared_text_file.h"
#include "support/cookie_machine.h"
#include "support/test_machine.h"

namespace {

using namespace std::string_literals;

constexpr const char* kUrl = "http://www.example.test";
constexpr const char* kRow = ".www.example.test\tTRUE\t/\tFALSE\t0\ta\t1\n";

class CookieFileOnDisk : public CookieMachine {};

bool Set(const char* text) {
    return InternetSetCookieA(kUrl, nullptr, text) != FALSE;
}

unsigned Mode(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

TEST_F(CookieFileOnDisk, ANewFileIsTheOwnersAloneAndBearsTheHead) {
    // What a killed writer left.
    std::ofstream(CookieFilePath() + ".new") << "half a li";
    ASSERT_TRUE(Set("a=1"));
    EXPECT_EQ(ReadCookieFile(), std::string("# Netscape HTTP Cookie File\n") + kRow);
    EXPECT_EQ(Mode(CookieFilePath()), 0600u);
    EXPECT_FALSE(std::filesystem::exists(CookieFilePath() + ".new"));
}

TEST_F(CookieFileOnDisk, LinesThatAreNotUnderstoodStayInTheirPlaces) {
    const std::string strange[] = {
        std::string("\xEF\xBB\xBF# Netscape HTTP Cookie File\r\n"),
        "\r\n",
        "#HttpOnly_ broken line\n",
        "example.test\tTRUE\t/\tFALSE\t0\r\n",
        "example.test\tmaybe\t/\tFALSE\t0\tn\tv\n",
        "example.test\tTRUE\t/\tFALSE\t0\tn\tnul\0here\n"s,
        "example.test\tTRUE\t/\tFALSE\t0\tn\tseven\ttabs\n",
        "\tTRUE\t/\tFALSE\t0\tno domain\tv\n",
        "# the last line has no end",
    };
    std::string before;
    for (const std::string& line : strange) {
        before += line;
    }
    WriteCookieFile(before);
    ASSERT_TRUE(Set("a=0"));
    ASSERT_TRUE(Set("a=1"));
    EXPECT_EQ(ReadCookieFile(), before + "\n" + kRow);
    ASSERT_TRUE(Set("a=1;expires=Thu, 1-Jan-1970 00:00:00 GMT"));
    EXPECT_EQ(ReadCookieFile(), before + "\n");
}

TEST_F(CookieFileOnDisk, OtherCookiesStayByteForByte) {
    const std::string other = "Www.Example.Test\tTRUE\t/\tFALSE\t1700000000.5\tb\t2\r\n";
    WriteCookieFile(other + ".www.example.test\tTRUE\t/\tFALSE\t0\ta\told\r\n" + other);
    ASSERT_TRUE(Set("a=1"));
    EXPECT_EQ(ReadCookieFile(), other + other + kRow);
}

TEST_F(CookieFileOnDisk, ALinkStaysAndItsTargetIsReplaced) {
    const std::filesystem::path folder = TestMachine::ScratchFolder() / "elsewhere";
    std::filesystem::create_directories(folder);
    std::filesystem::create_symlink("real.txt", folder / "second");
    std::filesystem::create_symlink(folder / "second", CookieFilePath());
    ASSERT_TRUE(Set("a=0")) << "the target is missing at first";
    ASSERT_TRUE(Set("a=1"));
    EXPECT_TRUE(std::filesystem::is_symlink(CookieFilePath()));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "second"));
    EXPECT_EQ(Mode((folder / "real.txt").string()), 0600u);
    EXPECT_THAT(ReadCookieFile(), testing::EndsWith(kRow));
    EXPECT_EQ(VisibleCookies(kUrl), "a=1");
}

TEST_F(CookieFileOnDisk, WhatCannotBeReadIsNotReplaced) {
    const std::string path = CookieFilePath();
    DWORD size = 0;
    std::filesystem::create_directory(path);
    EXPECT_FALSE(Set("a=1"));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(InternetGetCookieA(kUrl, nullptr, nullptr, &size));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    std::filesystem::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_FALSE(Set("a=1"));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(InternetGetCookieA(kUrl, nullptr, nullptr, &size));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(std::filesystem::is_fifo(path));
    std::filesystem::remove(path);
    std::filesystem::create_symlink("/dev/zero", path);
    EXPECT_FALSE(InternetGetCookieA(kUrl, nullptr, nullptr, &size));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

TEST_F(CookieFileOnDisk, AFileOfAnySizeDoesNotFillTheMemory) {
    constexpr std::uintmax_t kTebibyte = std::uintmax_t{1} << 40;
    for (const std::uintmax_t length : {SharedTextFile::kLongestText + 1, kTebibyte}) {
        WriteCookieFile(kRow);
        std::filesystem::resize_file(CookieFilePath(), length);
        DWORD size = 0;
        EXPECT_FALSE(InternetGetCookieA(kUrl, nullptr, nullptr, &size));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_DATA);
        EXPECT_FALSE(Set("a=2"));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_DATA);
        EXPECT_EQ(std::filesystem::file_size(CookieFilePath()), length);
    }
}

TEST_F(CookieFileOnDisk, AWriterThatKeepsTheLockDoesNotHoldOthers) {
    ASSERT_TRUE(Set("a=1"));
    const ScopedDescriptor held(open((CookieFilePath() + ".lock").c_str(), O_RDWR));
    ASSERT_EQ(flock(held.Get(), LOCK_EX), 0);
    EXPECT_EQ(WriteLock(std::chrono::milliseconds(200)).Take(CookieFilePath()),
              ERROR_SHARING_VIOLATION);
    EXPECT_EQ(VisibleCookies(kUrl), "a=1") << "a reader needs no lock";
    ASSERT_EQ(flock(held.Get(), LOCK_UN), 0);
    EXPECT_TRUE(Set("a=2"));
}

TEST_F(CookieFileOnDisk, AChildForkedDuringAWriteDoesNotKeepTheLock) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    pid_t child = -1;
    const auto fork = [&](std::string*) {
        child = ::fork();
        if (child == 0) {
            // Lives, with all that it inherited, until the test lets go of the other end.
            close(ends[1]);
            char byte;
            _exit(static_cast<int>(read(ends[0], &byte, 1)));
        }
        return DWORD{NO_ERROR};
    };
    EXPECT_EQ(SharedTextFile(CookieFilePath()).Update(fork), NO_ERROR);
    EXPECT_TRUE(Set("a=1"));
    close(ends[1]);
    close(ends[0]);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST_F(CookieFileOnDisk, AWriteThatFailsLeavesTheFileAndNoOther) {
    WriteCookieFile(kRow);
    // The limit is below the file's size: the new file cannot be written to its end.
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small = {20, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_FALSE(Set("b=2"));
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(ReadCookieFile(), kRow);
    EXPECT_FALSE(std::filesystem::exists(CookieFilePath() + ".new"));
}

TEST_F(CookieFileOnDisk, WhatAHostPrintsWithoutItsStandardStreamsGoesNowhere) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "this sanitizer ends a forked process that starts a thread";
#endif
    const pid_t child = fork();
    if (child == 0) {
        close(STDIN_FILENO);
        close(STDOUT_FILENO);
        close(STDERR_FILENO);
        std::thread([] {
            for (int stream = 0;; stream = (stream + 1) % 3) {
                [[maybe_unused]] const ssize_t written = write(stream, "printed\n", 8);
            }
        }).detach();
        bool isStored = true;
        for (int round = 0; round < 50; ++round) {
            isStored = Set(round % 2 == 0 ? "a=0" : "a=1") && isStored;
        }
        _exit(isStored ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(ReadCookieFile(), std::string("# Netscape HTTP Cookie File\n") + kRow);
}

TEST_F(CookieFileOnDisk, AStoreThatChangesNothingWritesNothing) {
    ASSERT_TRUE(Set("a=1"));
    struct stat before;
    struct stat after;
    ASSERT_EQ(stat(CookieFilePath().c_str(), &before), 0);
    ASSERT_TRUE(Set("a=1"));
    ASSERT_TRUE(Set("unknown=1;expires=Thu, 1-Jan-1970 00:00:00 GMT"));
    ASSERT_EQ(stat(CookieFilePath().c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
}

}  // namespace
