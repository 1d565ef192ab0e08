// What an update dispatch gathers, where the exports show it only in part.

#include <gtest/gtest.h>

#include <string>

#include "catalogue/manager/CCertificateMgr.h"
#include "catalogue/queries/CVelmarProductCertifier.h"
#include "modules/SmartComInitializer.h"
#include "platform/modules.h"
#include "services/ServiceCall.h"
#include "services/UpdateDispatch.h"
#include "services/VelmarUpdateService.h"
#include "support/stand_in.h"
#include "support/updatable_product.h"

namespace {

using namespace InstalledProducts;
using UpdatableProduct::Entry;

class UpdateDispatchTest : public testing::Test {
  protected:
    void SetUp() override { RegisterReader(BREVIK_TEST_READER_COMPONENT); }

    // The uninstall data of a product as "FOUND language version sku", from what stood there
    // before.
    static std::string Uninstall(const char* guid, const char* usedBy) {
        std::uint32_t language = 7;
        std::string version = "before";
        std::string sku = "before";
        const bool found = VelmarUpdateService().GetUninstallInfo(
            NarrowToUtf8(guid), NarrowToUtf8(usedBy), &language, &version, &sku);
        return std::to_string(found) + " " + std::to_string(language) + " " + version + " " + sku;
    }

    CLibraryUtils::SmartComInitializer apartment_;
};

TEST_F(UpdateDispatchTest, UpdateInfoIsLeftAsItWasUnlessUpdatesAreOn) {
    Install("{off}", "C:\\off.qzc", "Off", "QDR_UpdateManager = none\n");
    Install("{on}", "C:\\on.qzc", "On", "QDR_UpdateManager = 1\n");
    CBrevikKitCertificateMgr manager;
    const CVelmarProductCertifier certifier;
    CertUpdateInfo info = {9, NarrowToUtf8("guid"), NarrowToUtf8("user")};
    EXPECT_FALSE(certifier.GetUpdateInfo(manager, &info, NarrowToUtf8("Off")));
    EXPECT_FALSE(certifier.GetUpdateInfo(manager, &info, NarrowToUtf8("none")));
    EXPECT_EQ(info.m_dwLangID, 9u);
    EXPECT_EQ(info.m_strInstallerGUID, NarrowToUtf8("guid"));
    // Nobody uses it, so that field alone stays.
    EXPECT_TRUE(certifier.GetUpdateInfo(manager, &info, NarrowToUtf8("On")));
    EXPECT_EQ(info.m_dwLangID, 0u);
    EXPECT_EQ(info.m_strInstallerGUID, NarrowToUtf8("{on}"));
    EXPECT_EQ(info.m_strUsedBy, NarrowToUtf8("user"));
}

TEST_F(UpdateDispatchTest, UninstallDataComesFromTwoEntries) {
    AddToRegistry(Entry("{own}", "\"Language\"=dword:00000407\n\"SKUID\"=\"own\"\n") +
                  Entry("{user}",
                        "\"VersionMajor\"=dword:00000002\n\"VersionMinor\"=dword:ffffffff\n"
                        "\"SKUID\"=\"user\"\n\"Language\"=dword:0000040c\n") +
                  Entry("{odd}", "\"Language\"=\"1031\"\n\"SKUID\"=\"" + std::string(260, 's') +
                                     "\"\n\"VersionMajor\"=\"1\"\n"));
    EXPECT_EQ(Uninstall("{own}", "{user}"), "1 1031 2.-1 user");
    EXPECT_EQ(Uninstall("{own}", ""), "1 1031 0.0 own");
    EXPECT_EQ(Uninstall("{own}", "{none}"), "1 1031 before before");
    EXPECT_EQ(Uninstall("{none}", "{user}"), "1 7 2.-1 user");
    EXPECT_EQ(Uninstall("{none}", "{no}"), "0 7 before before");
    EXPECT_EQ(Uninstall("{odd}", ""), "1 7 0.0 ");  // neither of another type nor too long
}

TEST_F(UpdateDispatchTest, WithoutALocaleTheInstalledLanguageOfTheProductCounts) {
    StandIn sibling;
    // The call frame, which would load it, has no part in this.
    ASSERT_NE(
        LoadLibraryW(
            WideString(
                NarrowToWide("Z:" + (StandIn::SharedFolder() / "VelmarHTTPClient13.dll").string()))
                .c_str()),
        nullptr);
    UpdatableProduct::Install();
    EXPECT_EQ(UpdateDispatch::InvokeUpdate("Mixer", "", false), UpdateDispatch::kDone);
    EXPECT_NE(sibling.Take().back().find("\"langId\":1036"), std::string::npos);  // uninstall entry
    SetEntry("{G}", {{"Filename", "C:\\g.qzc"}, {"Language", "1040"}});
    EXPECT_EQ(UpdateDispatch::InvokeUpdate("Mixer", "", false), UpdateDispatch::kDone);
    EXPECT_NE(sibling.Take().back().find("\"langId\":1040"), std::string::npos);  // certificate's
}

}  // namespace
