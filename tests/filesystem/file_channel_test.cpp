#include "filesystem/FileChannel.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <functional>
#include <thread>
#include <vector>

#include "support/faulty_api.h"
#include "support/file_library.h"

namespace {

using namespace FileChannelMode;

class FileChannelTest : public FileLibrary {
  protected:
    void SetUp() override {
        FileLibrary::SetUp();
        WriteHostFile(folder / "file", "0123456789");
        file = Child("file");
    }

    std::string Contents() const { return ReadHostFile(folder / "file"); }

    FileSpec file;
};

std::string Take(const FileChannel& channel, std::uint32_t count) {
    std::string bytes(count, '?');
    std::uint32_t done = 77;
    channel.Read(bytes.data(), count, done);
    bytes.resize(done);
    return bytes;
}

TEST_F(FileChannelTest, RefusedModes) {
    const std::string refused =
        InternalError(".\\Private\\Windows\\FileSystem_FileChannel_Win32", 31);
    for (const std::uint32_t mode : {0u, kCreate, kShareRead | kShareWrite, kRead | kTruncate}) {
        const Failure failure = FailureOf([&] { file.MakeFileChannel(mode); });
        EXPECT_EQ(failure.message, refused) << mode;
        EXPECT_FALSE(failure.isFile);
    }
    EXPECT_EQ(Contents(), "0123456789");
}

TEST_F(FileChannelTest, WhoMayOpenBesideWhom) {
    const struct {
        std::uint32_t first;
        std::uint32_t second;
        bool opens;
    } cases[] = {
        {kRead, kRead, true},
        {kRead, kWrite, false},
        {kWrite, kRead, false},
        {kRead | kShareWrite, kWrite | kShareRead, true},
        {kRead | kShareWrite, kRead, false},
        {kWrite | kShareRead, kRead | kShareWrite, true},
        {kRead | kWrite | kShareRead, kRead, false},
        {kRead | kWrite | kShareRead | kShareWrite, kWrite | kShareRead | kShareWrite, true},
    };
    for (const auto& each : cases) {
        const FileChannel first = file.MakeFileChannel(each.first);
        EXPECT_EQ(MessageOf([&] { file.MakeFileChannel(each.second); }),
                  each.opens ? "" : "access denied")
            << std::hex << each.first << " and " << each.second;
    }
}

TEST_F(FileChannelTest, CreatesKeepsAndCuts) {
    const FileSpec made = Child("new");
    EXPECT_EQ(MessageOf([&] { made.MakeFileChannel(kWrite); }), "file not found");
    made.MakeFileChannel(kWrite | kCreate);
    EXPECT_TRUE(made.IsFile());
    file.MakeFileChannel(kWrite | kCreate);
    EXPECT_EQ(Contents(), "0123456789");
    file.MakeFileChannel(kWrite | kCreate | kTruncate);
    EXPECT_EQ(Contents(), "");
}

TEST_F(FileChannelTest, ReadsWritesAndMoves) {
    const FileChannel channel = file.MakeFileChannel(kRead | kWrite);
    EXPECT_EQ(channel.GetSize(), 10u);
    EXPECT_EQ(Take(channel, 4), "0123");
    EXPECT_EQ(channel.GetPosition(), 4u);
    EXPECT_EQ(Take(channel, 100), "456789");
    EXPECT_EQ(Take(channel, 1), "");
    channel.SetPosition(2);
    channel.Write("ab", 2);
    channel.Write("", 0);
    EXPECT_EQ(Take(channel, 2), "45");
    channel.Flush();
    EXPECT_EQ(Contents(), "01ab456789");
    channel.SetPosition(0x123456789);
    EXPECT_EQ(channel.GetPosition(), 0x123456789u);
    EXPECT_EQ(channel.GetSize(), 10u);
    EXPECT_EQ(Take(channel, 1), "");
    EXPECT_EQ(channel.GetFileSpec(), channel.GetFileSpec());
    EXPECT_EQ(Text(channel.GetFileSpec()->GetPath()), "C:\\work\\file");
}

TEST_F(FileChannelTest, NewSizeKeepsThePosition) {
    const FileChannel channel = file.MakeFileChannel(kRead | kWrite);
    channel.SetPosition(8);
    for (const std::uint64_t size : {3ull, 0ull, 0x100000001ull, 9ull}) {
        channel.SetSize(size);
        EXPECT_EQ(channel.GetSize(), size);
        EXPECT_EQ(channel.GetPosition(), 8u);
    }
}

TEST_F(FileChannelTest, FailedNewSizeLeavesTheLock) {
    FaultyApi api;
    const FileChannel channel = file.MakeFileChannel(kWrite);
    for (int step = 0; step < 3; ++step) {
        api.Break("SetFilePointerEx", 112, step);
        EXPECT_EQ(MessageOf([&] { channel.SetSize(3); }), "volume full") << step;
    }
    api.Break("SetFilePointerEx", 0);
    std::thread([&] { channel.SetSize(4); }).join();
    EXPECT_EQ(channel.GetSize(), 4u);
}

TEST_F(FileChannelTest, WritersOnlyFlush) {
    file.MakeFileChannel(kRead).Flush();
    const FileChannel reader = file.MakeFileChannel(kRead);
    EXPECT_EQ(MessageOf([&] { reader.Write("x", 1); }), "access denied");
    EXPECT_EQ(MessageOf([&] { reader.SetSize(0); }), "access denied");
    EXPECT_EQ(Contents(), "0123456789");
}

TEST_F(FileChannelTest, ClosedAndNullChannels) {
    const FileChannel closed = file.MakeFileChannel(kRead | kWrite);
    const FileChannel copy = closed;
    copy.Close();
    EXPECT_FALSE(closed.IsOpen());
    file.MakeFileChannel(kWrite);

    const FileChannel null;
    EXPECT_TRUE(null.IsNull());
    EXPECT_FALSE(null.IsOpen());
    std::uint32_t done = 0;
    char byte = 0;
    const struct {
        int nullLine;
        std::function<void(const FileChannel&)> operation;
    } cases[] = {
        {60, [](const FileChannel& channel) { channel.GetSize(); }},
        {97, [&](const FileChannel& channel) { channel.Read(&byte, 1, done); }},
        {125, [&](const FileChannel& channel) { channel.Write(&byte, 1); }},
        {0, [](const FileChannel& channel) { channel.Close(); }},
        {0, [](const FileChannel& channel) { channel.Flush(); }},
        {0, [](const FileChannel& channel) { channel.GetPosition(); }},
        {0, [](const FileChannel& channel) { channel.SetPosition(0); }},
        {0, [](const FileChannel& channel) { channel.SetSize(0); }},
    };
    for (const auto& each : cases) {
        const Failure onClosed = FailureOf([&] { each.operation(closed); });
        EXPECT_NE(onClosed.message.find("0x00000006"), std::string::npos) << onClosed.message;
        EXPECT_EQ(onClosed.path, "C:\\work\\file");
        const Failure onNull = FailureOf([&] { each.operation(null); });
        EXPECT_TRUE(onNull.isFile);
        EXPECT_EQ(onNull.path, "");
        if (each.nullLine != 0) {
            EXPECT_EQ(onNull.message, InternalError(".\\Private\\FileChannel", each.nullLine));
        }
    }
    EXPECT_EQ(MessageOf([&] { closed.ReleaseToStream(); }),
              InternalError(".\\Private\\Windows\\FileSystem_FileChannel_Win32", 153));
}

TEST_F(FileChannelTest, FullDisk) {
    constexpr rlim_t kRoom = 4096;
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit limit = {kRoom, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    const FileChannel channel = file.MakeFileChannel(kRead | kWrite);
    const std::vector<char> block(kRoom + 1);
    const Failure failure =
        FailureOf([&] { channel.Write(block.data(), static_cast<std::uint32_t>(block.size())); });
    EXPECT_EQ(MessageOf([&] { channel.SetSize(kRoom + 1); }), "volume full");
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(failure.message, "volume full");
    EXPECT_EQ(failure.path, "C:\\work\\file");
}

TEST_F(FileChannelTest, StreamTakesTheFileOver) {
    const struct {
        std::uint32_t mode;
        bool reads;
        bool writes;
    } cases[] = {{kRead, true, false}, {kWrite, false, true}, {kRead | kWrite, true, true}};
    const std::ptrdiff_t open = OpenFileCount();
    for (const auto& each : cases) {
        std::FILE* stream = nullptr;
        {
            const FileChannel channel = file.MakeFileChannel(each.mode);
            channel.SetPosition(3);
            stream = channel.ReleaseToStream();
            EXPECT_FALSE(channel.IsOpen());
        }
        ASSERT_NE(stream, nullptr);
        EXPECT_EQ(std::ftell(stream), 3);
        EXPECT_EQ(std::fgetc(stream) == '3', each.reads) << each.mode;
        std::fseek(stream, 0, SEEK_SET);
        EXPECT_EQ(std::fputs("x", stream) >= 0 && std::fflush(stream) == 0, each.writes);
        std::fclose(stream);
        EXPECT_EQ(Contents(), each.writes ? "x123456789" : "0123456789");
        WriteHostFile(folder / "file", "0123456789");
    }
    EXPECT_EQ(OpenFileCount(), open);
}

}  // namespace
