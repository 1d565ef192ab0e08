#include "platform/threads.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

TEST(ThreadSlot, HoldsAValueForEachThread) {
    const DWORD slot = TlsAlloc();
    ASSERT_NE(slot, TLS_OUT_OF_INDEXES);
    int mine = 0;
    EXPECT_TRUE(TlsSetValue(slot, &mine));
    std::thread([slot] {
        int other = 0;
        SetLastError(7);
        EXPECT_EQ(TlsGetValue(slot), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
        EXPECT_TRUE(TlsSetValue(slot, &other));
        EXPECT_EQ(TlsGetValue(slot), &other);
    }).join();
    EXPECT_EQ(TlsGetValue(slot), &mine);
    EXPECT_TRUE(TlsFree(slot));
}

TEST(ThreadSlot, RunsOutWithAnErrorOfItsOwn) {
    std::vector<DWORD> slots;
    for (DWORD slot = TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = TlsAlloc()) {
        slots.push_back(slot);
    }
    EXPECT_EQ(GetLastError(), ERROR_NO_SYSTEM_RESOURCES);
    EXPECT_GT(slots.size(), 64u);
    for (const DWORD slot : slots) {
        EXPECT_TRUE(TlsFree(slot));
    }
}

}  // namespace
