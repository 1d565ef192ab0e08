// The installed language, and what the choice of a language makes of it.

#include "language/InstalledLanguage.h"

#include <filesystem>
#include <fstream>
#include <vector>

#include "language/LangManager.h"
#include "support/catalogue_test.h"

namespace {

using namespace InstalledProducts;

class InstalledLanguage : public CatalogueTest {
  protected:
    static void InstallIn(const std::string& guid, const std::string& language) {
        const std::string path = "C:\\" + guid + ".qzc";
        PutCertificate(path, "QDR_ProductName = " + guid + "\n");
        SetEntry(guid, {{"Filename", path}, {"Language", language}});
    }
};

TEST_F(InstalledLanguage, FirstCertificateWithALanguageDecides) {
    Install("{0 none}", "C:\\none.qzc", "None");
    InstallIn("{1 word}", "German");
    InstallIn("{2 zero}", "0 and a word");
    InstallIn("{3}", "1036");
    InstallIn("{4}", "1040");
    EXPECT_EQ(FindInstalledLanguage(), 1036);
    const std::string said = output_.Take();
    EXPECT_NE(said.find("pCertRef->GetGUID() returned {2 zero}\r\n"), std::string::npos);
    EXPECT_NE(said.find("MUI is disabled. Installed lang = 1036 found from c:\\{3}.qzc\r\n"),
              std::string::npos);
    EXPECT_EQ(said.find("returned {4}"), std::string::npos);

    // The registry is asked at every call, for the certificates of the process.
    InstallIn("{2 zero}", "1034, Spanish");
    InstallIn("{1 new}", "1041");
    EXPECT_EQ(FindInstalledLanguage(), 1034);
}

TEST_F(InstalledLanguage, OnlyTheLowBitsOfTheNumberCount) {
    InstallIn("{1}", "66567");  // 0x10407
    InstallIn("{2}", "1036");
    EXPECT_EQ(FindInstalledLanguage(), 1031);
    InstallIn("{1}", "65536");
    EXPECT_EQ(FindInstalledLanguage(), 0);
}

TEST_F(InstalledLanguage, NoCertificateGivesNone) {
    EXPECT_EQ(FindInstalledLanguage(), 0);
}

TEST_F(InstalledLanguage, InstalledThenZeroThenEnglishThenTheFirstIsChosen) {
    const struct {
        const char* installed;
        std::vector<LANGID> offered;
        LANGID selected;
    } rows[] = {
        {"1036", {1031, 1033, 1036}, 1036},
        {"1040", {1031, 1036}, 1031},
        {"1040", {1031, 1033}, 1033},
        {"1040", {1031, 0, 1033}, 0},
        {"0", {1031, 1033}, 1033},
        {"0", {1033, 0}, 0},
        {"1046", {1031, 2070}, 1031},  // another Portuguese is not taken
        {"1040", {1031, 1031, 1040, 1040}, 1040},
    };
    for (const auto& row : rows) {
        InstallIn("{1}", row.installed);
        LANGID selected = 7;
        EXPECT_EQ(LangManager::GetLang(row.offered.data(),
                                       static_cast<std::uint32_t>(row.offered.size()), &selected),
                  0u);
        EXPECT_EQ(selected, row.selected) << row.installed;
    }
}

TEST_F(InstalledLanguage, CatalogueThatCannotBeReadIsNoReasonToHaveNoLanguage) {
    InstallIn("{1}", "1036");
    // A file where the database's folder belongs.
    std::filesystem::create_directories(HostPath("C:\\ProgramData"));
    std::ofstream(HostPath("C:\\ProgramData\\Velmar")) << "in the way";
    EXPECT_ANY_THROW(FindInstalledLanguage());
    output_.Take();
    EXPECT_EQ(FindInstalledLanguageOrNone(), 0);
    EXPECT_EQ(CountOf("The catalogue cannot be read", output_.Take()), 1);
    const LANGID offered[] = {1031, 1033};
    LANGID selected = 0;
    EXPECT_EQ(LangManager::GetLang(offered, 2, &selected), 0u);
    EXPECT_EQ(selected, 1033);
}

}  // namespace
