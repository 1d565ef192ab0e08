// The library as a file: what it exports, what it brings along, and what it finds beside a host.

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/child_process.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> ExportsOf(const std::string& library) {
    const ChildResult nm = RunChild({"nm", "-D", "--defined-only", library});
    EXPECT_EQ(nm.exitCode, 0) << nm.errors;
    std::vector<std::string> names;
    std::istringstream lines(nm.output);
    for (std::string line; std::getline(lines, line);) {
        names.push_back(line.substr(line.rfind(' ') + 1));
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(Library, ExportsTheTwelveNamesAndNoOther) {
    EXPECT_EQ(ExportsOf(BREVIK_TEST_LIBRARY),
              (std::vector<std::string>{
                  "bvkc_CertificateItemValue", "bvkc_CertificateItemValueByProdName",
                  "bvkc_Dispatch_GetKindletProfileID", "bvkc_Dispatch_InvokeUpdate",
                  "bvkc_Dispatch_IsUpdateOrMessageAvailable", "bvkc_GetLocalGUIDs",
                  "bvkc_GetUserLanguage_Code", "bvkc_GetUserLanguage_Ids",
                  "bvkc_VCM_ReadCookieValue", "bvkc_VCM_ReadOndrelCookieValue",
                  "bvkc_VCM_WriteCookieValue", "bvkc_VCM_WriteOndrelCookieValue"}));
}

TEST(Library, PlatformExportsNoPlainNameOfAnOperatingSystem) {
    const std::vector<std::string> names = ExportsOf(BREVIK_TEST_PLATFORM_LIBRARY);
    EXPECT_GT(names.size(), 50u);
    for (const std::string& name : names) {
        EXPECT_TRUE(name == "brevik_CoTaskMemFree" ||
                    name.find("6brevik8platform") != std::string::npos)
            << name;
    }
}

TEST(Library, WorksInAHostThatHasSuchNamesOfItsOwn) {
    const ChildResult host = RunChild({BREVIK_TEST_OWN_NAMES_HOST});
    EXPECT_EQ(host.exitCode, 0);
}

// A copy of the host in a folder of its own, so that libraries can be put beside it.
class HostFolder : public testing::Test {
  protected:
    void SetUp() override {
        fs::create_directories(folder_);
        fs::copy_file(BREVIK_TEST_HOST, host_);
    }
    static void PutSibling(const fs::path& folder) {
        fs::create_directories(folder);
        fs::copy_file(BREVIK_TEST_COMPONENT, folder / "VelmarHTTPClient13.dll");
    }
    // Lets it run with the rights of another user than the one who starts it.
    bool MakeSetUserId() const {
        const passwd* nobody = getpwnam("nobody");
        fs::permissions(TestMachine::Folder().parent_path(), fs::perms(0711));
        return getuid() == 0 && nobody != nullptr &&
               chown(host_.c_str(), nobody->pw_uid, nobody->pw_gid) == 0 &&
               chmod(host_.c_str(), 04755) == 0;
    }
    static std::string MapsOf(pid_t process) {
        std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
        return {std::istreambuf_iterator<char>(maps), {}};
    }

    fs::path folder_ = TestMachine::ScratchFolder() / "Suite App";
    fs::path host_ = folder_ / "host";
};

TEST_F(HostFolder, SiblingThatIsInstalledLaterIsLoadedAtTheNextCall) {
    const fs::path shared =
        TestMachine::Folder() / "drives/c/Program Files/Common Files/Ondrel Shared/DllShared";
    ChildProcess host(
        {host_, "ids", "1031", ".", "wait", "ids", "1031", ".", "wait", "ids", "1033"});
    EXPECT_EQ(host.ReadLine(), "0 1031");
    EXPECT_EQ(MapsOf(host.Id()).find("VelmarHTTPClient13"), std::string::npos);
    PutSibling(shared);
    fs::permissions(shared, fs::perms(0777));  // no current folder of the search, but found by it
    host.WriteLine("go");
    EXPECT_EQ(host.ReadLine(), "0 1031");
    EXPECT_NE(MapsOf(host.Id()).find("DllShared/VelmarHTTPClient13.dll"), std::string::npos);
    EXPECT_EQ(fs::read_symlink("/proc/" + std::to_string(host.Id()) + "/cwd"), fs::current_path());
    host.WriteLine("go");
    EXPECT_EQ(host.ReadLine(), "0 1033");
    EXPECT_EQ(host.Wait(), 0);
}

TEST_F(HostFolder, NoCryptoOrDatabaseLibraryComesAlong) {
    ChildProcess host({host_, "ids", "1031", ".", "wait"});
    EXPECT_EQ(host.ReadLine(), "0 1031");
    const std::string maps = MapsOf(host.Id());
    EXPECT_NE(maps.find("libbrevikconfig"), std::string::npos);
    for (const char* unwanted : {"sqlite", "sqlcipher", "crypto", "sodium", "libssl"}) {
        EXPECT_EQ(maps.find(unwanted), std::string::npos) << unwanted;
    }
}

TEST_F(HostFolder, EnvironmentIsIgnoredInASetUserIdProcess) {
    const std::vector<std::string> command = {host_, "ids", "1031"};
    const ChildResult plain = RunChild(command, {{"BREVIK_DEBUG_OUTPUT", "-"}});
    EXPECT_NE(plain.errors.find("BREVIK KIT"), std::string::npos);
    if (!MakeSetUserId()) {
        GTEST_SKIP() << "only root can make the program of another user";
    }
    const ChildResult raised = RunChild(command, {{"BREVIK_DEBUG_OUTPUT", "-"}});
    if (raised.exitCode == 127) {
        GTEST_SKIP() << "the build folder cannot be read by another user";
    }
    EXPECT_EQ(raised.output, "0 1031\n");
    EXPECT_EQ(raised.errors.find("BREVIK KIT"), std::string::npos) << raised.errors;
}

// Neither the folder that it was started in, nor that of the program that started it, nor one of
// PATH.
TEST_F(HostFolder, SetUserIdProcessLoadsNoLibraryOfWhoStartedIt) {
    const fs::path foreign = TestMachine::ScratchFolder() / "Foreign";
    PutSibling(foreign);
    fs::copy_file(BREVIK_TEST_HOST, foreign / "launcher");
    fs::current_path(foreign);
    setenv("PATH", foreign.c_str(), 1);
    const auto loads = [&](const std::string& name) {
        ChildProcess host({foreign / "launcher", "start", host_, "ids", "1031", ".", "wait"});
        EXPECT_EQ(host.ReadLine(), "0 1031");
        pid_t child = 0;
        const std::string id = std::to_string(host.Id());
        std::ifstream("/proc/" + id + "/task/" + id + "/children") >> child;
        return MapsOf(child).find(name) != std::string::npos;
    };
    // These are other folders than the host's and its parent's.
    PutSibling(TestMachine::ScratchFolder() / "suite app");
    PutSibling(TestMachine::ScratchFolder() / "foreign");
    EXPECT_TRUE(loads(foreign / "VelmarHTTPClient13.dll"));
    if (!MakeSetUserId()) {
        GTEST_SKIP() << "only root can make the program of another user";
    }
    EXPECT_FALSE(loads("VelmarHTTPClient13"));
    PutSibling(folder_);
    EXPECT_TRUE(loads(folder_ / "VelmarHTTPClient13.dll"));
    fs::permissions(folder_, fs::perms(0777));
    EXPECT_FALSE(loads("VelmarHTTPClient13"));
}

}  // namespace
