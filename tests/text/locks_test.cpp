#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

#include "text/CriticalSection.h"
#include "text/tls_data.h"

namespace {

TEST(VelmarCriticalSection, ExcludesOtherThreadsAndLetsItsHolderInAgain) {
    VelmarCriticalSection lock;
    int counter = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int k = 0; k < 1000; ++k) {
                const VelmarAutoCriticalSection hold(&lock);
                const VelmarAutoCriticalSection again(&lock);
                const VelmarAutoCriticalSection nothing(nullptr);
                ++counter;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counter, 4000);
}

TEST(TlsData, EachThreadHasItsOwnElements) {
    tls_data<unsigned> data(2, 7);
    data[1] = 1;
    data = 2;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 8; ++i) {
        threads.emplace_back([&data, i] {
            EXPECT_EQ(data[0], 7u);
            EXPECT_EQ(data[1], 7u);
            data[1] = i;
            EXPECT_EQ(data[1], i);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(static_cast<unsigned&>(data), 2u);
    EXPECT_EQ(data[1], 1u);
}

TEST(TlsData, IndexBehindTheEndThrowsAndLeavesTheLockFree) {
    tls_data<unsigned> data(1, 0);
    try {
        data[1] = 5;
        FAIL() << "index 1 of 1 was taken";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "tls_data::operator[index] - invalid index");
    }
    // Would wait for ever on a lock left held.
    std::thread([&] { data[0] = 1; }).join();
    EXPECT_EQ(data[0], 0u);
}

TEST(TlsData, SlotsRunOutWithAnErrorAndComeBack) {
    std::vector<std::unique_ptr<tls_data<unsigned>>> slots;
    try {
        for (;;) {
            slots.push_back(std::make_unique<tls_data<unsigned>>(1, 0));
            ASSERT_LT(slots.size(), 100000u);
        }
    } catch (const SystemException::Win32& error) {
        EXPECT_EQ(error.GetCode(), ERROR_NO_SYSTEM_RESOURCES);
    }
    slots.clear();
    tls_data<unsigned> next(1, 3);
    EXPECT_EQ(next[0], 3u);
}

}  // namespace
