#include "platform/viewer_window.h"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "brevikctl/trace/trace_socket.h"
#include "support/test_machine.h"

namespace {

using namespace brevik::platform;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;

constexpr char16_t kClass[] = u"Brevik::Test::1.0";
constexpr int kSoon = 10000;  // milliseconds for what is there already, on a machine under load

std::filesystem::path Folder() {
    return TestMachine::RuntimeFolder() / "brevikconfig";
}

LRESULT Send(HWND window, std::string bytes, UINT milliseconds = 50) {
    COPYDATASTRUCT data = {7, static_cast<DWORD>(bytes.size()), bytes.data()};
    DWORD_PTR result = 0;
    return SendMessageTimeoutW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data),
                               SMTO_BLOCK | SMTO_ABORTIFHUNG, milliseconds, &result);
}

std::string Receive(TraceSocket& socket) {
    TraceSocket::Packet packet;
    return socket.Receive(&packet, kSoon) ? packet.bytes : "nothing came";
}

std::string FailureOfBinding() {
    try {
        TraceSocket socket(kClass);
        return "";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

TEST(ViewerWindow, NoneIsFoundWithoutAReceiver) {
    SetLastError(87);
    EXPECT_EQ(FindWindowW(kClass, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_FALSE(std::filesystem::exists(Folder())) << "looking leaves nothing behind";
    const TraceSocket other(u"Brevik::Test::2.0");
    EXPECT_EQ(FindWindowW(kClass, nullptr), nullptr);
}

TEST(ViewerWindow, BlocksArriveWholeAndInOrder) {
    TraceSocket socket(kClass);
    const HWND window = FindWindowW(kClass, nullptr);
    ASSERT_NE(window, nullptr);
    const std::string withNul("\0ab\0\xFF", 5);
    const std::vector<std::string> blocks = {withNul, "x", std::string(1105, 'y'),
                                             std::string(70000, 'z')};
    for (const std::string& block : blocks) {
        EXPECT_EQ(Send(window, block), TRUE);
    }
    for (const std::string& block : blocks) {
        TraceSocket::Packet packet;
        ASSERT_TRUE(socket.Receive(&packet, kSoon));
        EXPECT_EQ(packet.bytes, block);
        EXPECT_EQ(packet.sender, getpid());
    }
    TraceSocket::Packet none;
    EXPECT_FALSE(socket.Receive(&none, 0));
}

TEST(ViewerWindow, AHandleEndsWithItsReceiver) {
    HWND window = nullptr;
    {
        const TraceSocket socket(kClass);
        window = FindWindowW(kClass, nullptr);
    }
    EXPECT_EQ(Send(window, "x"), 0);
    EXPECT_EQ(GetLastError(), 1400u);
    EXPECT_EQ(FindWindowW(kClass, nullptr), nullptr);
    TraceSocket next(kClass);
    EXPECT_EQ(Send(window, "not looked for yet"), 0);
    EXPECT_EQ(Send(FindWindowW(kClass, nullptr), "good"), TRUE);
    EXPECT_EQ(Receive(next), "good");
}

TEST(ViewerWindow, ASenderWaitsForAReceiverThatCatchesUp) {
    TraceSocket socket(kClass);
    const HWND window = FindWindowW(kClass, nullptr);
    const std::string block(1105, 'x');
    constexpr int kBlocks = 2000;  // many times what the queue takes
    std::thread receiver([&socket, &block] {
        for (int i = 0; i < kBlocks; ++i) {
            ASSERT_EQ(Receive(socket), block) << i;
        }
    });
    int sent = 0;
    while (sent < kBlocks && Send(window, block, kSoon) == TRUE) {
        ++sent;
    }
    receiver.join();
    EXPECT_EQ(sent, kBlocks);
}

TEST(TraceSocket, RemovesItsSocketAndStops) {
    {
        const ScopedDescriptor stop(eventfd(0, 0));
        TraceSocket socket(kClass, stop.Get());
        TraceSocket::Packet packet;
        std::thread stopper([&stop] { eventfd_write(stop.Get(), 1); });
        EXPECT_FALSE(socket.Receive(&packet, -1));
        stopper.join();
    }
    for (const auto& entry : std::filesystem::directory_iterator(Folder())) {
        EXPECT_FALSE(entry.is_socket()) << entry.path();
    }
}

TEST(TraceSocket, TakesTurnsBetweenSenders) {
    TraceSocket socket(kClass);
    constexpr int kBlocks = 20;
    const auto sendAll = [](const char* block) {
        const HWND window = FindWindowW(kClass, nullptr);
        int sent = 0;
        while (sent < kBlocks && Send(window, block) == TRUE) {
            ++sent;
        }
        return sent;
    };
    const pid_t child = fork();
    if (child == 0) {
        _exit(sendAll("child"));
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(WEXITSTATUS(status), kBlocks);
    ASSERT_EQ(sendAll("parent"), kBlocks);
    std::vector<std::string> firstHalf;
    for (int i = 0; i < kBlocks; ++i) {
        firstHalf.push_back(Receive(socket));
    }
    EXPECT_THAT(firstHalf, AllOf(Contains("child"), Contains("parent")))
        << "nobody waits for another sender to end";
}

// The first folder of the user that can be trusted is taken, by viewers and by programs.
TEST(TraceSocket, AFolderThatCannotBeTrustedIsPassedOver) {
    const std::filesystem::path home = TestMachine::ScratchFolder() / std::string(150, 'd');
    std::filesystem::create_directory(home);
    const auto spoil = [](int way) {
        std::filesystem::remove_all(TestMachine::RuntimeFolder());
        if (way == 0) {
            return true;
        }
        std::filesystem::create_directory(TestMachine::RuntimeFolder());
        if (way == 1) {
            std::filesystem::create_directory_symlink(TestMachine::ScratchFolder(), Folder());
            return true;
        }
        std::filesystem::create_directory(Folder());
        chmod(Folder().c_str(), way == 2 ? 0710 : 0700);
        return way == 2 || chown(Folder().c_str(), 12345, static_cast<gid_t>(-1)) == 0;
    };
    for (int way = 0; way < 4; ++way) {
        if (!spoil(way)) {
            continue;  // only root can give a folder away
        }
        unsetenv("HOME");
        EXPECT_THAT(FailureOfBinding(),
                    HasSubstr((way == 2 ? "chmod 700 " : "") + Folder().string()))
            << way;
        setenv("HOME", home.c_str(), 1);
        TraceSocket socket(kClass);
        EXPECT_EQ(Send(FindWindowW(kClass, nullptr), "x"), TRUE) << way;
        EXPECT_EQ(Receive(socket), "x") << way;
        chmod((home / ".brevikconfig").c_str(), 0777);
        EXPECT_NE(FindWindowW(kClass, nullptr), nullptr) << "connected already";
        EXPECT_EQ(FindWindowW(u"another", nullptr), nullptr);
        EXPECT_EQ(FindWindowW(kClass, nullptr), nullptr) << "opened to others meanwhile";
        chmod((home / ".brevikconfig").c_str(), 0700);
    }
}

}  // namespace
