// brevikctl update and profile, against the stand-in.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/stand_in.h"
#include "support/tool.h"
#include "support/updatable_product.h"

namespace {

using namespace InstalledProducts;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

class BrevikctlDispatch : public testing::Test, protected Tool {
  protected:
    void SetUp() override { RegisterReader(BREVIK_TEST_READER_COMPONENT); }
};

TEST_F(BrevikctlDispatch, UpdateReachesTheService) {
    StandIn sibling;
    UpdatableProduct::Install();
    EXPECT_EQ(OutputOf({"update", "Mixer", "--locale", "DEU"}), "the update was announced\n");
    EXPECT_THAT(sibling.Take()[1], AllOf(HasSubstr("\"slot\":16"), HasSubstr("\"langId\":1031")));
    EXPECT_EQ(OutputOf({"update", "mixer", "--background", "--json"}),
              "{\"product\":\"mixer\",\"status\":0,\"service\":true}\n");
    EXPECT_THAT(sibling.Take()[1], AllOf(HasSubstr("\"slot\":20"), HasSubstr("\"langId\":1033")));
    sibling.Set("RunUpdate = 1");
    EXPECT_THAT(ErrorOf({"update", "Mixer"}), HasSubstr("status 4: the update service answered"));
    EXPECT_EQ(RunTool({"update", "Mixer", "--check", "--background"}).exitCode, 2);
}

TEST_F(BrevikctlDispatch, CheckAnswersAvailableOrNot) {
    StandIn sibling;
    UpdatableProduct::Install();
    EXPECT_EQ(OutputOf({"update", "--check", "Mixer"}), "available\n");
    EXPECT_THAT(sibling.Take()[1], HasSubstr("\"connectToServer\":-1"));
    sibling.Set("available = 0");
    EXPECT_EQ(OutputOf({"update", "--check", "Mixer"}), "not available\n");
    EXPECT_EQ(OutputOf({"update", "--check", "Mixer", "--json"}),
              "{\"product\":\"Mixer\",\"status\":4,\"available\":false}\n");
    const ChildResult none = RunTool({"update", "--check", "None"});
    EXPECT_EQ(none.output, "not available\n");
    EXPECT_EQ(none.exitCode, 0);
    EXPECT_THAT(none.errors, HasSubstr("no certificate has the product name 'None'"));
}

TEST_F(BrevikctlDispatch, WhyThereIsNoUpdateIsSaid) {
    Install("{off}", "C:\\off.qzc", "Off", "QDR_UpdateManager = 0\n");
    Install("{missing}", "C:\\missing.qzc", "Missing");
    Install("{unused}", "C:\\unused.qzc", "Unused", "QDR_UpdateManager = 1\n");
    EXPECT_THAT(ErrorOf({"update", "Off"}),
                HasSubstr("status 2: updates are not on for 'Off': the item QDR_UpdateManager of "
                          "'c:\\off.qzc' is 0\n"));
    EXPECT_THAT(ErrorOf({"update", "Missing"}), HasSubstr("'c:\\missing.qzc' is missing\n"));
    EXPECT_THAT(ErrorOf({"update", "Unused"}),
                HasSubstr("its uninstall entry '{unused}' has no value UsedBy"));
}

TEST_F(BrevikctlDispatch, WithoutAServiceTheAnswerIsThatOfAnApplicationWithAHint) {
    UpdatableProduct::Install();
    for (const char* word : {"--json", "--check"}) {
        const ChildResult result = RunTool({"update", "Mixer", word, "--locale", "xyz"});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_THAT(result.errors,
                    AllOf(HasSubstr("'xyz' is no code of the suite"),
                          HasSubstr("nothing was announced"), HasSubstr("DllShared")));
    }
    EXPECT_EQ(RunTool({"update", "Mixer", "--json"}).output,
              "{\"product\":\"Mixer\",\"status\":0,\"service\":false}\n");
    EXPECT_EQ(RunTool({"update", "Mixer"}).output, "");
    EXPECT_THAT(ErrorOf({"profile", "u"}), AllOf(HasSubstr("result 2"), HasSubstr("DllShared")));
    StandIn sibling;
    sibling.Set("CreateInstance = 0x80040154");
    EXPECT_THAT(RunTool({"update", "Mixer"}).errors, HasSubstr("makes no object"));
}

TEST_F(BrevikctlDispatch, ProfileIsPrinted) {
    StandIn sibling;
    EXPECT_EQ(OutputOf({"profile", "user", "--locale", "fra"}), "stand-in\n");
    const std::vector<std::string> lines = sibling.Take();
    EXPECT_THAT(lines[1], HasSubstr("\"locale\":\"fra\""));
    EXPECT_THAT(lines[4], HasSubstr("\"kindletUID\":\"user\",\"window\":0"));
    sibling.Set("profile = P\nGetProfileID = 1");
    const ChildResult one = RunTool({"profile", "user", "--json"});
    EXPECT_EQ(one.output, "{\"uid\":\"user\",\"result\":1,\"profile\":\"P\"}\n");
    EXPECT_EQ(one.exitCode, 1);
    EXPECT_THAT(one.errors, HasSubstr("result 1: the service answered 1"));
    sibling.Set("profile =");
    EXPECT_EQ(RunTool({"profile", "user", "--json"}).output,
              "{\"uid\":\"user\",\"result\":2,\"profile\":null}\n");
    EXPECT_THAT(ErrorOf({"profile", "user"}), HasSubstr("gave no profile"));
}

}  // namespace
