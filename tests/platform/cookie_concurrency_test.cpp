// Several writers and readers of one cookie file, in threads and in processes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "platform/posix/base/write_lock.h"
#include "support/cookie_machine.h"

namespace {

constexpr const char* kUrl = "http://www.example.test";
constexpr const char* kForeign = "# somebody else's line\nexample.test\tTRUE\t/\tFALSE\t0\tx\ty\n";
constexpr std::size_t kValueLength = 20000;
constexpr int kWriters = 4;
constexpr int kWrites = 25;

class CookieConcurrency : public CookieMachine {};

std::string Name(int writer) {
    return "writer" + std::to_string(writer);
}

// A value that a torn file would show: long, and of one letter.
std::string Value(int round) {
    return std::string(kValueLength, static_cast<char>('a' + round % 26));
}

bool Write(int writer, int round) {
    const std::string text = Name(writer) + "=" + Value(round);
    return InternetSetCookieA(kUrl, nullptr, text.c_str()) != FALSE;
}

// Whether the text is that of a whole file.
bool IsWhole(const std::string& text) {
    if (!text.starts_with(kForeign) || !text.ends_with('\n')) {
        return false;
    }
    for (const CookieRow& row : CookieFile(text).Rows()) {
        if (row.name != "x" && (row.value.size() != kValueLength ||
                                row.value.find_first_not_of(row.value[0]) != std::string::npos)) {
            return false;
        }
    }
    return true;
}

// Runs `work` in a child process, which ends with the exit code 0 when it gives true.
template <typename Work>
pid_t StartChild(Work work) {
    const pid_t id = fork();
    if (id == 0) {
        _exit(work() ? 0 : 1);
    }
    return id;
}

TEST_F(CookieConcurrency, ProcessesLoseNothingAndReadersSeeWholeFiles) {
    WriteCookieFile(kForeign);
    std::vector<pid_t> children;
    for (int writer = 0; writer < kWriters; ++writer) {
        children.push_back(StartChild([writer] {
            bool stored = true;
            for (int round = 0; round < kWrites; ++round) {
                stored = stored && Write(writer, round);
            }
            return stored;
        }));
    }
    int reads = 0;
    int torn = 0;
    for (std::size_t running = children.size(); running > 0; ++reads) {
        torn += IsWhole(ReadCookieFile()) ? 0 : 1;
        int status = 0;
        if (waitpid(-1, &status, WNOHANG) > 0) {
            EXPECT_EQ(status, 0);
            --running;
        }
    }
    EXPECT_EQ(torn, 0) << "of " << reads;
    const std::string cookies = VisibleCookies(kUrl);
    for (int writer = 0; writer < kWriters; ++writer) {
        EXPECT_THAT(cookies, testing::HasSubstr(Name(writer) + "=" + Value(kWrites - 1)));
    }
    EXPECT_THAT(cookies, testing::StartsWith("x=y; "));
}

TEST_F(CookieConcurrency, AKilledWriterLeavesAWholeFileAndNoLock) {
    constexpr int kKills = 20;
    WriteCookieFile(kForeign);
    for (int kill = 0; kill < kKills; ++kill) {
        const pid_t child = StartChild([] {
            for (int round = 0; Write(0, round); ++round) {
            }
            return false;
        });
        // It is in the midst of its writing once the file has changed a few times.
        for (int changes = 0; changes < 1 + kill % 3;) {
            const std::string before = ReadCookieFile();
            while (ReadCookieFile() == before) {
            }
            ++changes;
        }
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer ended by itself";
        ASSERT_TRUE(IsWhole(ReadCookieFile()));
        ASSERT_TRUE(Write(1, kill));
        ASSERT_THAT(VisibleCookies(kUrl), testing::EndsWith(Name(1) + "=" + Value(kill)));
    }
}

TEST_F(CookieConcurrency, WaitingLastsAsLongAsOthersComeToTheirTurns) {
    constexpr std::chrono::milliseconds kPatience{1000};
    constexpr std::chrono::milliseconds kTurn{200};
    const std::string path = CookieFilePath();
    const auto takeATurn = [&](std::atomic<int>* refused) {
        WriteLock lock(kPatience);
        *refused += lock.Take(path) == NO_ERROR ? 0 : 1;
        std::this_thread::sleep_for(kTurn);
    };
    std::vector<pid_t> children;
    for (int child = 0; child < kWriters; ++child) {
        children.push_back(StartChild([&] {
            std::atomic<int> refused = 0;
            std::thread first(takeATurn, &refused);
            takeATurn(&refused);
            first.join();
            return refused == 0;
        }));
    }
    for (const pid_t child : children) {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
}

}  // namespace
