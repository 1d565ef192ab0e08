// The exports under many threads.

#include <brevikconfig.h>
#include <gtest/gtest.h>

#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "every_export.h"
#include "support/debug_output.h"

namespace {

constexpr int kThreads = 20;

void RunTogether(const std::function<void(int)>& work) {
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            work(i);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(Threads, FirstCallsOfAllExportsAtOnceAreRight) {
    DebugOutput output;
    RunTogether([](int) { CallEveryExport(); });
    // The one-time start has ended before any line: none lacks the client name.
    const std::string said = output.Take();
    std::size_t lines = 0;
    for (std::size_t at = 0; at < said.size(); ++lines) {
        EXPECT_EQ(said.compare(at, 12, "BREVIK KIT: "), 0) << said.substr(at, 80);
        at = said.find("\r\n", at) + 2;
    }
    EXPECT_GT(lines, std::size_t{kThreads} * 12);
}

// Each thread works on a domain of its own.
TEST(Threads, DomainsOfOthersAreNeverSeen) {
    RunTogether([](int i) {
        const std::string name = "host" + std::to_string(i) + ".example";
        const std::u16string domain(name.begin(), name.end());
        for (int k = 0; k < 10; ++k) {
            const std::string text = name + "-" + std::to_string(k);
            const std::u16string value(text.begin(), text.end());
            ASSERT_EQ(bvkc_VCM_WriteCookieValue(domain.c_str(), u"c", u"k", value.c_str()), 0);
            bvkc_wchar* read = nullptr;
            ASSERT_EQ(bvkc_VCM_ReadCookieValue(domain.c_str(), u"c", u"k", &read), 0);
            EXPECT_EQ(std::u16string(read), value);
            brevik_CoTaskMemFree(read);
        }
    });
}

}  // namespace
