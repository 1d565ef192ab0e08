// brevikctl certificate, and what the library makes of what it installs.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "catalogue/VerificationKey.h"
#include "catalogue/records/SQLCertificate.h"
#include "modules/SmartComInitializer.h"
#include "support/drive_files.h"
#include "support/registry_machine.h"
#include "support/test_machine.h"
#include "support/tool.h"

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kKey = BREVIK_TEST_KEYS "/DEVELOPMENT-ONLY-private-key.txt";
const std::string kNextKey = BREVIK_TEST_KEYS "/DEVELOPMENT-ONLY-next-private-key.txt";

class BrevikctlCertificate : public RegistryMachine, protected Tool {
  protected:
    BrevikctlCertificate() : Tool({"certificate"}) {}

    void SetUp() override {
        RegistryMachine::SetUp();
        folder_ = NewFolder("App");
        WriteHostFile(folder_ / "product.exe");
        ASSERT_EQ(Tool().RunTool({"machine", "create"}).exitCode, 0);
    }

    static fs::path Scratch(const std::string& name) { return TestMachine::ScratchFolder() / name; }

    // A signed certificate file in the scratch folder.
    std::string Signed(const std::string& name, const std::string& text,
                       const std::string& key = kKey) const {
        WriteHostFile(Scratch(name + ".txt"), text);
        const fs::path file = Scratch(name + ".qzc");
        const ChildResult result =
            RunTool({"sign", Scratch(name + ".txt"), "-o", file, "--key", key});
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return file.string();
    }

    static std::string ProductText(const std::string& name, const std::string& guid) {
        return "QDR_ProductName = " + name + "\nVector Location = x\\" + guid + "\n";
    }

    // A field of the certificate as the library reads it.
    static std::string FieldOf(const std::string& lowerPath, const std::string& field) {
        const CLibraryUtils::SmartComInitializer apartment;
        SQLCertificate store;
        return store.Read(lowerPath.c_str(), kVerificationKey, false) ? ReadField(store, field)
                                                                      : "(unreadable)";
    }

    fs::path folder_;
};

TEST_F(BrevikctlCertificate, SignedInstalledAndRemoved) {
    const std::string file = Signed("one", ProductText("One", "{ABC-1}"));
    EXPECT_EQ(OutputOf({"show", file}),
              "good, 2 values\nQDR_ProductName = One\nVector Location = x\\{ABC-1}\n");
    EXPECT_EQ(OutputOf({"install", file, "--language", "1031", "--beside", "C:\\app\\Product.exe",
                        "--version", "2.1", "--customization-code", "C0DE"}),
              "guid           {ABC-1}\nfile           C:\\app\\one.qzc\n");
    const WCHAR* const entry = u"SOFTWARE\\ONDREL\\Certificates13\\{ABC-1}";
    EXPECT_EQ(TextAt(entry, u"Filename"), "C:\\app\\one.qzc");
    EXPECT_EQ(TextAt(entry, u"Language"), "1031");
    EXPECT_EQ(TextAt(entry, u"Version"), "2.1");
    EXPECT_EQ(TextAt(entry, u"Customization Code"), "C0DE");
    EXPECT_EQ(ReadHostFile(folder_ / "one.qzc"), ReadHostFile(file));
    EXPECT_EQ(FieldOf("c:\\app\\one.qzc", "QDR_ProductName"), "One");

    // Where it lies, under a GUID of its own and the next key.
    const std::string two = Signed("two", ProductText("Two", "{ABC-1}"), kNextKey);
    OutputOf({"install", two, "--language", "1033", "--guid", "{ABC-2}"});
    EXPECT_EQ(OutputOf({"list"}),
              "{ABC-1}  1031  good  C:\\app\\one.qzc\n{ABC-2}  1033  good  " +
                  TextAt(u"SOFTWARE\\ONDREL\\Certificates13\\{ABC-2}", u"Filename") + "\n");
    WriteHostFile(folder_ / "one.qzc", "other");
    fs::remove(two);
    EXPECT_THAT(OutputOf({"list", "--json"}),
                AllOf(StartsWith("{\"guid\":\"{ABC-1}\",\"language\":\"1031\",\"file\":\"C:\\\\app"
                                 "\\\\one.qzc\",\"state\":\"it is no certificate file\","
                                 "\"customizationCode\":\"C0DE\",\"version\":\"2.1\"}\n"),
                      HasSubstr("\"state\":\"the file is missing\"")));

    OutputOf({"remove", "{abc-1}", "--file"});
    EXPECT_FALSE(fs::exists(folder_ / "one.qzc"));
    OutputOf({"remove", "{ABC-2}"});
    EXPECT_EQ(RunTool({"list"}).errors, "brevikctl: no certificates are installed\n");
    EXPECT_THAT(ErrorOf({"remove", "{ABC-1}"}), HasSubstr("certificate list"));
}

// The rows of a file that was replaced, or removed with its file left, are not what programs get.
TEST_F(BrevikctlCertificate, AnotherFileInItsPlaceIsReadAnew) {
    const std::string file = Signed("p", ProductText("Old", "{A}"));
    const std::vector<std::string> install = {"install", file,       "--language",
                                              "1031",    "--beside", folder_.string()};
    OutputOf(install);
    EXPECT_EQ(FieldOf("c:\\app\\p.qzc", "QDR_ProductName"), "Old");
    Signed("p", ProductText("New", "{A}"));
    EXPECT_THAT(ErrorOf(install), HasSubstr("--replace"));
    std::vector<std::string> replace = install;
    replace.push_back("--replace");
    OutputOf(replace);
    EXPECT_EQ(FieldOf("c:\\app\\p.qzc", "QDR_ProductName"), "New");

    OutputOf({"remove", "{A}"});
    EXPECT_TRUE(fs::exists(folder_ / "p.qzc"));
    std::vector<std::string> keys;
    SQLCertificate().TableList(&keys);
    EXPECT_THAT(keys, testing::IsEmpty());
}

TEST_F(BrevikctlCertificate, NothingIsInstalledThatTheLibraryWouldNotFind) {
    const std::string good = Signed("good", ProductText("Good", "{A}"));
    std::string bytes = ReadHostFile(good);
    bytes[40] = static_cast<char>(bytes[40] ^ 1);
    WriteHostFile(Scratch("changed.qzc"), bytes);
    OutputOf({"keygen", Scratch("own.key").string()});
    const std::string foreign =
        Signed("foreign", ProductText("Foreign", "{A}"), Scratch("own.key").string());
    const std::string nameless = Signed("nameless", "QDR_ProductName = Nameless");
    fs::create_directory(folder_ / "it's");
    const std::string deep(250, 'x');
    fs::create_directory(folder_ / deep);
    const struct {
        std::vector<std::string> arguments;
        const char* error;
    } cases[] = {
        {{Scratch("changed.qzc").string(), "--language", "1031"}, "it was changed, or signed with"},
        {{foreign, "--language", "1031"}, "it was changed, or signed with another key"},
        {{Scratch("good.txt").string(), "--language", "1031"}, "it is no certificate file"},
        {{"C:\\none.qzc", "--language", "1031"}, "no file"},
        {{nameless, "--language", "1031"}, "--guid gives it"},
        {{good, "--language", "1600"}, "1600 is no language"},
        {{good, "--language", "66567"}, "66567 is no language"},
        {{good, "--language", "1031", "--guid", "a\\b"}, "is no GUID"},
        {{good, "--language", "1031", "--beside", "C:\\App\\it's"}, "has an apostrophe"},
        {{good, "--language", "1031", "--beside", "C:\\App\\" + deep}, "longer than 259"},
        {{good, "--language", "1031", "--beside", "C:\\App\\none"}, "no file"},
        {{good, "--language", "1031", "--version", std::string(260, '1')}, "longer than 259"},
    };
    for (const auto& row : cases) {
        std::vector<std::string> command = {"install"};
        command.insert(command.end(), row.arguments.begin(), row.arguments.end());
        EXPECT_THAT(ErrorOf(command), HasSubstr(row.error));
    }
    EXPECT_TRUE(fs::is_empty(folder_ / "it's"));
    EXPECT_TRUE(fs::is_empty(folder_ / deep));
    EXPECT_EQ(RunTool({"install", good}).exitCode, 2);

    const ChildResult bad = RunTool({"show", Scratch("changed.qzc").string(), "--json"});
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_THAT(bad.output,
                AllOf(HasSubstr("\"good\":false,\"state\":\"it was changed"),
                      HasSubstr("{\"name\":\"Vector Location\",\"value\":\"x\\\\{A}\"}"),
                      EndsWith("]}\n")));
}

// A file that two entries share is not deleted under one of them; and where programs look below
// another key alone, the entry goes there.
TEST_F(BrevikctlCertificate, EntriesStandWhereProgramsLook) {
    const std::string file = Signed("shared", ProductText("Shared", "{A}"));
    OutputOf({"install", file, "--language", "1031"});
    OutputOf({"install", file, "--language", "1031", "--guid", "{B}"});
    EXPECT_THAT(ErrorOf({"remove", "{A}", "--file"}), HasSubstr("also the certificate of '{B}'"));
    OutputOf({"remove", "{B}"});

    // Another spelling of the GUID takes the place of the one before.
    OutputOf({"install", file, "--language", "1033", "--guid", "{a}"});
    EXPECT_THAT(OutputOf({"list"}), StartsWith("{a}  1033"));

    WriteRegistry("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\ONDREL\\Certificates13]\n");
    OutputOf({"install", file, "--language", "1031"});
    EXPECT_THAT(ReadRegistry(), AllOf(HasSubstr("Wow6432Node\\ONDREL\\Certificates13\\{A}]"),
                                      Not(HasSubstr("[HKEY_LOCAL_MACHINE\\SOFTWARE\\ONDREL"))));
    EXPECT_EQ(TextAt(u"SOFTWARE\\ONDREL\\Certificates13\\{A}", u"Language"), "1031");
    EXPECT_THAT(OutputOf({"list"}), StartsWith("{A}  1031  good"));
    OutputOf({"remove", "{A}"});
    EXPECT_EQ(OutputOf({"list", "--json"}), "");
}

TEST_F(BrevikctlCertificate, ATextThatCannotBeACertificateIsNotSigned) {
    const struct {
        std::string text;
        const char* error;
    } cases[] = {
        {"a=b\nQDR_ProductName = It's\n", "line 2: an apostrophe"},
        {"a=b\n\nc = \"open\nd = e\n", "line 3: a double quote without its partner"},
        {"a=\xFF\n", "it is no UTF-8 text"},
        {std::string("a=b\0c\n", 6), "line 1: a NUL"},
        {"# nothing\n", "it has no field"},
        {"", "it has no field"},
    };
    const std::string target = Scratch("refused.qzc").string();
    for (const auto& row : cases) {
        WriteHostFile(Scratch("refused.txt"), row.text);
        EXPECT_THAT(ErrorOf({"sign", Scratch("refused.txt").string(), "-o", target, "--key", kKey}),
                    HasSubstr(row.error));
        EXPECT_FALSE(fs::exists(target));
    }
    WriteHostFile(Scratch("bare.txt"), "\xEF\xBB\xBFSKUName = x\n");
    const ChildResult bare =
        RunTool({"sign", Scratch("bare.txt").string(), "-o", target, "--key", kKey});
    EXPECT_EQ(bare.exitCode, 0);
    EXPECT_THAT(bare.errors, AllOf(HasSubstr("without QDR_ProductName"), HasSubstr("--guid")));
    EXPECT_EQ(OutputOf({"show", target}), "good, 1 values\nSKUName = x\n");
    EXPECT_THAT(ErrorOf({"sign", Scratch("bare.txt").string(), "-o", target, "--key", target}),
                HasSubstr("is no private key"));
    EXPECT_THAT(ErrorOf({"sign", Scratch("bare.txt").string(), "-o", "C:\\none\\x", "--key", kKey}),
                HasSubstr("the folder of"));
}

// One key after the other: what the present and the next key have signed is good, all else is not.
TEST_F(BrevikctlCertificate, KeysFollowOneAnother) {
    std::vector<std::string> keys;
    std::vector<std::string> texts;
    for (const char* name : {"1.key", "2.key", "3.key"}) {
        std::vector<std::string> command = {"keygen", Scratch(name).string(), "--json"};
        if (!keys.empty()) {
            command.insert(command.end(), {"--present", keys.back()});
        }
        const std::string output = OutputOf(command);
        keys.push_back(Scratch(name).string());
        const std::string marker = "\"verificationKey\":\"";
        const std::size_t start = output.find(marker);
        texts.push_back(start == output.npos ? "" : output.substr(start + marker.size(), 130));
        struct stat status;
        ASSERT_EQ(stat(keys.back().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0600u);
    }
    EXPECT_EQ(texts[0], "");
    for (std::size_t text = 1; text < 3; ++text) {
        for (std::size_t signer = 0; signer < 3; ++signer) {
            const std::string file = Signed("k", ProductText("K", "{K}"), keys[signer]);
            const bool isKnown = signer == text || signer + 1 == text;
            EXPECT_EQ(RunTool({"show", file, "--verification-key", texts[text]}).exitCode,
                      isKnown ? 0 : 1)
                << text << signer;
        }
    }
    const std::string before = ReadHostFile(keys[0]);
    EXPECT_THAT(ErrorOf({"keygen", keys[0]}), HasSubstr("is there already"));
    EXPECT_EQ(ReadHostFile(keys[0]), before);
    EXPECT_THAT(ErrorOf({"keygen", Scratch("4.key").string(), "--present", "C:\\none"}),
                HasSubstr("no file"));
    EXPECT_FALSE(fs::exists(Scratch("4.key")));
}

}  // namespace
