// brevikctl doctor: one fault of each kind is planted in a machine that is well.

#include <gmock/gmock.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "platform/posix/cookies/cookie_file.h"
#include "support/drive_files.h"
#include "support/installed_products.h"
#include "support/registry_machine.h"
#include "support/test_machine.h"
#include "support/tool.h"

namespace {

namespace fs = std::filesystem;
using namespace InstalledProducts;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kCertificate = "C:\\App\\one.qzc";
constexpr const char* kText = "QDR_ProductName = One\n";

fs::path Sibling() {
    return DriveC() / "Program Files/Common Files/Ondrel Shared/DllShared/VelmarHTTPClient13.dll";
}

fs::path Database() {
    return DriveC() / "ProgramData/Velmar/qzc13.db";
}

struct Fault {
    const char* name;
    void (*plant)();
    const char* check;   // what is found wrong
    const char* reason;  // part of what is said
    const char* hint;    // part of how it is to be mended
};

void PrintTo(const Fault& fault, std::ostream* stream) {
    *stream << fault.name;
}

const Fault kFaults[] = {
    {"a drive is gone", [] { fs::rename(DriveC(), TestMachine::ScratchFolder() / "c"); },
     "machine folder", "drives/c' is missing", "put the drive back"},
    {"drive Z is gone", [] { fs::remove(TestMachine::Folder() / "drives/z"); }, "machine folder",
     "drives/z' is missing", "put the drive back"},
    {"a malformed registry",
     [] { WriteRawRegistry(std::string(kRegistryHead) + "[HKEY_LOCAL_MACHINE\\A\n"); }, "registry",
     ":3:", "Mend that line"},
    {"no reader registered", [] { WriteRegistry(""); }, "certificate reader",
     "no certificate reader", "machine create"},
    {"the reader's file is none",
     [] {
         WriteHostFile(DriveC() / "reader.so", "x");
         RegisterReader(DriveC() / "reader.so");
     },
     "certificate reader", "cannot be loaded (0x", "machine create"},
    {"a damaged database", [] { WriteHostFile(Database(), std::string(8192, 'x')); }, "database",
     "cannot be read", "database rebuild"},
    {"a link in place of the database's folder",
     [] {
         fs::rename(Database().parent_path(), DriveC() / "elsewhere");
         fs::create_symlink(DriveC() / "elsewhere", Database().parent_path());
     },
     "database", "Velmar' is a symbolic link", "Move it away"},
    {"a database's folder in which files can be replaced",
     [] { fs::permissions(Database().parent_path(), fs::perms::all); }, "database",
     "has the mode 0777", "chmod 1777"},
    {"a database's folder that is shut",
     [] { fs::permissions(Database().parent_path(), fs::perms(0700)); }, "database",
     "Velmar' of user ", "chmod 1777"},
    {"a database that is shut", [] { fs::permissions(Database(), fs::perms(0600)); }, "database",
     "has the mode 0600", "chmod 0666"},
    {"a folder in place of a file beside the database",
     [] { fs::create_directory(Database() += "-wal"); }, "database", "-wal' is a symbolic link or",
     "when they need it"},
    {"a link in place of the database's lock",
     [] { fs::create_symlink(Database(), Database() += ".repair"); }, "database",
     ".repair' is a symbolic link or", "when they need it"},
    {"a missing certificate", [] { fs::remove(HostPath(kCertificate)); }, "certificates",
     "the file is missing", "certificate remove"},
    {"a certificate that nobody has signed",
     [] { PutFile(kCertificate, ForeignCertificate(kText)); }, "certificates", "'{G}'",
     "certificate sign"},
    {"a certificate with another text than the database",
     [] { PutCertificate(kCertificate, "QDR_ProductName = Two\n"); }, "certificates",
     "the database says something else", "database rebuild"},
    {"a language that is none",
     [] {
         SetEntry("{G}", {{"Filename", kCertificate}, {"Language", "de"}});
     },
     "certificates", "its language 'de'", "--language"},
    {"an entry with an odd path",
     [] {
         SetEntry("{G}", {{"Filename", "C:\\App\\\\one.qzc"}, {"Language", "1031"}});
     },
     "certificates", "'{G}': its path 'C:\\\\App\\\\\\\\one.qzc' names no file",
     "certificate install"},
    {"an entry without a file",
     [] {
         SetEntry("{H}", {{"Language", "1031"}});
     },
     "certificates", "'{H}': its registry key names no file", "certificate install"},
    {"rows of a certificate that went without its entry",
     [] {
         fs::remove(HostPath(kCertificate));
         RemoveEntry("{G}");
     },
     "certificates", "still answers for 'c:\\\\app\\\\one.qzc'", "database rebuild"},
    {"no sibling library", [] { fs::remove(Sibling()); }, "sibling library",
     "neither beside a product", "DllShared"},
    {"a sibling library that is none", [] { WriteHostFile(Sibling(), "x"); }, "sibling library",
     "cannot be loaded: error 193", "as it was delivered"},
    {"another library under the sibling's name beside a product",
     [] { fs::copy(BREVIK_TEST_PLAIN_LIBRARY, DriveC() / "App/VelmarHTTPClient13.dll"); },
     "sibling library", "makes no objects", "another library"},
    {"a folder in place of the cookie store", [] { fs::create_directories(CookieFilePath()); },
     "cookie store", "cannot be read: error 5", "plain file"},
    {"a link in place of the user's folder",
     [] {
         const fs::path folder = fs::path(CookieFilePath()).parent_path();
         setenv("XDG_DATA_HOME", TestMachine::ScratchFolder().c_str(), 1);
         fs::remove_all(folder);
         fs::create_directory_symlink("/", folder);
     },
     "cookie store", "is a link or somebody else's", "move your cookies"},
};

class BrevikctlDoctor : public RegistryMachine, protected Tool {
  protected:
    // A machine that is well, with a product that has been asked for.
    void SetUp() override {
        fs::create_directories(DriveC() / "App");
        fs::create_directories(Sibling().parent_path());
        fs::copy(BREVIK_TEST_COMPONENT, Sibling(), fs::copy_options::overwrite_existing);
        WriteRegistry("");
        RegisterReader(BREVIK_TEST_READER_COMPONENT);
        PutCertificate(kCertificate, kText);
        SetEntry("{G}", {{"Filename", kCertificate}, {"Language", "1031"}});
        ASSERT_EQ(RunTool({"item", "--guid", "{G}", "QDR_ProductName"}).output, "One\n");
    }
};

TEST_F(BrevikctlDoctor, FindsNothingInAMachineThatIsWell) {
    const ChildResult result = RunTool({"doctor"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("good      cookie store\n"));
    EXPECT_THAT(result.output, Not(HasSubstr("wrong")));
    EXPECT_THAT(result.output, HasSubstr("note      built with a development key"));
    EXPECT_THAT(RunTool({"doctor", "--json"}).output,
                HasSubstr("\"good\":true,\"note\":\"built with a development key"));
}

class BrevikctlDoctorFault : public BrevikctlDoctor, public testing::WithParamInterface<Fault> {};

TEST_P(BrevikctlDoctorFault, IsFoundAndNamed) {
    const Fault& fault = GetParam();
    fault.plant();
    const std::string output = RunTool({"doctor", "--json"}).output;
    const std::string wrong = "{\"check\":\"" + std::string(fault.check) + "\",\"state\":\"wrong\"";
    ASSERT_THAT(output, HasSubstr(wrong));
    const std::string said = output.substr(output.find(wrong));
    EXPECT_THAT(said, HasSubstr(fault.reason));
    EXPECT_THAT(said, HasSubstr(fault.hint));
    // Nothing else is named.
    EXPECT_THAT(said.substr(wrong.size()), Not(HasSubstr("wrong")));
    EXPECT_THAT(output.substr(0, output.find(wrong)), Not(HasSubstr("wrong")));
    EXPECT_EQ(RunTool({"doctor"}).exitCode, 1);
}

INSTANTIATE_TEST_SUITE_P(Planted, BrevikctlDoctorFault, testing::ValuesIn(kFaults));

TEST_F(BrevikctlDoctor, MachineCreateOpensTheDatabaseToEveryUserAndFollowsNoLink) {
    const fs::path folder = Database().parent_path();
    fs::permissions(folder, fs::perms(0700));
    fs::permissions(Database(), fs::perms(0600));
    EXPECT_EQ(RunTool({"machine", "create"}).exitCode, 0);
    EXPECT_EQ(RunTool({"doctor"}).exitCode, 0);
    fs::rename(folder, DriveC() / "elsewhere");
    fs::permissions(DriveC() / "elsewhere", fs::perms(0700));
    fs::create_symlink(DriveC() / "elsewhere", folder);
    EXPECT_THAT(RunTool({"machine", "create"}).errors, HasSubstr("brevikctl doctor says why"));
    EXPECT_EQ(fs::status(DriveC() / "elsewhere").permissions(), fs::perms(0700));
}

TEST_F(BrevikctlDoctor, FindsAMachineThatCannotBeMade) {
    WriteHostFile(TestMachine::ScratchFolder() / "file", "x");
    const ChildResult result =
        RunTool({"doctor"}, {{"BREVIK_MACHINE", TestMachine::ScratchFolder() / "file"}});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.output, HasSubstr("cannot be made\n            Let yourself write there"));
    EXPECT_THAT(result.output, HasSubstr("untested  registry\n"));
}

}  // namespace
