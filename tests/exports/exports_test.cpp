// The twelve functions as a host sees them, on one thread.

#include <brevikconfig.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>

#include "every_export.h"
#include "platform/component_model.h"

namespace {

TEST(Exports, LanguageIsChosenFromIdentifiersAndCodes) {
    const bvkc_langid ids[] = {1031, 1033, 1036};
    bvkc_langid selected = 7;
    EXPECT_EQ(bvkc_GetUserLanguage_Ids(ids, 3, &selected), 0);
    EXPECT_EQ(selected, 1033);
    const char* const codes[] = {"deu", nullptr, "ENU"};
    EXPECT_EQ(bvkc_GetUserLanguage_Code(codes, 1, &selected), 0);
    EXPECT_EQ(selected, 1031);
    EXPECT_EQ(bvkc_GetUserLanguage_Code(codes, 3, &selected), 0);
    EXPECT_EQ(selected, 0);  // a null code counts as empty and stands for 0
}

TEST(Exports, CookieValuesComeBackAsTheyWereWritten) {
    bvkc_wchar* value = nullptr;
    ASSERT_EQ(bvkc_VCM_ReadOndrelCookieValue(u"volume", &value), 0);
    EXPECT_EQ(std::u16string(value), u"-1");
    brevik_CoTaskMemFree(value);

    ASSERT_EQ(bvkc_VCM_WriteOndrelCookieValue(u"volume", u"\u00E9=\u65E5\U0001F600"), 0);
    ASSERT_EQ(bvkc_VCM_ReadOndrelCookieValue(u"volume", &value), 0);
    EXPECT_EQ(std::u16string(value), u"\u00E9=\u65E5\U0001F600");
    brevik_CoTaskMemFree(value);

    ASSERT_EQ(bvkc_VCM_WriteCookieValue(u"shop.example", u"cart", u"items", u"3"), 0);
    ASSERT_EQ(bvkc_VCM_ReadCookieValue(u"shop.example", u"cart", u"items", &value), 0);
    EXPECT_EQ(std::u16string(value), u"3");
    brevik_CoTaskMemFree(value);
    ASSERT_EQ(bvkc_VCM_ReadCookieValue(u"other.example", u"cart", u"items", &value), 0);
    EXPECT_EQ(std::u16string(value), u"-1");
    brevik_CoTaskMemFree(value);
}

// Null texts count as empty; a null out argument gives the failure result.
TEST(Exports, NullPointersGetTheFailureResult) {
    void* value = &value;
    std::uint32_t size = 9;
    bvkc_wchar* wide = nullptr;
    char* narrow = nullptr;
    EXPECT_EQ(bvkc_CertificateItemValue(nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(bvkc_CertificateItemValue(nullptr, nullptr, &value, &size), 0);
    EXPECT_EQ(bvkc_CertificateItemValueByProdName(nullptr, nullptr, &value, nullptr), 0);
    EXPECT_EQ(value, static_cast<void*>(&value));
    EXPECT_EQ(size, 9u);
    EXPECT_EQ(bvkc_GetLocalGUIDs(nullptr), 0);
    EXPECT_EQ(bvkc_GetUserLanguage_Ids(nullptr, 1, nullptr), 1);
    const bvkc_langid id = 1033;
    EXPECT_EQ(bvkc_GetUserLanguage_Ids(&id, 1, nullptr), 1);
    const char* const code = "ENU";
    EXPECT_EQ(bvkc_GetUserLanguage_Code(&code, 1, nullptr), 1);
    EXPECT_EQ(bvkc_VCM_WriteOndrelCookieValue(nullptr, nullptr), 1);
    EXPECT_EQ(bvkc_VCM_WriteCookieValue(nullptr, u"c", u"k", u"v"), 1);
    EXPECT_EQ(bvkc_VCM_ReadOndrelCookieValue(u"k", nullptr), 1);
    EXPECT_EQ(bvkc_VCM_ReadCookieValue(nullptr, nullptr, nullptr, nullptr), 1);
    ASSERT_EQ(bvkc_VCM_ReadCookieValue(nullptr, nullptr, nullptr, &wide), 0);
    EXPECT_EQ(std::u16string(wide), u"-1");
    brevik_CoTaskMemFree(wide);
    EXPECT_EQ(bvkc_Dispatch_InvokeUpdate(nullptr, nullptr, 1), 2);
    EXPECT_EQ(bvkc_Dispatch_IsUpdateOrMessageAvailable(nullptr, nullptr, 0), 0);
    EXPECT_EQ(bvkc_Dispatch_GetKindletProfileID(nullptr, nullptr, nullptr, nullptr), 2);
    EXPECT_EQ(bvkc_Dispatch_GetKindletProfileID(nullptr, nullptr, nullptr, &narrow), 2);
    EXPECT_EQ(narrow, nullptr);
    brevik_CoTaskMemFree(nullptr);
}

// What a thread that made all calls finds: how its own entry into an apartment answers afterwards.
HRESULT EntryAfterCalls(const std::function<void()>& before, DWORD kind) {
    HRESULT result = E_FAIL;
    std::thread([&] {
        before();
        CallEveryExport();
        result = CoInitializeEx(nullptr, kind);
    }).join();
    return result;
}

TEST(Exports, ApartmentOfTheThreadIsAsBefore) {
    const auto none = [] {};
    const auto single = [] { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); };
    const auto multi = [] { CoInitializeEx(nullptr, COINIT_MULTITHREADED); };
    const auto entered_and_left = [] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        CoUninitialize();
    };
    EXPECT_EQ(EntryAfterCalls(none, COINIT_APARTMENTTHREADED), S_OK);
    EXPECT_EQ(EntryAfterCalls(none, COINIT_MULTITHREADED), S_OK);
    EXPECT_EQ(EntryAfterCalls(single, COINIT_APARTMENTTHREADED), S_FALSE);
    EXPECT_EQ(EntryAfterCalls(single, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
    EXPECT_EQ(EntryAfterCalls(multi, COINIT_MULTITHREADED), S_FALSE);
    EXPECT_EQ(EntryAfterCalls(multi, COINIT_APARTMENTTHREADED), RPC_E_CHANGED_MODE);
    EXPECT_EQ(EntryAfterCalls(entered_and_left, COINIT_APARTMENTTHREADED), S_OK);
}

}  // namespace
