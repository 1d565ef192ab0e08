// brevikctl item, guids, language, database and certificate check, on machines with products.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/installed_products.h"
#include "support/test_machine.h"
#include "support/tool.h"
#include "text/StringConversions.h"

namespace {

namespace fs = std::filesystem;
using namespace InstalledProducts;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class BrevikctlCatalogue : public testing::Test, protected Tool {
  protected:
    void SetUp() override { RegisterReader(BREVIK_TEST_READER_COMPONENT); }
};

TEST_F(BrevikctlCatalogue, ItemsAreThoseThatAnApplicationReads) {
    Install("{One}", "C:\\one.qzc", "Mixer", "list = first, second\n");
    EXPECT_EQ(OutputOf({"item", "--guid", "{One}", "list"}), "first\n");
    EXPECT_EQ(OutputOf({"item", "--product", "MIXER", "QDR_ProductName"}), "Mixer\n");
    EXPECT_THAT(ErrorOf({"item", "--guid", "{one}", "list"}), HasSubstr("case counts"));
    EXPECT_THAT(ErrorOf({"item", "--product", "Other", "list"}),
                HasSubstr("no certificate has the product name 'Other'"));
    EXPECT_THAT(ErrorOf({"item", "--guid", "{One}", "none"}), HasSubstr("has no item 'none'"));
    EXPECT_EQ(RunTool({"item", "list"}).exitCode, 2);
    EXPECT_EQ(RunTool({"item", "--guid", "{One}", "--product", "Mixer", "list"}).exitCode, 2);
}

TEST_F(BrevikctlCatalogue, GuidsAreListedInTheOrderInWhichTheyMatch) {
    EXPECT_THAT(RunTool({"guids"}).errors, HasSubstr("no product is installed"));
    Install("{B}", "C:\\b.qzc", "B, \"B \\ deluxe\"");
    PutCertificate("C:\\a.qzc", "x = y\n");
    Register("{A}", "C:\\A.qzc");
    EXPECT_EQ(OutputOf({"guids", "--json"}),
              "{\"guid\":\"{A}\",\"names\":[],\"path\":\"c:\\\\a.qzc\"}\n"
              "{\"guid\":\"{B}\",\"names\":[\"B\",\"B \\\\ deluxe\"],\"path\":\"c:\\\\b.qzc\"}\n");
    EXPECT_EQ(OutputOf({"guids"}),
              "GUID  PRODUCT        CERTIFICATE\n"
              "{A}   -              c:\\a.qzc\n"
              "{B}   B, B \\ deluxe  c:\\b.qzc\n");
}

TEST_F(BrevikctlCatalogue, LanguageIsChosenAsForAnApplication) {
    EXPECT_THAT(RunTool({"language", "--ids", "1031,1033"}).output, StartsWith("1033 ENU\n"));
    Install("{G}", "C:\\g.qzc", "G");
    SetEntry("{G}", {{"Filename", "C:\\g.qzc"}, {"Language", "1036"}});
    EXPECT_EQ(OutputOf({"language", "--ids", "1031,0x040C"}), "1036 FRA\n");
    EXPECT_EQ(OutputOf({"language", "--codes", "DEU,fra"}), "1036 FRA\n");
    EXPECT_EQ(OutputOf({"language", "--codes", "DEU", "--json"}),
              "{\"id\":1031,\"code\":\"DEU\",\"installed\":1036}\n");
    EXPECT_THAT(RunTool({"language", "--codes", "DEU,xx"}).errors, HasSubstr("'xx' is no code"));
    EXPECT_EQ(RunTool({"language"}).exitCode, 2);
    EXPECT_EQ(RunTool({"language", "--ids", "65536"}).exitCode, 2);
}

TEST_F(BrevikctlCatalogue, DatabaseIsComparedWithTheFilesAndRebuilt) {
    EXPECT_THAT(OutputOf({"database", "show"}), HasSubstr("none yet"));
    EXPECT_FALSE(fs::exists(HostPath("C:\\ProgramData\\Velmar\\qzc13.db")));
    Install("{1}", "C:\\1.qzc", "One, Uno");
    Install("{2}", "C:\\2.qzc", "Two");
    PutCertificate("C:\\3.qzc", "CertReferencePath = C:\\4.qzc\n");
    PutCertificate("C:\\4.qzc", "QDR_ProductName = Four\n");
    Register("{3}", "C:\\3.qzc");
    OutputOf({"guids"});
    EXPECT_THAT(OutputOf({"database", "show", "--json"}),
                HasSubstr("\"records\":[{\"certificate\":\"c:\\\\1.qzc\",\"rows\":2},"
                          "{\"certificate\":\"c:\\\\2.qzc\",\"rows\":1},"
                          "{\"certificate\":\"c:\\\\3.qzc\",\"rows\":1},"
                          "{\"certificate\":\"c:\\\\4.qzc\",\"rows\":1}]}"));
    EXPECT_THAT(OutputOf({"database", "verify"}), Not(HasSubstr("differs")));

    PutCertificate("C:\\1.qzc", "QDR_ProductName = Changed\n");
    PutFile("C:\\2.qzc", ForeignCertificate("QDR_ProductName = Forged\n"));
    fs::remove(HostPath("C:\\4.qzc"));
    const ChildResult verified = RunTool({"database", "verify", "--json"});
    EXPECT_EQ(verified.exitCode, 1);
    EXPECT_EQ(verified.output,
              "{\"certificate\":\"c:\\\\1.qzc\",\"state\":\"differs\",\"reason\":"
              "\"the file says something else by now\"}\n"
              "{\"certificate\":\"c:\\\\2.qzc\",\"state\":\"unreadable\",\"reason\":"
              "\"it was changed, or signed with another key\"}\n"
              "{\"certificate\":\"c:\\\\3.qzc\",\"state\":\"same\",\"reason\":null}\n"
              "{\"certificate\":\"c:\\\\4.qzc\",\"state\":\"unreadable\",\"reason\":"
              "\"the file is missing\"}\n");

    PutCertificate("C:\\4.qzc", "QDR_ProductName = Four anew\n");
    const ChildResult rebuilt = RunTool({"database", "rebuild"});
    EXPECT_EQ(rebuilt.exitCode, 1);
    EXPECT_EQ(rebuilt.output, "imported: 3\n");
    EXPECT_THAT(rebuilt.errors,
                HasSubstr("'c:\\2.qzc' is left out: it was changed, or signed with another key"));
    EXPECT_EQ(OutputOf({"item", "--guid", "{1}", "QDR_ProductName"}), "Changed\n");
    EXPECT_EQ(OutputOf({"item", "--product", "Four anew", "QDR_ProductName"}), "Four anew\n");
    ErrorOf({"item", "--guid", "{2}", "QDR_ProductName"});
    OutputOf({"database", "verify"});
}

TEST_F(BrevikctlCatalogue, DamagedDatabaseIsReportedAndRebuilt) {
    Install("{1}", "C:\\1.qzc", "One", "Long = " + std::string(5000, 'x') + "\n");
    OutputOf({"guids"});
    // The end of the file is the end of the long value.
    std::fstream file(HostPath("C:\\ProgramData\\Velmar\\qzc13.db"));
    file.seekp(-99, std::ios::end).put('?');
    file.close();
    EXPECT_THAT(ErrorOf({"database", "show"}),
                AllOf(HasSubstr("cannot be read"), HasSubstr("brevikctl database rebuild")));
    EXPECT_EQ(OutputOf({"database", "rebuild"}), "imported: 1\n");
    EXPECT_THAT(OutputOf({"database", "show"}), HasSubstr("c:\\1.qzc"));
}

TEST_F(BrevikctlCatalogue, CatalogueThatCannotBeReadIsReportedWithItsPlace) {
    Install("{1}", "C:\\1.qzc", "One");
    PutFile("C:\\ProgramData\\Velmar", "a file where a folder belongs");
    for (const std::vector<std::string>& words : {std::vector<std::string>{"guids"},
                                                  {"item", "--guid", "{1}", "x"},
                                                  {"language", "--ids", "1031"},
                                                  {"certificate", "check", "{1}"}}) {
        const ChildResult result = RunTool(words);
        EXPECT_EQ(result.exitCode, 1) << words[0];
        EXPECT_THAT(result.errors, HasSubstr("C:\\ProgramData\\Velmar\\qzc13.db")) << words[0];
    }
}

TEST_F(BrevikctlCatalogue, MissingDatabaseLibraryIsNamed) {
    const fs::path folder = TestMachine::ScratchFolder() / "libraries";
    fs::create_directory(folder);
    std::ofstream(folder / "libsqlcipher.so.0") << "no library";
    const std::vector<std::vector<std::string>> commands = {
        {"guids"}, {"certificate", "check", "{1}"}, {"database", "rebuild"}};
    const auto expectNamed = [&](const std::vector<std::string>& words) {
        const ChildResult result = RunTool(words, {{"LD_LIBRARY_PATH", folder.string()}});
        EXPECT_EQ(result.exitCode, 1) << words[0];
        EXPECT_THAT(result.errors, AllOf(HasSubstr("libsqlcipher.so.0 cannot be loaded"),
                                         HasSubstr("libsqlcipher0")));
    };
    Install("{1}", "C:\\1.qzc", "One");
    for (const std::vector<std::string>& words : commands) {
        expectNamed(words);
    }
    OutputOf({"guids"});  // from now on there is a database
    for (const std::vector<std::string>& words : commands) {
        expectNamed(words);
    }
    expectNamed({"database", "verify"});
}

TEST_F(BrevikctlCatalogue, CheckSaysWhyACertificateIsNotThere) {
    const auto pointTo = [](const std::string& name) {
        return "CertReferencePath = C:\\" + name + ".qzc\n";
    };
    const auto put = [](const std::string& name, const std::string& bytes) {
        PutFile("C:\\" + name + ".qzc", bytes);
        Register("{" + name + "}", "C:\\" + name + ".qzc");
    };
    SetEntry("{pathless}", {{"Language", "1031"}});
    Register("{long}", "C:\\" + std::string(300, 'x'));
    Register("{missing}", "C:\\missing.qzc");
    Register("{odd}", "C:\\a|b.qzc");
    PutCertificate("C:\\unregistered.qzc", "x = y\n");
    PutFile("C:\\foreign.qzc", ForeignCertificate("x = y\n"));
    put("cut", SignedCertificate("x = y\n").substr(0, 60));
    put("plain", "QDR_ProductName = plain\n");
    put("value", SignedCertificate("Good = '); DROP TABLE CertificateData; --\n"));
    put("it's", SignedCertificate("x = y\n"));
    put("fieldless", SignedCertificate("no equals sign\n"));
    put("lost", SignedCertificate(pointTo("nothing")));
    put("self", SignedCertificate(pointTo("self")));
    for (int link = 0; link < 18; ++link) {
        put("link" + std::to_string(link),
            SignedCertificate(pointTo("link" + std::to_string(link + 1))));
    }
    fs::create_directories(HostPath("C:\\folder.qzc"));
    Register("{folder}", "C:\\folder.qzc");
    const struct {
        const char* subject;
        std::vector<std::string> expected;  // parts of the output
    } cases[] = {
        {"{none}", {"the registry has no key of this GUID"}},
        {"{pathless}", {"has no value Filename", "certificate install"}},
        {"{long}", {"has no value Filename that is a text of at most 259 characters"}},
        {"{missing}", {"the file is missing"}},
        {"{odd}", {"its path cannot be used"}},
        {"C:\\Unregistered.qzc", {"no registry entry names this file", "certificate install"}},
        {"C:\\foreign.qzc",
         {"no registry entry", "it was changed, or signed with another key", "certificate sign"}},
        {"{cut}", {"it is cut short"}},
        {"{plain}", {"it is no certificate file"}},
        {"{value}", {"its field 'Good' holds an apostrophe", "U+2019"}},
        {"{it's}", {"its path holds an apostrophe"}},
        {"{fieldless}", {"its text has no fields"}},
        {"{lost}", {"it points to 'C:\\nothing.qzc': the file is missing"}},
        {"{self}", {"it points to 'C:\\self.qzc', which points back"}},
        {"{link0}", {"more than 16 certificates"}},
        {"{folder}", {"it cannot be read"}},
    };
    for (const auto& row : cases) {
        const ChildResult result = RunTool({"certificate", "check", row.subject});
        EXPECT_EQ(result.exitCode, 1) << row.subject;
        EXPECT_THAT(result.output, HasSubstr(": not in the catalogue\n")) << row.subject;
        for (const std::string& part : row.expected) {
            EXPECT_THAT(result.output, HasSubstr(part)) << row.subject;
        }
    }
}

TEST_F(BrevikctlCatalogue, CheckOfAMachineWithoutAReader) {
    AddToRegistry(
        "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\{91C11C22-4B99-439F-90A6-A0F3758E1717}]"
        "\n");
    Install("{G}", "C:\\g.qzc", "G");
    EXPECT_THAT(RunTool({"certificate", "check", "{G}"}).output,
                AllOf(HasSubstr("no certificate reader"), HasSubstr("brevikctl machine create")));
}

TEST_F(BrevikctlCatalogue, CheckSaysWhatIsOddAboutACertificateThatIsThere) {
    Install("{A}", "C:\\a.qzc", "Mixer");
    EXPECT_EQ(OutputOf({"certificate", "check", "{A}"}), "c:\\a.qzc: in the catalogue\n");
    EXPECT_EQ(OutputOf({"certificate", "check", HostPath("C:\\a.qzc")}),
              "c:\\a.qzc: in the catalogue\n");
    EXPECT_THAT(OutputOf({"certificate", "check", "{a}"}),
                HasSubstr("its GUID is written '{A}', and programs find it under that alone"));

    Install("{A}\\more", "C:\\b.qzc", "MIXER");
    EXPECT_THAT(OutputOf({"certificate", "check", "C:\\b.qzc"}),
                AllOf(HasSubstr("who asks for the GUID '{A}' gets 'c:\\a.qzc'"),
                      HasSubstr("who asks for the product name 'MIXER' gets 'c:\\a.qzc'")));
    EXPECT_THAT(OutputOf({"certificate", "check", "{A}"}),
                AllOf(StartsWith("c:\\a.qzc: in the catalogue\nc:\\b.qzc: in the catalogue\n")));

    PutCertificate("C:\\pointer.qzc", "CertReferencePath = C:\\a.qzc\n");
    Register("{P}", "C:\\pointer.qzc");
    EXPECT_THAT(
        OutputOf({"certificate", "check", "{P}"}),
        AllOf(HasSubstr("pointer.qzc: in the catalogue\n"), HasSubstr("'c:\\a.qzc' in its place")));

    PutCertificate("C:\\a.qzc", "No name = at all\n");
    EXPECT_THAT(OutputOf({"certificate", "check", "C:\\a.qzc"}),
                HasSubstr("the file says something else by now than the database"));
    PutFile("C:\\a.qzc", ForeignCertificate("x = y\n"));
    EXPECT_THAT(OutputOf({"certificate", "check", "C:\\a.qzc", "--json"}),
                AllOf(StartsWith("{\"certificate\":\"c:\\\\a.qzc\",\"inCatalogue\":true,"),
                      HasSubstr("its rows are in the database, but by now it was changed, or "
                                "signed with another key")));
    RemoveEntry("{A}");
    EXPECT_THAT(OutputOf({"certificate", "check", "C:\\a.qzc"}), HasSubstr("it has no GUID"));

    PutCertificate("C:\\Odd\\o.qzc", "QDR_ProductName = Odd\n");
    Register("{O}", "C:\\Odd\\\\o.qzc");
    const std::string odd = "its path 'c:\\odd\\\\o.qzc' names no file";
    EXPECT_THAT(AsciiToLower(OutputOf({"certificate", "check", "{O}"})), HasSubstr(odd));
    EXPECT_THAT(RunTool({"database", "rebuild"}).errors, HasSubstr("warning: " + odd));
}

}  // namespace
