#include "platform/debugger.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/errors.h"
#include "support/test_machine.h"

namespace {

// Where the output goes is settled once in a process, so each trial has a child of its own.
pid_t StartChild(const std::string& output, const std::function<void()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        setenv("BREVIK_DEBUG_OUTPUT", output.c_str(), 1);
        body();
        exit(testing::Test::HasFailure() ? 1 : 0);
    }
    return child;
}

void ExpectGoodEnd(pid_t child) {
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

std::filesystem::path OutputFile() {
    return TestMachine::ScratchFolder() / "debug.txt";
}

class DebuggerOutput : public testing::Test {
  protected:
    DebuggerOutput() { std::filesystem::remove(OutputFile()); }
};

std::string Content(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// What the file holds behind a child that does this.
std::string OutputOf(const std::function<void()>& body) {
    ExpectGoodEnd(StartChild(OutputFile(), body));
    return Content(OutputFile());
}

TEST_F(DebuggerOutput, IsClosedWithoutAListener) {
    const auto expectClosed = [] {
        EXPECT_FALSE(IsDebuggerOutputOpen());
        OutputDebugStringA("to nobody\n");
        OutputDebugStringA(nullptr);
    };
    ExpectGoodEnd(StartChild("", expectClosed));
    ExpectGoodEnd(StartChild(TestMachine::ScratchFolder() / "no folder" / "file", expectClosed));
    ExpectGoodEnd(StartChild(TestMachine::ScratchFolder(), expectClosed));
}

TEST_F(DebuggerOutput, AppendsToAFileForItsOwnerAlone) {
    const auto say = [] {
        EXPECT_TRUE(IsDebuggerOutputOpen());
        OutputDebugStringA("one\n");
    };
    ExpectGoodEnd(StartChild(OutputFile(), say));
    ExpectGoodEnd(StartChild(OutputFile(), say));
    EXPECT_EQ(Content(OutputFile()), "one\none\n");
    struct stat status;
    ASSERT_EQ(stat(OutputFile().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(DebuggerOutput, GoesToStandardError) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = StartChild("-", [&] {
        dup2(ends[1], STDERR_FILENO);
        EXPECT_TRUE(IsDebuggerOutputOpen());
        OutputDebugStringA("to the terminal\n");
    });
    close(ends[1]);
    char text[64];
    const ssize_t count = read(ends[0], text, sizeof text);
    close(ends[0]);
    ExpectGoodEnd(child);
    ASSERT_GT(count, 0);
    EXPECT_EQ(std::string_view(text, static_cast<std::size_t>(count)), "to the terminal\n");
}

TEST_F(DebuggerOutput, CollectsALineAndWritesItAtItsEnd) {
    const std::string output = OutputOf([] {
        OutputDebugStringA("client: ");
        OutputDebugStringA("text");
        EXPECT_EQ(Content(OutputFile()), "");
        OutputDebugStringA("\r\n");
        EXPECT_EQ(Content(OutputFile()), "client: text\r\n");
        OutputDebugStringA("second\nthird\nfour");
        EXPECT_EQ(Content(OutputFile()), "client: text\r\nsecond\nthird\n");
        OutputDebugStringA("th\n");
        OutputDebugStringA("");
        OutputDebugStringA("fifth ");
        std::thread([] { OutputDebugStringA("whole line of another thread\n"); }).join();
        OutputDebugStringA("line\n");
    });
    EXPECT_EQ(output,
              "client: text\r\nsecond\nthird\nfourth\nwhole line of another thread\n"
              "fifth line\n");
}

TEST_F(DebuggerOutput, LeavesTheCallersErrorsAlone) {
    OutputOf([] {
        SetLastError(7);
        errno = 8;
        OutputDebugStringA("line\n");
        EXPECT_EQ(errno, 8);
        EXPECT_EQ(GetLastError(), 7u);
    });
}

TEST_F(DebuggerOutput, HasALongLineWhole) {
    const std::string longText(30'000, 'x');
    const std::string output = OutputOf([&] {
        OutputDebugStringA("start ");
        OutputDebugStringA(longText.c_str());
        OutputDebugStringA(" end\n");
    });
    EXPECT_EQ(output, "start " + longText + " end\n");
}

// The threads' first calls come at once, too: one opening serves all.
TEST_F(DebuggerOutput, NeverMixesLinesOfThreadsAndProcesses) {
    constexpr int kProcesses = 2;
    constexpr int kThreads = 4;
    constexpr int kLines = 500;
    const auto speak = [] {
        std::mutex parts;
        std::vector<std::thread> threads;
        for (char name = 'a'; name < 'a' + kThreads; ++name) {
            threads.emplace_back([name, &parts] {
                const std::string text(200, name);
                for (int line = 0; line < kLines; ++line) {
                    const std::lock_guard guard(parts);
                    OutputDebugStringA("client: ");
                    OutputDebugStringA(text.c_str());
                    OutputDebugStringA("\r\n");
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    };
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; ++process) {
        children.push_back(StartChild(OutputFile(), speak));
    }
    for (const pid_t child : children) {
        ExpectGoodEnd(child);
    }
    std::map<std::string, int> lines;
    std::istringstream output(Content(OutputFile()));
    for (std::string line; std::getline(output, line);) {
        ++lines[line];
    }
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(kThreads));
    for (const auto& [line, count] : lines) {
        EXPECT_EQ(count, kProcesses * kLines) << line;
        EXPECT_EQ(line, "client: " + std::string(200, line[8]) + "\r");
    }
}

}  // namespace
