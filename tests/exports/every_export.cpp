#include "every_export.h"

#include <brevikconfig.h>
#include <gtest/gtest.h>

#include <string>

namespace {

// Takes the block.
void ExpectText(bvkc_wchar* value, const std::u16string& expected) {
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(std::u16string(value), expected);
    brevik_CoTaskMemFree(value);
}

void CallCatalogueAndDispatch() {
    void* value = nullptr;
    std::uint32_t size = 0;
    char* text = nullptr;
    EXPECT_EQ(bvkc_CertificateItemValue("{none}", "QDR_Name", &value, &size), 0);
    EXPECT_EQ(bvkc_CertificateItemValueByProdName("none", "QDR_Name", &value, &size), 0);
    EXPECT_EQ(bvkc_GetLocalGUIDs(&text), 0);
    brevik_CoTaskMemFree(text);
    EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("none", "", 0), 2);
    EXPECT_EQ(bvkc_Dispatch_IsUpdateOrMessageAvailable("none", "ENU", 1), 0);
    EXPECT_EQ(bvkc_Dispatch_GetKindletProfileID("u", "ENU", nullptr, &text), 2);
}

void CallLanguage() {
    const bvkc_langid ids[] = {1031, 1033};
    const char* const codes[] = {"fra", "enu"};
    bvkc_langid selected = 0;
    EXPECT_EQ(bvkc_GetUserLanguage_Ids(ids, 2, &selected), 0);
    EXPECT_EQ(selected, 1033);
    EXPECT_EQ(bvkc_GetUserLanguage_Code(codes, 2, &selected), 0);
    EXPECT_EQ(selected, 1033);
}

void CallCookies() {
    bvkc_wchar* value = nullptr;
    EXPECT_EQ(bvkc_VCM_WriteOndrelCookieValue(u"shared", u"same"), 0);
    EXPECT_EQ(bvkc_VCM_ReadOndrelCookieValue(u"shared", &value), 0);
    ExpectText(value, u"same");
    value = nullptr;
    EXPECT_EQ(bvkc_VCM_WriteCookieValue(u"a.example", u"c", u"k", u"v"), 0);
    EXPECT_EQ(bvkc_VCM_ReadCookieValue(u"a.example", u"c", u"k", &value), 0);
    ExpectText(value, u"v");
}

}  // namespace

void CallEveryExport() {
    CallCatalogueAndDispatch();
    CallLanguage();
    CallCookies();
}
