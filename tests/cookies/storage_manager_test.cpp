#include "cookies/StorageManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

#include "platform/component_model.h"
#include "support/cookie_machine.h"
#include "trace/UTrace.h"

namespace {

constexpr const char* kDomain = "www.example.test";
constexpr const char* kUrl = "http://www.example.test";
constexpr const char* kCookie = "qdr_cookie";

std::vector<std::string> failureLines;

class StorageManagerTest : public CookieMachine {
  protected:
    void SetUp() override {
        CookieMachine::SetUp();
        UTrace::Initialize();
        UTrace::SetFilter([](int level, const char*, const char* message) {
            if (level == 1) {
                failureLines.push_back(message);
            }
            return true;
        });
        failureLines.clear();
    }
    void TearDown() override { UTrace::Terminate(); }
};

std::int32_t Write(const std::string& name, const std::string& key, const std::string& value,
                   const std::string& domain = kDomain) {
    StorageManager manager;
    EXPECT_EQ(manager.SetDomain(NarrowToUtf8(domain)), 0);
    return manager.SetValue(NarrowToUtf8(name), NarrowToUtf8(key), NarrowToUtf8(value));
}

std::string Read(const std::string& name, const std::string& key,
                 const std::string& domain = kDomain) {
    StorageManager manager;
    EXPECT_EQ(manager.SetDomain(NarrowToUtf8(domain)), 0);
    Utf8String value;
    EXPECT_EQ(manager.GetValue(NarrowToUtf8(name), NarrowToUtf8(key), value), 0);
    return Utf8ToNarrow(value);
}

TEST_F(StorageManagerTest, ValuesComeBackAndAreKeptForHalfAYear) {
    EXPECT_EQ(Read(kCookie, "alpha"), "-1");
    EXPECT_EQ(Write(kCookie, "beta", " a=b, c "), 0);
    EXPECT_EQ(Write(kCookie, "alpha", "\xC3\xA4\xF0\x9F\x8E\xB5"), 0);
    EXPECT_EQ(Write(kCookie, kCookie, "own"), 0);
    EXPECT_EQ(Write(kCookie, "minus", "-1"), 0);
    EXPECT_EQ(Read(kCookie, "beta"), " a=b, c ");
    EXPECT_EQ(Read(kCookie, "alpha"), "\xC3\xA4\xF0\x9F\x8E\xB5");
    EXPECT_EQ(Read(kCookie, kCookie), "own");
    EXPECT_EQ(Read(kCookie, "gamma"), "-1");
    EXPECT_EQ(Read(kCookie, ""), "-1");
    EXPECT_EQ(Read("qdr", "beta"), "-1");
    EXPECT_EQ(Write(kCookie, "beta", "2"), 0);
    EXPECT_EQ(VisibleCookies(kUrl),
              "qdr_cookie=alpha=\xC3\xA4\xF0\x9F\x8E\xB5&beta=2&minus=-1&"
              "qdr_cookie=own");
    ASSERT_EQ(CookieRows().size(), 1u);
    const CookieRow row = CookieRows()[0];
    EXPECT_EQ(row.domain, kDomain);
    // Local time is written, so the zone of the test's host counts.
    EXPECT_NEAR(static_cast<double>(row.expires - std::time(nullptr)), 183 * 86400.0, 14 * 3600.0);
    EXPECT_THAT(failureLines, testing::IsEmpty());
}

TEST_F(StorageManagerTest, WhatWouldNotReadBackIsRefused) {
    WriteCookieFile(
        ".www.example.test\tTRUE\t/\tFALSE\t0\tsecure\tx=1\n"
        ".www.example.test\tTRUE\t/\tFALSE\t0\tqdr_cookie\tk=1\n");
    const struct {
        const char* name;
        const char* key;
        const char* value;
        const char* domain;
    } cases[] = {
        {"qdr_cookie", "", "v", kDomain},
        {"qdr_cookie", "k", "", kDomain},
        {"", "k", "v", kDomain},
        {"qdr_cookie", "k", "a&b", kDomain},
        {"qdr_cookie", "k", "a;b", kDomain},
        {"qdr_cookie", "k", "a\tb", kDomain},
        {"qdr_cookie", "k", "a\x7F", kDomain},
        {"qdr_cookie", "a&b", "v", kDomain},
        {"qdr_cookie", "a;b", "v", kDomain},
        {"qdr_cookie", "a\nb", "v", kDomain},
        {"qdr_cookie", "k=x", "v", kDomain},
        // A read would say -1 for its being missing, too.
        {"qdr_cookie", "k=x", "-1", kDomain},
        {"a&b", "k", "v", kDomain},
        {"a;b", "k", "v", kDomain},
        {"a=b", "k", "v", kDomain},
        {" q", "k", "v", kDomain},
        {"\x01", "k", "v", kDomain},
        {"Path", "k", "v", kDomain},
        {"domain ", "k", "v", kDomain},
        {"secure", "k", "v", kDomain},
        // It would go into the cookie "secure".
        {"cure", "k", "v", kDomain},
        {"qdr_cookie", "k", "v", ""},
        {"qdr_cookie", "k", "v", "www.example.test;path=/x"},
        {"qdr_cookie", "k", "v", "www.example.test "},
        {"qdr_cookie", "k", "v", "www.example.test\n"},
        {"qdr_cookie", "k", "v", "www.example.test/path"},
    };
    const std::string before = ReadCookieFile();
    for (const auto& [name, key, value, domain] : cases) {
        failureLines.clear();
        EXPECT_EQ(Write(name, key, value, domain), 1) << name << ", " << key << ", " << value;
        EXPECT_EQ(ReadCookieFile(), before) << name << ", " << key << ", " << value;
        EXPECT_THAT(failureLines,
                    testing::ElementsAre(testing::StartsWith("cookie value not stored: ")))
            << name << ", " << key << ", " << value;
    }
}

TEST_F(StorageManagerTest, ACookieTooLongToReadOnBarsWriting) {
    WriteCookieFile(".www.example.test\tTRUE\t/\tFALSE\t0\tbig\t" + std::string(33000, 'x') +
                    "\n.www.example.test\tTRUE\t/\tFALSE\t0\tqdr_cookie\tk=1\n");
    const std::string before = ReadCookieFile();
    EXPECT_EQ(Write(kCookie, "k", "2"), 1);
    EXPECT_EQ(ReadCookieFile(), before);
    EXPECT_EQ(Write(kCookie, "k", std::string(33000, 'x'), "other.test"), 1);
    EXPECT_EQ(ReadCookieFile(), before);
    EXPECT_EQ(Write(kCookie, "k", std::string(32000, 'x'), "other.test"), 0);
    EXPECT_EQ(Read(kCookie, "k", "other.test").size(), 32000u);
}

TEST_F(StorageManagerTest, CookiesOfOthersSurviveAWrite) {
    const std::string soon = std::to_string(std::time(nullptr) + 1000);
    const std::string others[] = {
        ".example.test\tTRUE\t/\tFALSE\t0\tflags\tz=1&a=2&z=3&&x\n",
        ".example.test\tTRUE\t/\tFALSE\t0\tbroken\t\xE4=\xFF\n",
        ".example.test\tTRUE\t/\tFALSE\t" + soon + "\tbroken\xFFname\t1\n",
        ".example.test\tTRUE\t/\tFALSE\t0\tempty\t\n",
        ".example.test\tTRUE\t/\tFALSE\t0\tsecure\t1\n",
        ".example.test\tTRUE\t/\tFALSE\t0\tpath\t/\n",
        "www.example.test\tFALSE\t/\tFALSE\t0\thost\t a=b c \n",
        "#HttpOnly_.example.test\tTRUE\t/\tFALSE\t0\tlogin\tsecret\n",
        ".example.test\tTRUE\t/\tTRUE\t0\tsafe\tsecret\n",
        "other.test\tFALSE\t/\tFALSE\t0\tqdr_cookie\tk=1\n",
        ".example.test\tTRUE\t/\tFALSE\t0\tboth\t1\n",
        "www.example.test\tTRUE\t/\tFALSE\t0\tboth\t2\n",
    };
    std::string before;
    for (const std::string& line : others) {
        before += line;
    }
    WriteCookieFile(before);
    ASSERT_EQ(Write("a_first", "k", "1"), 0);
    ASSERT_EQ(Write(kCookie, "k", "1"), 0);
    std::vector<std::string> rows;
    for (const CookieRow& row : CookieRows()) {
        if (row.name != "a_first" && !(row.name == kCookie && row.domain == kDomain)) {
            EXPECT_EQ(row.expires, row.name == "broken\xFFname" ? std::stoll(soon) : 0) << row.name;
            rows.push_back(row.domain + " " + (row.includesSubdomains ? "all" : "host") + " " +
                           row.name + "=" + row.value);
        }
    }
    std::vector<std::string> expected;
    for (const CookieRow& row : CookieFile(before).Rows()) {
        expected.push_back(row.domain + " " + (row.includesSubdomains ? "all" : "host") + " " +
                           row.name + "=" + row.value);
    }
    EXPECT_THAT(rows, testing::UnorderedElementsAreArray(expected));
    EXPECT_EQ(Read(kCookie, "k"), "1");
}

// A parser that lets another program replace the file between the reading and the writing.
class MeddlingParser : public StorageParser {
  public:
    explicit MeddlingParser(std::string file) : file_(std::move(file)) {}
    void Parse(const WCHAR* text, std::uint32_t size) override {
        StorageParser::Parse(text, size);
        WriteCookieFile(file_);
    }

  private:
    std::string file_;
};

TEST_F(StorageManagerTest, AWriteTouchesItsOwnCookieAlone) {
    const std::string soon = std::to_string(std::time(nullptr) + 600);
    const std::string prefix = ".www.example.test\tTRUE\t/\tFALSE\t";
    const std::string mine = prefix + soon + "\tqdr_cookie\tk=1\n";
    WriteCookieFile(prefix + "4000000000\tfar\t1\n" + prefix + soon + "\ttoken\told\n" + mine);
    const std::string others = prefix + soon + "\tfar\t1\n" + prefix + soon + "\ttoken\tnew\n";
    StorageManager manager(std::make_shared<MeddlingParser>(others + mine));
    manager.SetDomain(NarrowToUtf8(kDomain));
    // The same value prolongs its cookie.
    EXPECT_EQ(manager.SetValue(NarrowToUtf8("qdr"), NarrowToUtf8("k"), NarrowToUtf8("1")), 0);
    EXPECT_THAT(ReadCookieFile(), testing::StartsWith(others));
    ASSERT_EQ(CookieRows().size(), 3u);
    EXPECT_GT(CookieRows()[2].expires, std::stoll(soon) + 180 * 86400);
}

TEST_F(StorageManagerTest, WritersOfOneCookieLoseNothing) {
    constexpr int kProcesses = 4;
    constexpr int kThreads = 4;
    constexpr int kWrites = 10;
    const auto key = [](int process, int thread) {
        return std::to_string(process) + "-" + std::to_string(thread);
    };
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; ++process) {
        children.push_back(fork());
        if (children.back() == 0) {
            std::atomic<int> refused = 0;
            std::vector<std::thread> threads;
            for (int thread = 0; thread < kThreads; ++thread) {
                threads.emplace_back([&, thread] {
                    for (int round = 1; round <= kWrites; ++round) {
                        refused += Write(kCookie, key(process, thread), std::to_string(round));
                    }
                });
            }
            for (std::thread& thread : threads) {
                thread.join();
            }
            _exit(refused);
        }
    }
    for (const pid_t child : children) {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    for (int process = 0; process < kProcesses; ++process) {
        for (int thread = 0; thread < kThreads; ++thread) {
            EXPECT_EQ(Read(kCookie, key(process, thread)), std::to_string(kWrites));
        }
    }
}

TEST_F(StorageManagerTest, AStoreThatCannotBeReadIsNotAnEmptyOne) {
    std::filesystem::create_directory(CookieFilePath());
    EXPECT_EQ(Read(kCookie, "k"), "-1");
    EXPECT_EQ(Write(kCookie, "k", "v"), 1);
    EXPECT_THAT(
        failureLines,
        testing::ElementsAre("cookie value not read: reading the cookie store gives error 5",
                             "cookie value not stored: reading the cookie store gives error 5"));
}

TEST_F(StorageManagerTest, AnEmptyKeyHasNoValue) {
    WriteCookieFile(".www.example.test\tTRUE\t/\tFALSE\t0\tqdr_cookie\t=v&k=1\n");
    EXPECT_EQ(Read(kCookie, ""), "-1");
    EXPECT_EQ(Read(kCookie, "k"), "1");
}

TEST_F(StorageManagerTest, AStoreThatRefusesGivesOne) {
    WriteCookieFile("#HttpOnly_.www.example.test\tTRUE\t/\tFALSE\t0\tqdr_cookie\tsecret\n");
    EXPECT_EQ(Write(kCookie, "k", "v"), 1);
    EXPECT_THAT(failureLines, testing::ElementsAre(testing::HasSubstr("error 5")));
    EXPECT_EQ(Read(kCookie, "k"), "-1");
}

// A parser that fails as a component would.
class FailingParser : public StorageParser {
  public:
    void Parse(const WCHAR*, std::uint32_t) override { throw _com_error(E_OUTOFMEMORY); }
};

TEST_F(StorageManagerTest, AComponentFailureBecomesTheResult) {
    ASSERT_EQ(Write(kCookie, "k", "1"), 0);
    const std::string before = ReadCookieFile();
    StorageManager manager(std::make_shared<FailingParser>());
    manager.SetDomain(NarrowToUtf8(kDomain));
    Utf8String value;
    EXPECT_EQ(manager.GetValue(NarrowToUtf8(kCookie), NarrowToUtf8("k"), value), E_OUTOFMEMORY);
    EXPECT_TRUE(value.empty());
    EXPECT_EQ(manager.SetValue(NarrowToUtf8(kCookie), NarrowToUtf8("k"), NarrowToUtf8("2")),
              E_OUTOFMEMORY);
    EXPECT_EQ(ReadCookieFile(), before);
}

TEST_F(StorageManagerTest, ANewObjectHasTheDomainThatWasSetLast) {
    StorageManager early;
    ASSERT_EQ(Write(kCookie, "k", "1"), 0);
    StorageManager late;
    Utf8String value;
    EXPECT_EQ(late.GetValue(NarrowToUtf8(kCookie), NarrowToUtf8("k"), value), 0);
    EXPECT_EQ(Utf8ToNarrow(value), "1");
    ASSERT_EQ(Write(kCookie, "k", "2", "other.test"), 0);
    EXPECT_EQ(late.GetValue(NarrowToUtf8(kCookie), NarrowToUtf8("k"), value), 0);
    EXPECT_EQ(Utf8ToNarrow(value), "1") << "an object keeps the domain that it was made with";
}

}  // namespace
