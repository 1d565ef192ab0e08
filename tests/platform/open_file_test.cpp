// Opening files, and reading, writing and moving in them.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "platform/files.h"
#include "platform/handles.h"
#include "platform/posix/text/host_text.h"
#include "support/drive_files.h"

namespace {

namespace fs = std::filesystem;

constexpr DWORD kBoth = GENERIC_READ | GENERIC_WRITE;

class Opening : public testing::Test {
  protected:
    void SetUp() override {
        folder_ = NewFolder("Open");
        WriteHostFile(folder_ / "File.txt");
        WriteHostFile(folder_ / "read-only");
        fs::permissions(folder_ / "read-only", fs::perms::owner_read);
        fs::create_directory(folder_ / "Folder");
        fs::create_symlink("nowhere", folder_ / "dangling");
        mkfifo((folder_ / "pipe").c_str(), 0666);
    }

    fs::path folder_;
};

TEST_F(Opening, AnswersAsTheSystemDoes) {
    const std::u16string longName(256, u'n');
    const std::u16string wideName(100, u'\u4E2D');  // 300 bytes on the host
    const struct {
        std::u16string path;
        DWORD access;
        DWORD disposition;
        DWORD flags;
        DWORD error;
    } cases[] = {
        {u"C:\\open\\missing", GENERIC_READ, OPEN_EXISTING, 0, 2},
        {u"C:\\open\\File.txt\\", GENERIC_READ, OPEN_EXISTING, 0, 123},
        {u"C:\\open\\new\\", GENERIC_WRITE, CREATE_NEW, 0, 123},
        {u"C:\\open\\Folder", GENERIC_READ, OPEN_EXISTING, 0, 5},
        {u"C:\\open\\Folder", 0, OPEN_EXISTING, 0, 5},
        {u"C:\\open\\Folder", GENERIC_WRITE, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, 0},
        {u"C:\\open\\Folder\\", 0, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, 0},
        {u"C:\\", GENERIC_READ, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, 0},
        {u"C:\\open\\Folder", GENERIC_READ, CREATE_NEW, 0, 80},
        {u"C:\\open\\file.TXT", GENERIC_READ, CREATE_NEW, 0, 80},
        {u"C:\\open\\created", 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, 0},
        {u"C:\\open\\file.txt", GENERIC_READ, OPEN_ALWAYS, 0, 0},
        {u"C:\\open\\opened", GENERIC_READ, OPEN_ALWAYS, 0, 0},
        {u"C:\\open\\missing\\file", GENERIC_WRITE, CREATE_NEW, 0, 3},
        {u"C:\\open\\read-only", GENERIC_WRITE, OPEN_EXISTING, 0, 5},
        {u"C:\\open\\read-only", kBoth, OPEN_ALWAYS, 0, 5},
        {u"C:\\open\\read-only", GENERIC_READ, OPEN_EXISTING, 0, 0},
        {u"C:\\open\\read-only", 0, OPEN_EXISTING, 0, 0},
        {u"C:\\open\\read-only", DELETE, OPEN_EXISTING, 0, 0},
        {u"C:\\open\\" + longName, GENERIC_WRITE, CREATE_NEW, 0, 123},
        {u"C:\\open\\" + wideName, GENERIC_WRITE, CREATE_NEW, 0, 123},
        {u"\\\\?\\C:\\open\\File.txt.", GENERIC_READ, OPEN_EXISTING, 0, 2},
        {u"\\\\?\\C:\\open\\dot.", GENERIC_WRITE, CREATE_NEW, 0, 0},
        {u"\\\\?\\C:\\open\\blank ", GENERIC_WRITE, CREATE_NEW, 0, 0},
        {u"C:\\open\\dangling", GENERIC_READ, OPEN_EXISTING, 0, 2},
        {u"C:\\open\\dangling", GENERIC_WRITE, CREATE_NEW, 0, 80},
        // Opening either would wait for somebody at the other end.
        {u"C:\\open\\pipe", GENERIC_READ, OPEN_EXISTING, 0, 5},
        {u"C:\\open\\pipe", GENERIC_WRITE, OPEN_ALWAYS, 0, 5},
        {u"Z:\\dev\\null", kBoth, OPEN_EXISTING, 0, 0},
        {u"Z:\\dev\\zero", GENERIC_READ, OPEN_EXISTING, 0, 5},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(Utf8FromWide(row.path) + " " + std::to_string(row.disposition));
        const OpenedFile file(row.path, row.access, FILE_SHARE_READ, row.disposition, row.flags);
        EXPECT_EQ(file.IsOpen(), row.error == 0);
        EXPECT_TRUE(file.IsOpen() || file.Error() == row.error) << file.Error();
    }
    for (const char* made : {"created", "opened", "dot.", "blank "}) {
        EXPECT_TRUE(fs::is_regular_file(folder_ / made)) << made;
    }
    EXPECT_EQ(ReadHostFile(folder_ / "File.txt"), "text");
    EXPECT_FALSE(fs::exists(folder_ / "nowhere"));
}

TEST_F(Opening, SharesTheNullDeviceWithEverybody) {
    const OpenedFile first(u"Z:\\dev\\null", kBoth);
    const OpenedFile second(u"Z:\\dev\\null", kBoth);
    ASSERT_TRUE(first.IsOpen() && second.IsOpen());
    DWORD count = 0;
    EXPECT_TRUE(WriteFile(second.Get(), "gone", 4, &count, nullptr));
    EXPECT_EQ(count, 4u);
    EXPECT_TRUE(FlushFileBuffers(second.Get()));
}

// Its contents are not touched by a handle without rights to them, whatever the host allows.
TEST(FileHandles, DoWhatTheyWereOpenedFor) {
    const fs::path host = NewFolder("Handles") / "file";
    const std::u16string path = u"C:\\Handles\\file";
    WriteHostFile(host, std::string(101, 'x'));
    char buffer[8] = {};
    DWORD count = 77;
    {
        const OpenedFile status(path, 0);
        DWORD high = 7;
        EXPECT_EQ(GetFileSize(status.Get(), &high), 101u);
        EXPECT_EQ(high, 0u);
        EXPECT_EQ(ErrorOf(ReadFile(status.Get(), buffer, 8, &count, nullptr)), 5u);
        EXPECT_EQ(count, 0u);
        EXPECT_EQ(ErrorOf(SetEndOfFile(status.Get())), 5u);
    }
    {
        const OpenedFile reader(path, GENERIC_READ);
        EXPECT_EQ(ErrorOf(WriteFile(reader.Get(), "y", 1, &count, nullptr)), 5u);
        EXPECT_EQ(ErrorOf(SetEndOfFile(reader.Get())), 5u);
        EXPECT_EQ(ErrorOf(FlushFileBuffers(reader.Get())), 5u);
        const FILETIME time = {1, 1};
        EXPECT_EQ(ErrorOf(SetFileTime(reader.Get(), nullptr, nullptr, &time)), 5u);
    }
    {
        const OpenedFile writer(path, GENERIC_WRITE);
        EXPECT_EQ(ErrorOf(ReadFile(writer.Get(), buffer, 8, &count, nullptr)), 5u);
        EXPECT_TRUE(FlushFileBuffers(writer.Get()));
    }
    for (HANDLE none : {HANDLE(nullptr), INVALID_HANDLE_VALUE}) {
        EXPECT_EQ(ErrorOf(ReadFile(none, buffer, 8, &count, nullptr)), 6u);
        EXPECT_EQ(ErrorOf(CloseHandle(none)), 6u);
        EXPECT_EQ(SetFilePointer(none, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
        EXPECT_EQ(GetLastError(), 6u);
    }
    EXPECT_EQ(ReadHostFile(host), std::string(101, 'x'));
}

// The size of the file, in both halves.
std::uint64_t SizeOf(const OpenedFile& file) {
    DWORD high = 0;
    const DWORD low = GetFileSize(file.Get(), &high);
    EXPECT_EQ(GetLastError(), 0u);
    return std::uint64_t{high} << 32 | low;
}

TEST(FileHandles, KeepAPosition) {
    const fs::path host = NewFolder("Handles") / "file";
    const OpenedFile file(u"C:\\Handles\\file", kBoth, 0, CREATE_NEW);
    ASSERT_TRUE(file.IsOpen());
    char buffer[8] = {};
    DWORD count = 0;

    EXPECT_EQ(SetFilePointer(file.Get(), 100, nullptr, FILE_BEGIN), 100u);
    EXPECT_TRUE(ReadFile(file.Get(), buffer, 8, &count, nullptr));
    EXPECT_EQ(count, 0u);
    EXPECT_TRUE(WriteFile(file.Get(), "x", 1, &count, nullptr));
    EXPECT_EQ(SizeOf(file), 101u);
    EXPECT_EQ(SetFilePointer(file.Get(), -3, nullptr, FILE_CURRENT), 98u);
    EXPECT_TRUE(ReadFile(file.Get(), buffer, 8, &count, nullptr));
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(std::string(buffer, 3), std::string("\0\0x", 3));

    SetLastError(777);
    EXPECT_EQ(SetFilePointer(file.Get(), 0, nullptr, FILE_CURRENT), 101u);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(SetFilePointer(file.Get(), -1, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), 131u);
    EXPECT_EQ(SetFilePointer(file.Get(), 0, nullptr, FILE_CURRENT), 101u);

    // Beyond 32 bits: a low half that looks like a failure is none.
    LONG high = 1;
    EXPECT_EQ(SetFilePointer(file.Get(), -1, &high, FILE_BEGIN), 0xFFFFFFFFu);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(high, 1);
    EXPECT_TRUE(SetEndOfFile(file.Get()));
    EXPECT_EQ(SizeOf(file), 0x1FFFFFFFFu);
    EXPECT_EQ(fs::file_size(host), 0x1FFFFFFFFu);

    EXPECT_EQ(SetFilePointer(file.Get(), 2, nullptr, FILE_BEGIN), 2u);
    EXPECT_TRUE(SetEndOfFile(file.Get()));
    EXPECT_EQ(fs::file_size(host), 2u);
}

TEST(FileHandles, TellOfAFullDisk) {
    const fs::path host = NewFolder("Full") / "file";
    const OpenedFile file(u"C:\\Full\\file", kBoth, 0, CREATE_NEW);
    ASSERT_TRUE(file.IsOpen());
    LONG high = 0x100000;  // 4 EiB
    EXPECT_EQ(SetFilePointer(file.Get(), 0, &high, FILE_BEGIN), 0u);
    EXPECT_EQ(ErrorOf(SetEndOfFile(file.Get())), 112u);

    // Beyond this limit the host sends a signal as well, which must not end the process.
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit limit = {1000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    const std::string block(600, 'x');
    DWORD count = 0;
    EXPECT_EQ(SetFilePointer(file.Get(), 0, nullptr, FILE_BEGIN), 0u);
    EXPECT_TRUE(WriteFile(file.Get(), block.data(), 600, &count, nullptr));
    EXPECT_EQ(ErrorOf(WriteFile(file.Get(), block.data(), 600, &count, nullptr)), 112u);
    EXPECT_EQ(count, 400u);
    EXPECT_EQ(fs::file_size(host), 1000u);
    EXPECT_EQ(SetFilePointer(file.Get(), 1001, nullptr, FILE_BEGIN), 1001u);
    EXPECT_EQ(ErrorOf(SetEndOfFile(file.Get())), 112u);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
}

TEST(FileHandles, GiveThreadsOneBlockAfterTheOther) {
    const fs::path host = NewFolder("Threads") / "file";
    constexpr DWORD kBlock = 1000;
    constexpr int kBlocks = 200;
    const OpenedFile file(u"C:\\Threads\\file", kBoth, 0, CREATE_NEW);
    const auto inThreads = [](auto work) {
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back(work, static_cast<char>('a' + thread));
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    };
    inThreads([&](char letter) {
        const std::string block(kBlock, letter);
        for (int i = 0; i < kBlocks; ++i) {
            DWORD count = 0;
            EXPECT_TRUE(WriteFile(file.Get(), block.data(), kBlock, &count, nullptr));
        }
    });
    EXPECT_EQ(fs::file_size(host), std::uintmax_t{4} * kBlocks * kBlock);
    EXPECT_EQ(SetFilePointer(file.Get(), 0, nullptr, FILE_BEGIN), 0u);
    std::atomic<int> read[4] = {};
    inThreads([&](char) {
        std::string block(kBlock, '?');
        DWORD count = kBlock;
        while (ReadFile(file.Get(), block.data(), kBlock, &count, nullptr) && count == kBlock) {
            ASSERT_EQ(block, std::string(kBlock, block[0]));
            ++read[block[0] - 'a'];
        }
        EXPECT_EQ(count, 0u);
    });
    for (const std::atomic<int>& count : read) {
        EXPECT_EQ(count, kBlocks);
    }
}

TEST(Streams, ContinueWhereTheHandleWas) {
    NewFolder("Streams");
    const std::u16string path = u"C:\\Streams\\file";
    HANDLE handle =
        CreateFileW(path.c_str(), kBoth, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD count = 0;
    ASSERT_TRUE(WriteFile(handle, "0123456789", 10, &count, nullptr));
    SetFilePointer(handle, 4, nullptr, FILE_BEGIN);

    const int descriptor = _open_osfhandle(reinterpret_cast<std::intptr_t>(handle), 0);
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(ErrorOf(CloseHandle(handle)), 6u);
    std::FILE* stream = _fdopen(descriptor, "rb+");
    ASSERT_NE(stream, nullptr);
    char buffer[3] = {};
    EXPECT_EQ(std::fread(buffer, 1, 2, stream), 2u);
    EXPECT_STREQ(buffer, "45");
    EXPECT_EQ(std::fseek(stream, 0, SEEK_END), 0);
    EXPECT_EQ(std::fputs("!", stream), 1);
    EXPECT_EQ(std::fclose(stream), 0);
    EXPECT_EQ(ReadHostFile(DriveC() / "Streams/file"), "0123456789!");
    EXPECT_TRUE(OpenedFile(path, kBoth).IsOpen());

    const OpenedFile status(path, 0);
    for (HANDLE none : {HANDLE(nullptr), handle, status.Get()}) {
        errno = 0;
        EXPECT_EQ(_open_osfhandle(reinterpret_cast<std::intptr_t>(none), 0), -1);
        EXPECT_EQ(errno, EBADF);
    }
}

}  // namespace
