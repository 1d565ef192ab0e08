#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "language/LangManager.h"
#include "support/debug_output.h"
#include "trace/UTrace.h"

namespace {

TEST(LangManager, OddRowsGoBothWays) {
    const struct {
        LANGID id;
        const char* longCode;
        const char* shortCode;
    } rows[] = {
        {1029, "CSY", "cz"}, {1046, "PTB", "ptbr"}, {2052, "CHS", "chs"}, {2070, "PTG", "pt"},
        {3082, "ESN", "es"}, {1034, "", ""},        {0, "", ""},
    };
    const LangManager languages;
    for (const auto& row : rows) {
        EXPECT_EQ(languages.GetCodeFromLangId(row.id), row.longCode) << row.id;
        EXPECT_EQ(languages.GetShortCodeFromLangId(row.id), row.shortCode) << row.id;
        if (*row.longCode != '\0') {
            EXPECT_EQ(languages.GetLangIdFromCode(row.longCode), row.id);
        }
    }
    EXPECT_EQ(languages.GetLangIdFromCode("enu"), 1033);
    for (const char* unknown : {"ENU ", "", "ptbr", "de", "XXX"}) {
        EXPECT_EQ(languages.GetLangIdFromCode(unknown), 0) << unknown;
    }
}

TEST(LangManager, CodesBecomeIdentifiersAtTheirPlaces) {
    const LangManager languages;
    LANGID selected = 7;
    const char* const unknownFirst[] = {"xyz", "deu"};
    EXPECT_EQ(languages.GetLang(unknownFirst, 2, &selected), 0u);
    EXPECT_EQ(selected, 0);  // the unknown one stands for 0, and 0 is offered
    const char* const known[] = {"fra", "deu"};
    EXPECT_EQ(languages.GetLang(known, 2, &selected), 0u);
    EXPECT_EQ(selected, 1036);
    EXPECT_EQ(languages.GetLang(&selected), 0u);
    EXPECT_EQ(selected, 1033);
    selected = 7;
    EXPECT_EQ(languages.GetLang(known, 0, &selected), 1u);
    EXPECT_EQ(languages.GetLang(static_cast<const char* const*>(nullptr), 5, &selected), 1u);
    EXPECT_EQ(LangManager::GetLang(static_cast<const LANGID*>(nullptr), 5, &selected), 1u);
    EXPECT_EQ(selected, 7);
}

class LanguageTrace : public testing::Test {
  protected:
    LanguageTrace() {
        UTrace::Initialize();
        // What the first look at the catalogue says is none of this.
        LANGID selected = 0;
        LangManager().GetLang(&selected);
    }

    std::string Said(std::vector<LANGID> offered) {
        LANGID selected = 0;
        output_.Take();
        result_ = LangManager::GetLang(offered.data(), static_cast<std::uint32_t>(offered.size()),
                                       &selected);
        return output_.Take();
    }

    DebugOutput output_;
    std::uint32_t result_ = 0;
};

TEST_F(LanguageTrace, TellsEachStepOfASelection) {
    const std::string head =
        ": englishLang = MAKELANGID(LANG_ENGLISH, SUBLANG_DEFAULT) returned (1033).\r\n"
        ": MUI is disabled. But the installed lang can't be found!\r\n";
    EXPECT_EQ(Said({0}), head +
                             ": LangIdList [0]: 0\r\n"
                             ": Found userDefaultLang installed (0).\r\n"
                             ": Found userNeutralLang installed (0).\r\n"
                             ": Found systemDefaultLang installed (0).\r\n"
                             ": Found systemNeutralLang installed (0).\r\n"
                             ": Selected Lang = 0\r\n");
    EXPECT_EQ(Said({1031}), head +
                                ": LangIdList [0]: 1031\r\n"
                                ": Unable to find a suitable language or English installed. "
                                "Defaulting to first language found (1031).\r\n"
                                ": Selected Lang = 1031\r\n");
    EXPECT_EQ(Said({}), ": No languages passed to LangManager::GetLang. Returning false.\r\n");
    EXPECT_EQ(result_, 1u);
}

}  // namespace
