// What a viewer gets.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <optional>

#include "brevikctl/trace/trace_socket.h"
#include "platform/clock.h"
#include "trace/TraceRecord.h"
#include "trace/TraceState.h"
#include "trace/UTrace.h"

namespace {

class TraceViewer : public testing::Test {
  protected:
    void OpenViewer() { socket_ = std::make_unique<TraceSocket>(UTrace::kViewerClass); }

    // The bytes of the next record; nothing when none is there.
    std::optional<std::string> Next(int milliseconds = 1000) {
        TraceSocket::Packet packet;
        return socket_->Receive(&packet, milliseconds) ? std::optional(packet.bytes) : std::nullopt;
    }

    std::unique_ptr<TraceSocket> socket_;
};

std::string Bytes(std::uint32_t value) {
    const char bytes[] = {static_cast<char>(value), static_cast<char>(value >> 8),
                          static_cast<char>(value >> 16), static_cast<char>(value >> 24)};
    return std::string(bytes, 4);
}

// The record as it is told byte for byte, written without the library's structure.
std::string Record(std::uint32_t level, std::uint32_t channel, char tag, const std::string& client,
                   const std::string& text) {
    std::string record = Bytes(static_cast<std::uint32_t>(82 + text.size())) + Bytes(0x55543132) +
                         Bytes(level) + Bytes(channel) + tag;
    record += client + std::string(64 - client.size(), '\0') + text + '\0';
    return record;
}

TEST_F(TraceViewer, GetsEachLineByteForByte) {
    OpenViewer();
    UTrace::Initialize();
    UTrace::SetClientName("BREVIK KIT");
    UTrace::Info("Selected Lang = %d", 1033);
    UTrace::TaggedAs(0x12345678, nullptr, "tagged");
    UTrace::Trace(-2, "%s", "");
    {
        const UTrace::Function scope("F", nullptr);
        UTrace::ErrorAs(std::string(70, 'c').c_str(), "in");
    }
    EXPECT_EQ(Next(), Record(3, 0, 0, "BREVIK KIT", "Selected Lang = 1033"));
    EXPECT_EQ(Next(), Record(3, 0x12345678, 1, "", "tagged"));
    EXPECT_EQ(Next(), Record(0xFFFFFFFE, 0, 0, "BREVIK KIT", ""));
    EXPECT_EQ(Next(), Record(4, 0, 0, "BREVIK KIT", "F - enter"));
    EXPECT_EQ(Next(), Record(1, 0, 0, std::string(63, 'c'), "  in"));
    EXPECT_EQ(Next(), Record(4, 0, 0, "BREVIK KIT", "F - return"));
}

TEST_F(TraceViewer, FilterKeepsLinesFromIt) {
    OpenViewer();
    UTrace::Initialize();
    UTrace::SetFilter([](int level, const char*, const char*) { return level == 1; });
    UTrace::SetFlags(2);  // no debugger output
    UTrace::Info("dropped");
    UTrace::Error("kept");
    EXPECT_EQ(Next(), Record(1, 0, 0, "", "kept"));
}

TEST_F(TraceViewer, OneThatStartsLaterIsNoticedAfterThreeSeconds) {
    UTrace::Initialize();
    UTrace::Info("nobody");
    OpenViewer();
    UTrace::Info("too early to look again");
    EXPECT_EQ(Next(0), std::nullopt);
    UTrace::State().lastLookup -= 3001;
    UTrace::Info("seen");
    EXPECT_EQ(Next(), Record(3, 0, 0, "", "seen"));
}

TEST_F(TraceViewer, OneThatGoesAwayIsForgottenAndFoundAgain) {
    OpenViewer();
    UTrace::Initialize();
    UTrace::Info("one");
    EXPECT_EQ(Next(), Record(3, 0, 0, "", "one"));
    socket_.reset();
    UTrace::Info("lost");
    EXPECT_EQ(UTrace::State().viewerWindow, nullptr);
    OpenViewer();
    UTrace::State().lastLookup -= 3001;
    UTrace::Info("two");
    EXPECT_EQ(Next(), Record(3, 0, 0, "", "two"));
}

TEST_F(TraceViewer, LooksAndSendsLeaveTheLastErrorAlone) {
    UTrace::Initialize();
    UTrace::State().lastLookup -= 3001;
    SetLastError(5);
    UTrace::Info("looks for a viewer");
    EXPECT_EQ(GetLastError(), 5u);
    OpenViewer();
    UTrace::State().lastLookup -= 3001;
    UTrace::Info("finds one");
    socket_.reset();
    UTrace::Info("finds it gone");
    EXPECT_EQ(GetLastError(), 5u);
}

TEST_F(TraceViewer, OneThatWasTooSlowGetsTheNumberOfLostLines) {
    OpenViewer();
    UTrace::Initialize();
    UTrace::SetClientName("KIT");
    for (int round = 0; round < 2; ++round) {
        constexpr std::size_t kLines = 5000;  // far more than the socket holds
        const DWORD start = GetTickCount();
        for (std::size_t i = 0; i < kLines; ++i) {
            UTrace::Info("%s", "flood");
        }
        EXPECT_LT(GetTickCount() - start, 1500u) << "a viewer that has stopped holds nobody";
        std::size_t got = 0;
        while (Next(0)) {
            ++got;
        }
        UTrace::State().lastLoss -= 101;
        UTrace::Info("back");
        EXPECT_EQ(Next(), Record(1, 0x4C4F5354, 1, "KIT",
                                 std::to_string(kLines - got) +
                                     " lines were not sent: the viewer was too slow"));
        EXPECT_EQ(Next(), Record(3, 0, 0, "KIT", "back"));
    }
}

TEST_F(TraceViewer, OneThatIsTooSlowGetsTheNumberAtTheEndOfTheProcess) {
    OpenViewer();
    constexpr std::size_t kLines = 2000;
    int flooded[2];
    int drained[2];
    ASSERT_EQ(pipe(flooded) + pipe(drained), 0);
    const pid_t child = fork();
    if (child == 0) {
        UTrace::Initialize();
        for (std::size_t i = 0; i < kLines; ++i) {
            UTrace::Info("flood");
        }
        close(flooded[1]);
        close(drained[1]);
        char ignored;
        exit(static_cast<int>(read(drained[0], &ignored, 1)));
    }
    close(flooded[1]);
    char ignored;
    ASSERT_EQ(read(flooded[0], &ignored, 1), 0);
    std::size_t got = 0;
    while (Next(0)) {
        ++got;
    }
    close(drained[1]);
    EXPECT_EQ(Next(10000), Record(1, 0x4C4F5354, 1, "",
                                  std::to_string(kLines - got) +
                                      " lines were not sent: the viewer was too slow"));
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
}

}  // namespace
