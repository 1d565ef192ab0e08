#include "platform/viewer_window.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/posix/trace_socket.h"
#include "support/child_process.h"
#include "support/test_machine.h"

namespace {

using namespace brevik::platform;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::SizeIs;

constexpr char16_t kClass[] = u"Brevik::Test::1.0";
constexpr int kSoon = 10000;  // milliseconds for what is there already, on a machine under load
constexpr UINT kBound = 50;

std::filesystem::path Folder() {
    return TestMachine::RuntimeFolder() / "brevikconfig";
}

LRESULT Send(HWND window, std::string bytes, UINT milliseconds = kBound) {
    COPYDATASTRUCT data = {7, static_cast<DWORD>(bytes.size()), bytes.data()};
    DWORD_PTR result = 0;
    return SendMessageTimeoutW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data),
                               SMTO_BLOCK | SMTO_ABORTIFHUNG, milliseconds, &result);
}

std::string Receive(TraceSocket& socket) {
    TraceSocket::Packet packet;
    return socket.Receive(&packet, kSoon) ? packet.bytes : "nothing came";
}

std::string FailureOfBinding(const char16_t* windowClass = kClass) {
    try {
        TraceSocket socket(windowClass);
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
    EXPECT_EQ(FindWindowW(u"Brevik::Test::2.0", u"a title"), nullptr);
}

TEST(ViewerWindow, BlocksArriveWholeAndInOrder) {
    TraceSocket socket(kClass);
    const HWND window = FindWindowW(kClass, nullptr);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(FindWindowW(u"BREVIK::test::1.0", nullptr), window) << "one connection a class";
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

TEST(ViewerWindow, AForkedChildGoesOnSending) {
    TraceSocket socket(kClass);
    const HWND window = FindWindowW(kClass, nullptr);
    const pid_t child = fork();
    if (child == 0) {
        _exit(Send(window, "child") == TRUE && FindWindowW(kClass, nullptr) == window ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    TraceSocket::Packet packet;
    ASSERT_TRUE(socket.Receive(&packet, kSoon));
    EXPECT_EQ(packet.bytes, "child");
    EXPECT_EQ(packet.sender, child);
    EXPECT_EQ(Send(window, "parent"), TRUE);
    EXPECT_EQ(Receive(socket), "parent");
}

TEST(ViewerWindow, ConnectionsAreNotInherited) {
    const std::vector<std::string> count = {"sh", "-c", "ls -l /proc/self/fd | grep -c socket:"};
    const std::string before = RunChild(count).output;
    const TraceSocket socket(kClass);
    ASSERT_NE(FindWindowW(kClass, nullptr), nullptr);
    EXPECT_EQ(RunChild(count).output, before);
}

TEST(ViewerWindow, AHandleEndsWithItsReceiver) {
    HWND window = nullptr;
    {
        const TraceSocket socket(kClass);
        window = FindWindowW(kClass, nullptr);
    }
    EXPECT_EQ(FindWindowW(kClass, nullptr), nullptr);
    TraceSocket next(kClass);
    EXPECT_EQ(Send(window, "x"), 0);
    EXPECT_EQ(GetLastError(), 1400u);
    const HWND found = FindWindowW(kClass, nullptr);
    EXPECT_NE(found, window);
    EXPECT_EQ(Send(window, "stale"), 0);
    EXPECT_EQ(Send(found, "good"), TRUE);
    EXPECT_EQ(Receive(next), "good");
    for (const std::uintptr_t invented : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
        EXPECT_EQ(Send(reinterpret_cast<HWND>(invented), "x"), 0);
        EXPECT_EQ(GetLastError(), 1400u);
    }
}

TEST(ViewerWindow, AReceiverThatIsBehindHoldsNobody) {
    TraceSocket socket(kClass);
    const HWND window = FindWindowW(kClass, nullptr);
    int sent = 0;
    std::chrono::steady_clock::time_point start;
    do {
        start = std::chrono::steady_clock::now();
    } while (Send(window, std::to_string(sent)) == TRUE && ++sent < 100000);
    EXPECT_EQ(GetLastError(), 1460u);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(kBound));
    EXPECT_EQ(Send(window, "x", 100000), 0) << "the next line must not wait again";
    EXPECT_EQ(GetLastError(), 1400u);

    const HWND found = FindWindowW(kClass, nullptr);
    EXPECT_NE(found, nullptr);
    EXPECT_EQ(Send(found, "later"), TRUE);
    std::vector<std::string> received;
    for (int i = 0; i <= sent; ++i) {
        received.push_back(Receive(socket));
    }
    EXPECT_THAT(received, Contains("later"));
    EXPECT_THAT(received, Contains("0"));
    EXPECT_THAT(received, Contains(std::to_string(sent - 1)));
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

TEST(ViewerWindow, ThreadsSendAtOnce) {
    TraceSocket socket(kClass);
    constexpr int kThreads = 8;
    constexpr int kBlocks = 200;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([i] {
            for (int block = 0; block < kBlocks; ++block) {
                const auto digit = static_cast<char>('0' + i);
                EXPECT_EQ(Send(FindWindowW(kClass, nullptr), std::string(500, digit), kSoon), TRUE);
            }
        });
    }
    std::vector<int> counts(kThreads);
    for (int i = 0; i < kThreads * kBlocks; ++i) {
        const std::string block = Receive(socket);
        ASSERT_EQ(block, std::string(500, block[0]));
        ++counts[static_cast<std::size_t>(block[0] - '0')];
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counts, std::vector<int>(kThreads, kBlocks));
}

TEST(ViewerWindow, OnlyABlockCanBeSent) {
    TraceSocket socket(kClass);
    const HWND window = FindWindowW(kClass, nullptr);
    char byte = 'x';
    COPYDATASTRUCT noBytes = {0, 0, &byte};
    COPYDATASTRUCT noBlock = {0, 1, nullptr};
    const auto send = [window](UINT message, COPYDATASTRUCT* data) {
        SetLastError(0);
        const LRESULT sent =
            SendMessageTimeoutW(window, message, 0, reinterpret_cast<LPARAM>(data), 0, 0, nullptr);
        return sent == 0 ? GetLastError() : 0;
    };
    COPYDATASTRUCT good = {0, 1, &byte};
    EXPECT_EQ(send(WM_COPYDATA + 1, &good), 87u);
    EXPECT_EQ(send(WM_COPYDATA, nullptr), 87u);
    EXPECT_EQ(send(WM_COPYDATA, &noBytes), 87u);
    EXPECT_EQ(send(WM_COPYDATA, &noBlock), 87u);
    EXPECT_EQ(send(WM_COPYDATA, &good), 0u);
    EXPECT_EQ(Receive(socket), "x");
}

TEST(TraceSocket, OneReceiverAClass) {
    const TraceSocket socket(kClass);
    EXPECT_THAT(FailureOfBinding(), HasSubstr("already running"));
    EXPECT_EQ(FailureOfBinding(u"Brevik::Test::2.0"), "");
    EXPECT_NE(FindWindowW(kClass, nullptr), nullptr) << "the running one stays";
}

TEST(TraceSocket, RemovesItsSocketAndWakes) {
    {
        TraceSocket socket(kClass);
        TraceSocket::Packet packet;
        std::thread waker([&socket] { socket.Wake(); });
        EXPECT_FALSE(socket.Receive(&packet, -1));
        waker.join();
        EXPECT_FALSE(socket.Receive(&packet, 1)) << "one wake, one end";
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

void ExpectFolderRefused() {
    EXPECT_THAT(FailureOfBinding(), HasSubstr(Folder().string()));
    EXPECT_EQ(FindWindowW(kClass, nullptr), nullptr);
}

TEST(TraceSocket, RefusesAFolderOpenToOthers) {
    std::filesystem::create_directory(Folder());
    chmod(Folder().c_str(), 0710);
    ExpectFolderRefused();
}

TEST(TraceSocket, RefusesALink) {
    const std::filesystem::path elsewhere = TestMachine::ScratchFolder() / "elsewhere";
    std::filesystem::create_directory(elsewhere);
    chmod(elsewhere.c_str(), 0700);
    std::filesystem::create_symlink(elsewhere, Folder());
    ExpectFolderRefused();
}

TEST(TraceSocket, RefusesAFolderOfAnotherUser) {
    std::filesystem::create_directory(Folder());
    chmod(Folder().c_str(), 0700);
    if (chown(Folder().c_str(), 12345, static_cast<gid_t>(-1)) != 0) {
        GTEST_SKIP() << "only root can give a folder away";
    }
    ExpectFolderRefused();
}

TEST(TraceSocket, MakesNoParentFolder) {
    std::filesystem::remove(TestMachine::RuntimeFolder());
    ExpectFolderRefused();
}

TEST(TraceSocket, AFolderOpenedLaterIsNoLongerTrusted) {
    const TraceSocket socket(kClass);
    chmod(Folder().c_str(), 0777);
    EXPECT_EQ(FindWindowW(kClass, nullptr), nullptr);
    chmod(Folder().c_str(), 0700);
    EXPECT_NE(FindWindowW(kClass, nullptr), nullptr);
}

TEST(TraceSocket, AnyFolderAndAnyClassText) {
    std::filesystem::path deep = TestMachine::ScratchFolder();
    for (int i = 0; i < 5; ++i) {
        deep /= std::string(100, 'd');
        std::filesystem::create_directory(deep);
    }
    setenv("XDG_RUNTIME_DIR", deep.c_str(), 1);
    const std::u16string longText(1000, u'\u00E9');
    for (const char16_t* text : {u"", u"..", u"../../up", u"a/b", u"\xD800", longText.c_str()}) {
        TraceSocket socket(text);
        EXPECT_EQ(Send(FindWindowW(text, nullptr), "x"), TRUE);
        EXPECT_EQ(Receive(socket), "x");
    }
    std::vector<std::filesystem::path> locks;
    for (const auto& entry : std::filesystem::directory_iterator(deep / "brevikconfig")) {
        locks.push_back(entry.path());
    }
    EXPECT_THAT(locks, SizeIs(6)) << "a lock for each class, all in the folder, no socket left";
}

}  // namespace
