// The catalogue's functions as hosts in C see them: on a machine with products, each host a process
// of its own.

#include <brevikconfig.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/installed_products.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;
using namespace InstalledProducts;

class CatalogueExports : public testing::Test {
  protected:
    void SetUp() override { RegisterReader(BREVIK_TEST_READER_COMPONENT); }

    // A host in this folder of drive C:.
    static std::string PutHost(const std::string& folder) {
        const fs::path host = HostPath(folder) / "host";
        fs::create_directories(host.parent_path());
        fs::copy_file(BREVIK_TEST_HOST, host);
        return host;
    }

    // What a host says to these words.
    static std::string Say(const std::vector<std::string>& words) {
        std::vector<std::string> command = {BREVIK_TEST_HOST};
        command.insert(command.end(), words.begin(), words.end());
        return RunChild(command).output;
    }
};

TEST_F(CatalogueExports, ItemsAreReadByGuidAndByName) {
    const std::string text200(200, 'x');
    Install("{One}", "C:\\One\\one.qzc", "Mixer, Mixer Deluxe",
            "three = first, second, third\nlong = " + text200 + "\nquoted = \"a, b\"\n");
    Install("{Two}", "C:\\Two\\two.qzc", "mixer", "three = other\n");
    EXPECT_EQ(Say({"get", "{One}", "three", "get", "{One}", "long", "get", "{One}", "none"}),
              "1 6 first\n1 201 " + text200 + "\n1 1 \n");
    EXPECT_EQ(Say({"get", "{one}", "three", "get", "", "three", "get", "{Two}", "three"}),
              "0 0 (none)\n0 0 (none)\n1 6 other\n");
    EXPECT_EQ(Say({"name", "MIXER", "three", "name", "mixer deluxe", "QDR_ProductName", "name",
                   "Mix", "three", "name", "Mixer", "none"}),
              "1 6 first\n1 6 Mixer\n0 0 (none)\n1 1 \n");
}

TEST_F(CatalogueExports, NothingIsWrittenWithoutACertificate) {
    void* value = &value;
    std::uint32_t size = 9;
    EXPECT_EQ(bvkc_CertificateItemValue("{none}", "x", &value, &size), 0);
    EXPECT_EQ(bvkc_CertificateItemValueByProdName("none", "x", &value, &size), 0);
    EXPECT_EQ(value, static_cast<void*>(&value));
    EXPECT_EQ(size, 9u);
    char* guids = nullptr;
    EXPECT_EQ(bvkc_GetLocalGUIDs(&guids), 0);
    ASSERT_NE(guids, nullptr);
    EXPECT_EQ(*guids, '\0');
    brevik_CoTaskMemFree(guids);
}

TEST_F(CatalogueExports, ProductsOfTheOwnFolderElseOfTheParents) {
    const std::string suite = PutHost("C:\\Program Files\\Suite");
    const std::string launcher = PutHost("C:\\Launcher");
    const std::string tool = PutHost("C:\\Tools");
    Install("{B}", "C:\\Program Files\\Suite\\b.qzc", "B");
    Install("{A}", "C:\\Program Files\\Suite\\A.QZC", "A");
    Register("{B}", "c:\\PROGRAM files\\SUITE\\B.qzc");
    Install("{L}", "C:\\Launcher\\l.qzc", "L");
    Install("{below}", "C:\\Launcher\\below\\l.qzc", "Below");
    EXPECT_EQ(RunChild({suite, "guids"}).output, "2 {A} {B}\n");
    EXPECT_EQ(RunChild({launcher, "start", suite, "guids"}).output, "2 {A} {B}\n");
    EXPECT_EQ(RunChild({launcher, "start", tool, "guids"}).output, "1 {L}\n");
    EXPECT_EQ(RunChild({suite, "start", tool, "guids"}).output, "2 {A} {B}\n");
    EXPECT_EQ(RunChild({tool, "guids"}).output, "0\n");

    // A folder's letters fold without regard to the alphabet.
    const std::string umlaut = PutHost("C:\\\u00DCber\\Suite");
    Install("{U}", "C:\\\u00DCBER\\Suite\\u.qzc", "U");
    fs::rename(HostPath("C:\\\u00DCBER\\Suite\\u.qzc"), HostPath("C:\\\u00DCber\\Suite\\u.qzc"));
    EXPECT_EQ(RunChild({umlaut, "guids"}).output, "1 {U}\n");
}

// No call is left without its failure result, and a later call gets it right.
TEST_F(CatalogueExports, CatalogueThatCannotBeOpenedFailsTheQueryAlone) {
    Install("{G}", "C:\\g.qzc", "G", "x = y\n");
    fs::create_directories(HostPath("C:\\ProgramData"));
    const fs::path folder = HostPath("C:\\ProgramData\\Velmar");
    std::ofstream(folder) << "a file where the database's folder belongs";
    ChildProcess host({BREVIK_TEST_HOST, "get", "{G}", "x", "guids", "ids", "1031", "1033", ".",
                       "wait", "get", "{G}", "x"});
    EXPECT_EQ(host.ReadLine(), "0 0 (none)");
    EXPECT_EQ(host.ReadLine(), "0");
    EXPECT_EQ(host.ReadLine(), "0 1033");
    char* guids = nullptr;
    EXPECT_EQ(bvkc_GetLocalGUIDs(&guids), 0);
    ASSERT_NE(guids, nullptr);
    EXPECT_EQ(*guids, '\0');
    brevik_CoTaskMemFree(guids);
    fs::remove(folder);
    fs::create_directory(folder);
    host.WriteLine("go");
    EXPECT_EQ(host.ReadLine(), "1 2 y");
}

TEST_F(CatalogueExports, HostWithoutAPathHasACatalogueAndALanguage) {
    Install("{G}", "C:\\g.qzc", "G", "x = y\n");
    SetEntry("{G}", {{"Filename", "C:\\g.qzc"}, {"Language", "1036"}});
    const std::vector<std::string> questions = {"get", "{G}", "x", "ids", "1031", "1036"};
    EXPECT_EQ(Say(questions), "1 2 y\n0 1036\n");
    fs::remove(TestMachine::Folder() / "drives/z");
    EXPECT_EQ(Say(questions), "1 2 y\n0 1036\n");
}

}  // namespace
