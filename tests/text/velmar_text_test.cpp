#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/folders.h"
#include "support/test_machine.h"
#include "text/StringFile.h"
#include "text/Texts.h"

namespace {

Utf8String Utf8(const std::string& text) {
    return Utf8String(text.begin(), text.end());
}
std::string Plain(const Utf8String& text) {
    return std::string(text.begin(), text.end());
}

std::string Fill(const char* text, std::initializer_list<const char*> arguments) {
    VelmarTextArgs filled{VelmarText(text)};
    for (const char* argument : arguments) {
        filled.push_back(Utf8(argument));
    }
    return Plain(filled.GetText());
}

TEST(VelmarText, PlaceholdersFillInRisingOrder) {
    EXPECT_EQ(Fill("copying %0", {"x"}), "copying x");
    EXPECT_EQ(Fill("%0 and %0", {"x"}), "x and x");
    EXPECT_EQ(Fill("%0 %1", {"%1", "y"}), "%1 y");  // what was filled in is not filled again
    EXPECT_EQ(Fill("%1 %0", {"x", "y"}), "%1 x");
    EXPECT_EQ(Fill("%0 %1 %2", {"x"}), "x %1 %2");
    EXPECT_EQ(Fill("100% %0", {"x"}), "100% x");
    EXPECT_EQ(Fill("%10", {"a", "b"}), "b0");
    EXPECT_EQ(Fill("%0", {}), "%0");
    EXPECT_EQ(Fill(nullptr, {"x"}), "");
}

TEST(VelmarText, RegistryFindsTheNewestOfANumberAndForgetsTheDead) {
    EXPECT_EQ(VelmarText::Find(-10000), &Texts::accessDenied);
    EXPECT_EQ(VelmarText::Find(-13), nullptr);
    {
        const VelmarText newer(-10000, "other");
        EXPECT_EQ(VelmarText::Find(-10000), &newer);
        const VelmarText copy(newer);
        EXPECT_EQ(VelmarText::Find(-10000), &newer);
    }
    EXPECT_EQ(VelmarText::Find(-10000), &Texts::accessDenied);
}

// The listing is the promise that all texts are there, under their numbers and in their order.
TEST(VelmarText, DumpListsAllTextsByNumber) {
    std::ostringstream stream;
    stream << std::hex << std::left;
    VelmarText::Dump(stream);
    const std::string text = stream.str();
    EXPECT_EQ(text.substr(0, text.find('\n')),
              "\xEF\xBB\xBFVelmarText::Dump() - ENU - Default (Embedded English)");
    std::vector<long> ids;
    std::istringstream lines(text.substr(text.find('\n') + 1));
    for (std::string line; std::getline(lines, line);) {
        EXPECT_EQ(line.find(": <UNDEFINED>"), 11u) << line;
        ids.push_back(std::stol(line));
    }
    EXPECT_EQ(ids,
              (std::vector<long>{-10013, -10012, -10011, -10010, -10009, -10008, -10007, -10006,
                                 -10005, -10004, -10003, -10002, -10001, -10000, -15,    -14,
                                 -12,    -11,    -4,     -3,     -2,     -1,     0}));
    EXPECT_TRUE(stream.flags() & std::ios_base::hex);
}

TEST(StringFile, LinesBecomeTexts) {
    const auto strings = ParseStringFile(
        Utf8("; comment\n# comment\r\n-10000 \t kein Zugriff \t\r\n 5 blank ahead\n0 zero\nword\n"
             "42first\n0x2A second\n0X2B no\n-7\n-8   \n-9 ;kept\r9 last"));
    EXPECT_EQ(strings, (std::map<long, Utf8String>{{-10000, Utf8("kein Zugriff")},
                                                   {42, Utf8("second")},
                                                   {-7, Utf8("")},
                                                   {-8, Utf8("")},
                                                   {-9, Utf8(";kept")},
                                                   {9, Utf8("last")}}));
}

TEST(StringFile, EncodingsByTheirFirstBytes) {
    const std::string little(
        "\xFF\xFE"
        "1\0 \0\xE9\0",
        8);
    const std::string big(
        "\xFE\xFF\0"
        "1\0 \0\xE9",
        8);
    EXPECT_EQ(DecodeStringFile("\xEF\xBB\xBF"
                               "1 \xC3\xA9"),
              Utf8("1 \xC3\xA9"));
    EXPECT_EQ(DecodeStringFile(little), Utf8("1 \xC3\xA9"));
    EXPECT_EQ(DecodeStringFile(big), Utf8("1 \xC3\xA9"));
    EXPECT_EQ(DecodeStringFile(little + "x"), Utf8("1 \xC3\xA9x"));  // an odd byte stands alone
    for (const char* tooShort : {"", "1", "\xFF\xFE"}) {
        EXPECT_EQ(DecodeStringFile(tooShort), Utf8String());
    }
}

class LanguageFiles : public testing::Test {
  protected:
    void SetUp() override {
        WCHAR path[MAX_PATH];
        ASSERT_TRUE(SHGetSpecialFolderPathW(nullptr, path, CSIDL_COMMON_APPDATA, FALSE));
        folder_ = WideToUtf8(path);
        Write("DEU", "\xEF\xBB\xBF-10005 Datei fehlt\n-10003   \n-2 Fehler %0, Zeile %1\n");
        Write("ENU", "\xEF\xBB\xBF-10005 no such file\n");
    }
    void TearDown() override { VelmarText::LoadLanguage(kEmbeddedEnglish, folder_); }

    void Write(const std::string& code, const std::string& bytes) {
        std::ofstream(TestMachine::Folder() / "drives/c/ProgramData" / (code + ".txt")) << bytes;
    }

    Utf8String folder_;
};

TEST_F(LanguageFiles, TranslationStandsAheadOfTheEmbeddedText) {
    VelmarText::LoadLanguage(7, folder_);
    EXPECT_EQ(VelmarText::GetLanguage(), 7);
    EXPECT_EQ(Plain(Texts::fileNotFound.GetText()), "Datei fehlt");
    EXPECT_EQ(Plain(Texts::endOfFile.GetText()), "end of file");
    EXPECT_EQ(Plain(Texts::accessDenied.GetText()), "access denied");
    VelmarTextArgs filled(Texts::internalError);
    filled.push_back(Utf8("f"));
    filled.push_back(Utf8("3"));
    EXPECT_EQ(Plain(filled.GetText()), "Fehler f, Zeile 3");
}

TEST_F(LanguageFiles, CurrentLanguageIsNotReadAgainAndTheEmbeddedOneEmpties) {
    VelmarText::LoadLanguage(7, folder_);
    VelmarText::LoadLanguage(7, Utf8("C:\\nowhere"));
    EXPECT_EQ(Plain(Texts::fileNotFound.GetText()), "Datei fehlt");
    VelmarText::LoadLanguage(4, folder_);
    EXPECT_EQ(Plain(Texts::fileNotFound.GetText()), "no such file");
    VelmarText::LoadLanguage(kEmbeddedEnglish, folder_);
    EXPECT_EQ(Plain(Texts::fileNotFound.GetText()), "file not found");
}

TEST_F(LanguageFiles, MissingFileAndUnknownLanguageLeaveTheEmbeddedEnglish) {
    for (const int index : {6, 17, -1}) {
        VelmarText::LoadLanguage(7, folder_);
        VelmarText::LoadLanguage(index, folder_);
        EXPECT_EQ(VelmarText::GetLanguage(), kEmbeddedEnglish) << index;
        EXPECT_EQ(Plain(Texts::fileNotFound.GetText()), "file not found") << index;
    }
}

class Upside : public LanguageProvider_IF {
    int GetLanguage() override { return 3; }
    const LanguageInfo* GetLanguageInfo(int) override { return nullptr; }
    Utf8String GetString(long id) override { return Utf8(std::to_string(-id)); }
    void LoadLanguage(int, const Utf8String&) override {}
};

TEST(LanguageProvider, HostMayPutInItsOwn) {
    Upside provider;
    VelmarText::SetProvider(&provider);
    EXPECT_EQ(Plain(Texts::accessDenied.GetText()), "10000");
    EXPECT_EQ(Plain(VelmarText("no number").GetText()), "no number");
    std::ostringstream stream;
    VelmarText::Dump(stream);
    EXPECT_NE(stream.str().find("-10000: 10000\n"), std::string::npos);
    VelmarText::SetProvider(nullptr);
    EXPECT_EQ(Plain(Texts::accessDenied.GetText()), "access denied");
}

}  // namespace
