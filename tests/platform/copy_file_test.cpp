// Copying files.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "platform/posix/text/host_text.h"
#include "platform/posix/time/host_times.h"
#include "support/drive_files.h"
#include "support/open_file_count.h"

namespace {

namespace fs = std::filesystem;

BOOL Copy(const WCHAR* from, const WCHAR* to, LPPROGRESS_ROUTINE progress = nullptr,
          void* data = nullptr) {
    return CopyFileExW(from, to, progress, data, nullptr, COPY_FILE_FAIL_IF_EXISTS);
}

std::string RandomBytes(std::size_t size) {
    std::mt19937_64 random(size);
    std::string bytes(size, '\0');
    for (std::size_t place = 0; place + 8 <= size; place += 8) {
        const std::uint64_t number = random();
        bytes.replace(place, 8, reinterpret_cast<const char*>(&number), 8);
    }
    return bytes;
}

struct Call {
    std::int64_t total;
    std::int64_t done;
    DWORD stream;
    DWORD reason;

    bool operator==(const Call&) const = default;
};

// Notes the calls; the one with the number `cancelAt` cancels.
struct Watch {
    std::vector<Call> calls;
    std::size_t cancelAt = SIZE_MAX;
    HANDLE target = nullptr;

    static DWORD Routine(LARGE_INTEGER total, LARGE_INTEGER done, LARGE_INTEGER streamSize,
                         LARGE_INTEGER streamDone, DWORD stream, DWORD reason, HANDLE source,
                         HANDLE target, void* data) {
        auto& watch = *static_cast<Watch*>(data);
        EXPECT_EQ(total.QuadPart, streamSize.QuadPart);
        EXPECT_EQ(done.QuadPart, streamDone.QuadPart);
        DWORD high = 0;
        EXPECT_EQ(GetFileSize(source, &high), static_cast<DWORD>(total.QuadPart));
        watch.target = target;
        watch.calls.push_back({total.QuadPart, done.QuadPart, stream, reason});
        return watch.calls.size() - 1 == watch.cancelAt ? PROGRESS_CANCEL : PROGRESS_CONTINUE;
    }
};

class Copying : public testing::Test {
  protected:
    void Write(const std::string& name, const std::string& bytes) const {
        WriteHostFile(folder_ / name, bytes);
    }
    std::string Read(const std::string& name) const { return ReadHostFile(folder_ / name); }
    static WIN32_FILE_ATTRIBUTE_DATA Describe(const WCHAR* path) {
        WIN32_FILE_ATTRIBUTE_DATA data = {};
        EXPECT_TRUE(GetFileAttributesExW(path, GetFileExInfoStandard, &data));
        return data;
    }
    static HANDLE Open(const WCHAR* path, DWORD access, DWORD share) {
        return CreateFileW(path, access, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                           nullptr);
    }

    const fs::path folder_ = NewFolder("Copy");
};

TEST_F(Copying, FailsLikeTheSystem) {
    fs::create_directory(folder_ / "Folder");
    Write("Source", "text");
    Write("Target", "old");
    Write("Held", "text");
    const HANDLE held = Open(u"C:\\copy\\held", GENERIC_READ, FILE_SHARE_WRITE);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    const struct {
        const WCHAR* from;
        const WCHAR* to;
        DWORD error;
    } cases[] = {
        {u"C:\\copy\\source", u"C:\\copy\\target", 80},
        {u"C:\\copy\\source", u"C:\\copy\\folder", 80},
        {u"C:\\copy\\source", u"C:\\copy\\SOURCE", 80},
        {u"C:\\copy\\held", u"C:\\copy\\new", 32},
        {u"C:\\copy\\missing", u"C:\\copy\\new", 2},
        {u"C:\\copy\\folder", u"C:\\copy\\new", 5},
        {u"C:\\copy\\source", u"C:\\missing\\new", 3},
    };
    for (const auto& row : cases) {
        Watch watch;
        SetLastError(0);
        EXPECT_FALSE(Copy(row.from, row.to, Watch::Routine, &watch));
        EXPECT_EQ(GetLastError(), row.error)
            << Utf8FromWide(row.from) << " to " << Utf8FromWide(row.to);
        EXPECT_TRUE(watch.calls.empty());
    }
    CloseHandle(held);
    EXPECT_EQ(Read("Source"), "text");
    EXPECT_EQ(Read("Target"), "old");
    EXPECT_FALSE(fs::exists(folder_ / "New"));
}

TEST_F(Copying, KeepsTheContentsAndTellsItsProgress) {
    constexpr std::size_t kMegabyte = 1 << 20;
    const auto before = OpenFileCount();
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, 4 * kMegabyte, 9 * kMegabyte + 5}) {
        const std::string bytes = RandomBytes(size);
        Write("Source", bytes);
        Watch watch;
        fs::remove(folder_ / "Target");
        ASSERT_TRUE(Copy(u"C:\\copy\\SOURCE", u"C:\\copy\\Target", Watch::Routine, &watch))
            << GetLastError();
        EXPECT_TRUE(Read("Target") == bytes) << size;
        const auto total = static_cast<std::int64_t>(size);
        ASSERT_FALSE(watch.calls.empty());
        EXPECT_EQ(watch.calls.front(), (Call{total, 0, 1, CALLBACK_STREAM_SWITCH}));
        EXPECT_EQ(watch.calls.size() == 1, size == 0);
        for (std::size_t number = 1; number < watch.calls.size(); ++number) {
            const Call& call = watch.calls[number];
            EXPECT_EQ(call.reason, CALLBACK_CHUNK_FINISHED);
            EXPECT_EQ(call.stream, 1u);
            EXPECT_GT(call.done, watch.calls[number - 1].done);
        }
        EXPECT_EQ(watch.calls.back().done, total);
    }
    EXPECT_EQ(OpenFileCount(), before);
}

TEST_F(Copying, IsCancelledAtEveryCall) {
    Write("Source", RandomBytes(9 << 20));
    Watch whole;
    ASSERT_TRUE(Copy(u"C:\\copy\\source", u"C:\\copy\\whole", Watch::Routine, &whole));
    for (std::size_t number = 0; number < whole.calls.size(); ++number) {
        Watch watch;
        watch.cancelAt = number;
        SetLastError(0);
        EXPECT_FALSE(Copy(u"C:\\copy\\source", u"C:\\copy\\target", Watch::Routine, &watch));
        EXPECT_EQ(GetLastError(), 1235u);
        EXPECT_EQ(watch.calls.size(), number + 1);
        EXPECT_FALSE(fs::exists(folder_ / "target")) << number;
    }
}

TEST_F(Copying, KeepsAttributesAndTheTimeOfLastWrite) {
    const std::pair<DWORD, DWORD> attributes[] = {
        {0x80, 0x20}, {0x20, 0x20}, {0x27, 0x27}, {0x02, 0x22}, {0x01, 0x21}};
    const FILETIME old = FileTimeFromHost({1'000'000'000, 123'456'700});
    for (const auto& [before, after] : attributes) {
        Write("Source", "text");
        const HANDLE file = Open(u"C:\\copy\\source", GENERIC_WRITE, 0);
        ASSERT_TRUE(SetFileTime(file, &old, nullptr, &old));
        CloseHandle(file);
        ASSERT_TRUE(SetFileAttributesW(u"C:\\copy\\source", before));
        ASSERT_TRUE(Copy(u"C:\\copy\\source", u"C:\\copy\\copy"));
        const WIN32_FILE_ATTRIBUTE_DATA copy = Describe(u"C:\\copy\\copy");
        EXPECT_EQ(copy.dwFileAttributes, after) << before;
        EXPECT_EQ(CountOf(copy.ftLastWriteTime), CountOf(old));
        EXPECT_GT(CountOf(copy.ftCreationTime), CountOf(old));
        for (const WCHAR* name : {u"C:\\copy\\source", u"C:\\copy\\copy"}) {
            ASSERT_TRUE(SetFileAttributesW(name, FILE_ATTRIBUTE_NORMAL));
            ASSERT_TRUE(DeleteFileW(name));
        }
    }
}

TEST_F(Copying, KeepsItsTargetToItself) {
    Write("Source", "text");
    const auto tryBoth = [](LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER, DWORD,
                            DWORD, HANDLE, HANDLE, void*) -> DWORD {
        const DWORD all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        EXPECT_EQ(Open(u"C:\\copy\\target", GENERIC_READ, all), INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), 32u);
        EXPECT_EQ(Open(u"C:\\copy\\source", GENERIC_WRITE, all), INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), 32u);
        const HANDLE reader = Open(u"C:\\copy\\source", GENERIC_READ, FILE_SHARE_READ);
        EXPECT_NE(reader, INVALID_HANDLE_VALUE);
        CloseHandle(reader);
        return PROGRESS_CONTINUE;
    };
    ASSERT_TRUE(Copy(u"C:\\copy\\source", u"C:\\copy\\target", tryBoth, nullptr));
    const HANDLE after = Open(u"C:\\copy\\target", GENERIC_WRITE, 0);
    EXPECT_NE(after, INVALID_HANDLE_VALUE);
    CloseHandle(after);
}

TEST_F(Copying, GivesNobodyMoreRightsThanTheSource) {
    const std::pair<mode_t, mode_t> modes[] = {{0600, 0600}, {0644, 0644}, {0755, 0755},
                                               {0710, 0710}, {0666, 0644}, {04755, 0755}};
    const mode_t mask = umask(022);
    for (const auto& [before, after] : modes) {
        Write("Source", "text");
        ASSERT_EQ(chmod((folder_ / "Source").c_str(), before), 0);
        ASSERT_TRUE(Copy(u"C:\\copy\\source", u"C:\\copy\\copy"));
        struct stat status;
        ASSERT_EQ(stat((folder_ / "copy").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, after) << std::oct << before;
        fs::remove(folder_ / "copy");
    }
    umask(mask);
}

TEST_F(Copying, LeavesHolesOut) {
    constexpr std::size_t kHole = 8 << 20;
    const std::string bytes = RandomBytes(1 << 20);
    {
        std::ofstream file(folder_ / "Source", std::ios::binary);
        file << bytes;
        file.seekp(kHole) << bytes;
    }
    fs::resize_file(folder_ / "Source", 2 * kHole);
    Watch watch;
    ASSERT_TRUE(Copy(u"C:\\copy\\source", u"C:\\copy\\copy", Watch::Routine, &watch));
    EXPECT_EQ(watch.calls.back().done, static_cast<std::int64_t>(2 * kHole));
    EXPECT_TRUE(Read("copy") == Read("Source"));
    struct stat source;
    struct stat copy;
    ASSERT_EQ(stat((folder_ / "Source").c_str(), &source), 0);
    ASSERT_EQ(stat((folder_ / "copy").c_str(), &copy), 0);
    if (source.st_blocks * 512 < source.st_size) {
        EXPECT_LT(copy.st_blocks * 512, copy.st_size / 4);
    }
}

// A file in memory is on no file system that the host could copy from by itself.
TEST_F(Copying, GoesBlockByBlockWhereItMust) {
    const int memory = memfd_create("source", MFD_CLOEXEC);
    ASSERT_GE(memory, 0);
    const std::string bytes = RandomBytes((5 << 20) + 3);
    ASSERT_EQ(write(memory, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    const std::u16string source = u"Z:\\proc\\self\\fd\\" + WideFromUtf8(std::to_string(memory));
    Watch watch;
    ASSERT_TRUE(Copy(source.c_str(), u"C:\\copy\\copy", Watch::Routine, &watch)) << GetLastError();
    EXPECT_TRUE(Read("copy") == bytes);
    EXPECT_EQ(watch.calls.back().done, static_cast<std::int64_t>(bytes.size()));
    close(memory);
}

TEST_F(Copying, LeavesNoTargetWhereThereIsNoRoom) {
    Write("Source", RandomBytes(2 << 20));
    rlimit limit;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small = {1 << 20, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    SetLastError(0);
    EXPECT_FALSE(Copy(u"C:\\copy\\source", u"C:\\copy\\copy"));
    EXPECT_EQ(GetLastError(), 112u);
    EXPECT_FALSE(fs::exists(folder_ / "copy"));
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

}  // namespace
