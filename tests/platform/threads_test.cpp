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

TEST(ThreadSlot, StartsNullWhenItsNumberComesBack) {
    int value = 0;
    const DWORD first = TlsAlloc();
    EXPECT_TRUE(TlsSetValue(first, &value));
    EXPECT_TRUE(TlsFree(first));
    const DWORD second = TlsAlloc();
    ASSERT_EQ(second, first) << "the number was not used again, so this shows nothing";
    EXPECT_EQ(TlsGetValue(second), nullptr);
    EXPECT_TRUE(TlsFree(second));
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

TEST(LastError, BelongsToOneThread) {
    SetLastError(5);
    std::thread([] {
        EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
        SetLastError(6);
    }).join();
    EXPECT_EQ(GetLastError(), 5u);
}

}  // namespace
