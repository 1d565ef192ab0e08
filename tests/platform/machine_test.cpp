// The machine's folder: where it is, what is in it, and who may make it.

#include "platform/posix/machine/machine.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;

constexpr char kProbe[] = BREVIK_TEST_BINARY_FOLDER "/platform_probe";

// The probe's lines: machine, user's folder, complete or missing, its file, its parent's file.
std::vector<std::string> Probe(const std::map<std::string, std::string>& environment) {
    ChildProcess child({kProbe}, environment);
    std::vector<std::string> lines;
    for (int line = 0; line < 5; ++line) {
        lines.push_back(child.ReadLine());
    }
    EXPECT_EQ(child.Wait(), 0);
    return lines;
}

mode_t ModeOf(const fs::path& path) {
    struct stat status = {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

TEST(Machine, IsTheOneThatTheEnvironmentNames) {
    if (fs::exists("/var/lib/brevikconfig")) {
        GTEST_SKIP() << "this computer has a machine of its own";
    }
    const fs::path root = TestMachine::ScratchFolder() / "choice";
    fs::create_directories(root);
    const fs::path before = fs::current_path();
    fs::current_path(root);
    const struct {
        std::map<std::string, std::string> environment;
        std::string machine;
    } cases[] = {
        {{{"BREVIK_MACHINE", root / "named/"}}, root / "named"},
        {{{"BREVIK_MACHINE", "near/by"}}, root / "near/by"},
        {{{"BREVIK_MACHINE", ""}, {"XDG_DATA_HOME", root / "data"}, {"HOME", root / "home"}},
         root / "data/brevikconfig"},
        {{{"BREVIK_MACHINE", ""}, {"XDG_DATA_HOME", "relative"}, {"HOME", root / "home"}},
         root / "home/.local/share/brevikconfig"},
        {{{"BREVIK_MACHINE", ""}, {"XDG_DATA_HOME", ""}, {"HOME", root / "other"}},
         root / "other/.local/share/brevikconfig"},
    };
    for (const auto& row : cases) {
        const std::vector<std::string> lines = Probe(row.environment);
        EXPECT_EQ(lines[0], row.machine);
        EXPECT_EQ(lines[2], "complete") << row.machine;
        EXPECT_TRUE(fs::is_directory(fs::path(row.machine) / "drives/c/Windows")) << row.machine;
    }
    EXPECT_EQ(ModeOf(root / "home/.local/share/brevikconfig"), 0700u);
    fs::current_path(before);
}

TEST(Machine, OfAllUsersHasItsModesUnderAnyMask) {
    const std::string script =
        "mount -t tmpfs none /var/lib && umask 0$1 && cd /var/lib &&"
        "mkdir -p brevikconfig/drives/c && \"$0\" machine create &&"
        "stat -c %a brevikconfig brevikconfig/drives brevikconfig/drives/c brevikconfig/users "
        "brevikconfig/drives/c/ProgramData brevikconfig/registry.reg";
    if (RunChild({"unshare", "-rm", "mount", "-t", "tmpfs", "none", "/var/lib"}).exitCode != 0) {
        GTEST_SKIP() << "no mount space can be had";
    }
    for (const char* mask : {"077", "002"}) {
        const ChildResult result =
            RunChild({"unshare", "-rm", "sh", "-c", script, BREVIK_TEST_TOOL, mask},
                     {{"BREVIK_MACHINE", ""}});
        EXPECT_TRUE(result.output.ends_with("\n755\n755\n755\n1777\n1777\n644\n"))
            << mask << result.output;
    }
}

TEST(Machine, OfAllUsersThatCannotBeLookedAtIsNotReplacedByAnother) {
    const char* script =
        "mount -t tmpfs none /var/lib && ln -s brevikconfig /var/lib/brevikconfig &&"
        "$0 | head -n 1";
    const ChildResult result =
        RunChild({"unshare", "-rm", "sh", "-c", script, kProbe},
                 {{"BREVIK_MACHINE", ""}, {"HOME", TestMachine::ScratchFolder() / "home"}});
    if (result.output.empty()) {
        GTEST_SKIP() << "no mount space can be had";
    }
    EXPECT_EQ(result.output, "/dev/null/brevikconfig\n");
}

TEST(Machine, KeepsWhatSomebodyTookAway) {
    const fs::path machine = TestMachine::ScratchFolder() / "without-z";
    Probe({{"BREVIK_MACHINE", machine}});
    fs::remove(machine / "drives/z");
    const std::vector<std::string> lines = Probe({{"BREVIK_MACHINE", machine}});
    EXPECT_FALSE(fs::exists(fs::symlink_status(machine / "drives/z")));
    EXPECT_EQ(lines[3], "") << "the host's file lies on no drive";
}

TEST(Machine, ThatCannotBeMadeLeavesTheHostItsPaths) {
    const std::vector<std::string> lines = Probe({{"BREVIK_MACHINE", "/dev/null/machine"}});
    EXPECT_EQ(lines[0], "/dev/null/machine");
    EXPECT_EQ(lines[1], "");
    EXPECT_EQ(lines[2], "missing");
    EXPECT_TRUE(lines[3].starts_with("Z:\\") && lines[3].ends_with("\\platform_probe")) << lines[3];
}

TEST(Machine, IsMadeByManyProcessesAtOnce) {
    for (int round = 0; round < 5; ++round) {
        const fs::path machine = TestMachine::ScratchFolder() / ("crowd" + std::to_string(round));
        std::vector<std::unique_ptr<ChildProcess>> children;
        for (int child = 0; child < 8; ++child) {
            children.push_back(std::make_unique<ChildProcess>(
                std::vector<std::string>{kProbe},
                std::map<std::string, std::string>{{"BREVIK_MACHINE", machine}}));
        }
        for (const auto& child : children) {
            child->ReadLine();
            EXPECT_NE(child->ReadLine(), "");
            EXPECT_EQ(child->ReadLine(), "complete");
        }
    }
}

TEST(Machine, KeepsTheUsersFolderToTheUser) {
    const fs::path folder = Machine::Current().UserFolder();
    EXPECT_EQ(folder.parent_path(), fs::path(Machine::Current().Folder()) / "users");
    EXPECT_EQ(ModeOf(folder), 0700u);

    // Made anew when it went away.
    fs::remove(folder);
    EXPECT_EQ(Machine::Current().UserFolder(), folder);
    EXPECT_EQ(ModeOf(folder), 0700u);

    // Where somebody else was first with the name, the user's own data folder has a place.
    const fs::path data = TestMachine::ScratchFolder() / "data";
    const fs::path own = data / "brevikconfig/users" / folder.filename();
    ASSERT_EQ(setenv("XDG_DATA_HOME", data.c_str(), 1), 0);
    fs::remove(folder);
    fs::create_directory_symlink(TestMachine::ScratchFolder(), folder);
    EXPECT_EQ(Machine::Current().UserFolder(), own);
    EXPECT_EQ(ModeOf(own), 0700u);
    fs::remove(folder);
    fs::create_directory(folder);
    if (geteuid() == 0) {
        ASSERT_EQ(chown(folder.c_str(), 12345, 12345), 0);
        EXPECT_EQ(Machine::Current().UserFolder(), own);
    }
    fs::remove(folder);
}

}  // namespace
