#include "platform/component_model.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string_view>

extern "C" void brevik_CoTaskMemFree(void* block);

namespace {

using namespace std::string_view_literals;

static_assert(sizeof(VARIANT) == (sizeof(void*) == 8 ? 24 : 16));

TEST(Apartment, CountsEntriesOfOneKind) {
    CoUninitialize();  // one more exit than entries does nothing
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
    // The refused entry does not count: two undo both, and then the kind is free again.
    CoUninitialize();
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
    CoUninitialize();
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    EXPECT_EQ(CoInitialize(nullptr), RPC_E_CHANGED_MODE);
    CoUninitialize();
}

TEST(CountedText, KnowsItsLength) {
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    SysFreeString(nullptr);

    BSTR text = SysAllocStringLen(u"", 0);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringLen(text), 0u);
    EXPECT_EQ(text[0], u'\0');
    SysFreeString(text);

    text = SysAllocStringLen(u"a\0b?", 3);
    EXPECT_EQ(SysStringLen(text), 3u);
    EXPECT_EQ(std::u16string_view(text, 4), u"a\0b\0"sv);
    std::uint32_t prefix = 0;
    std::memcpy(&prefix, reinterpret_cast<const char*>(text) - 4, 4);
    EXPECT_EQ(prefix, 6u);
    SysFreeString(text);

    text = SysAllocStringLen(nullptr, 1000);
    text[999] = u'x';
    EXPECT_EQ(SysStringLen(text), 1000u);
    EXPECT_EQ(text[1000], u'\0');
    SysFreeString(text);
    // Its length in bytes would not fit into the prefix.
    EXPECT_EQ(SysAllocStringLen(nullptr, 0x80000000), nullptr);
}

}  // namespace
