#include <gmock/gmock.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/posix/scoped_descriptor.h"
#include "platform/types.h"
#include "support/child_process.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

class BrevikctlFile : public testing::Test {
  protected:
    void SetUp() override { fs::create_directories(Drive()); }

    static fs::path Drive() { return TestMachine::Folder() / "drives/c"; }

    static ChildResult Run(const std::vector<std::string>& arguments) {
        std::vector<std::string> command = {BREVIK_TEST_TOOL, "file"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return RunChild(command);
    }

    // The output of a command that has nothing to complain about.
    static std::string OutputOf(const std::vector<std::string>& arguments) {
        const ChildResult result = Run(arguments);
        EXPECT_EQ(result.exitCode, 0) << arguments.front();
        EXPECT_EQ(result.errors, "") << arguments.front();
        return result.output;
    }

    // What a command that fails says.
    static std::string ErrorOf(const std::vector<std::string>& arguments) {
        const ChildResult result = Run(arguments);
        EXPECT_EQ(result.exitCode, 1) << arguments.front();
        EXPECT_EQ(result.output, "") << arguments.front();
        EXPECT_THAT(result.errors, StartsWith("brevikctl: ")) << arguments.front();
        return result.errors;
    }

    static void Write(const fs::path& path, const std::string& text) {
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
    }
    static std::string Read(const fs::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

TEST_F(BrevikctlFile, CopiesMovesAndDeletesBetweenHostAndMachine) {
    const fs::path source = TestMachine::ScratchFolder() / "source.txt";
    Write(source, "text");
    EXPECT_EQ(OutputOf({"mkdir", "C:\\a\\b"}), "");
    OutputOf({"copy", source, "C:\\a\\b\\copy.txt"});
    EXPECT_EQ(Read(Drive() / "a/b/copy.txt"), "text");
    // A folder takes a copy in.
    OutputOf({"copy", source, "c:/A"});
    EXPECT_EQ(Read(Drive() / "a/source.txt"), "text");
    OutputOf({"copy", "-r", "C:\\a", "C:\\all"});
    OutputOf({"move", "C:\\a", "C:\\all"});
    EXPECT_EQ(Read(Drive() / "all/a/b/copy.txt"), "text");
    EXPECT_EQ(Read(Drive() / "all/b/copy.txt"), "text");
    OutputOf({"move", (Drive() / "all/source.txt").string(), "C:\\moved.txt"});
    EXPECT_EQ(Read(Drive() / "moved.txt"), "text");
    OutputOf({"delete", "C:\\moved.txt"});
    OutputOf({"delete", "--recursive", "C:\\all"});
    EXPECT_FALSE(fs::exists(Drive() / "moved.txt"));
    EXPECT_FALSE(fs::exists(Drive() / "all"));
    EXPECT_EQ(Read(source), "text");

    // A link on the way is followed, the one that is meant is not.
    fs::create_directory_symlink(TestMachine::ScratchFolder(), Drive() / "link");
    OutputOf({"delete", (Drive() / "link/../scratch/source.txt").string()});
    EXPECT_FALSE(fs::exists(source));
}

TEST_F(BrevikctlFile, BrokenLinksAreShownAndDeleted) {
    fs::create_directory(Drive() / "t");
    fs::create_symlink("nowhere", Drive() / "t/link");
    EXPECT_THAT(OutputOf({"list", "C:\\t"}),
                MatchesRegex("l---a            0 [-0-9]+ [:0-9]+ link\n"));
    EXPECT_THAT(OutputOf({"stat", "C:\\t\\link"}), HasSubstr("\nkind           broken link\n"));
    EXPECT_EQ(OutputOf({"size", "C:\\t"}), "0\n");
    OutputOf({"delete", "C:\\t\\link"});
    EXPECT_TRUE(fs::is_empty(Drive() / "t"));
}

TEST_F(BrevikctlFile, TellsOfFilesAndFolders) {
    Write(Drive() / "t/one.txt", std::string(1000, 'x'));
    Write(Drive() / "t/below/\xC3\xA9t\xC3\xA9.TXT", std::string(234, 'x'));
    EXPECT_EQ(OutputOf({"size", "C:\\t"}), "1234\n");
    EXPECT_EQ(OutputOf({"size", "--shallow", "C:\\t"}), "1000\n");
    EXPECT_EQ(OutputOf({"find", "C:\\t", "*.txt"}), "C:\\t\\one.txt\n");
    EXPECT_EQ(OutputOf({"find", "-r", "C:\\t", "*.txt"}),
              "C:\\t\\one.txt\nC:\\t\\below\\\xC3\xA9t\xC3\xA9.TXT\n");
    EXPECT_EQ(OutputOf({"find", "--folders", "--json", "C:\\t", "b*"}),
              "{\"path\":\"C:\\\\t\\\\below\"}\n");
    EXPECT_EQ(OutputOf({"find", "C:\\t", "none"}), "");
    EXPECT_EQ(OutputOf({"relative", "C:\\t\\one.txt", "C:\\t\\below"}), "./../one.txt\n");

    const std::string facts = OutputOf({"stat", "--json", "C:\\T\\ONE.txt"});
    EXPECT_THAT(facts, AllOf(StartsWith("{\"path\":\"C:\\\\T\\\\ONE.txt\",\"host\":\""),
                             HasSubstr("/drives/c/t/one.txt\",\"kind\":\"file\",\"size\":1000,"
                                       "\"attributes\":[\"archive\"],\"created\":\"")));
    EXPECT_THAT(OutputOf({"stat", "C:\\t"}), HasSubstr("\nkind           folder\n"));
    EXPECT_THAT(OutputOf({"list", "C:\\t"}),
                AllOf(MatchesRegex("(.*\n)?----a         1000 [-0-9]+ [:0-9]+ one.txt\n(.*\n)?"),
                      MatchesRegex("(.*\n)?d----              [-0-9]+ [:0-9]+ below\n(.*\n)?")));
    EXPECT_THAT(OutputOf({"list", "--json", "C:\\t\\below"}),
                StartsWith("{\"path\":\"C:\\\\t\\\\below\\\\\xC3\xA9t\xC3\xA9.TXT\","));
    EXPECT_THAT(OutputOf({"volume", "--json", "C:\\t"}),
                AllOf(StartsWith("{\"root\":\"c:\\\\\","), HasSubstr("\"removable\":false")));
    EXPECT_THAT(OutputOf({"volume"}), StartsWith("root           z:\\\n"));
}

TEST_F(BrevikctlFile, FailuresTellThePathTheReasonAndWhatToDo) {
    Write(Drive() / "file", "old");
    Write(Drive() / "folder/file", "new");
    EXPECT_THAT(ErrorOf({"copy", "C:\\file", "C:\\folder"}), HasSubstr("file exists\nNothing is"));
    EXPECT_EQ(Read(Drive() / "folder/file"), "new");
    EXPECT_THAT(ErrorOf({"copy", "C:\\folder", "C:\\new"}),
                HasSubstr("'C:\\folder' is a folder\n--recursive "));
    EXPECT_THAT(ErrorOf({"delete", "C:\\folder"}),
                HasSubstr("'C:\\folder': folder not empty\n--recursive "));
    for (const char* command : {"delete", "stat"}) {
        EXPECT_THAT(ErrorOf({command, "C:\\none"}), HasSubstr("'C:\\none': file not found\n"));
    }
    EXPECT_THAT(ErrorOf({"move", "C:\\none", "C:\\new"}), HasSubstr("file not found\n"));
    EXPECT_THAT(ErrorOf({"list", "C:\\none"}), HasSubstr("file path not found\n"));
    EXPECT_THAT(ErrorOf({"stat", "1:\\x"}), HasSubstr("'1:\\x': invalid file path\nA path is"));
    EXPECT_THAT(ErrorOf({"mkdir", "C:\\file\\x"}), HasSubstr("'C:\\file': file exists\n"));
    EXPECT_THAT(ErrorOf({"relative", "C:\\a", "Z:\\a"}), HasSubstr("one volume to another"));
    EXPECT_EQ(Run({"copy", "C:\\file"}).exitCode, 2);
}

// The terminal holds back what is written, and so the copy at its first report, until Ctrl-C.
TEST_F(BrevikctlFile, CtrlCStopsACopyAndLeavesNoTarget) {
    Write(Drive() / "big", std::string(100'000, 'x'));
    int primary = -1;
    const pid_t child = forkpty(&primary, nullptr, nullptr, nullptr);
    if (child == 0) {
        raise(SIGSTOP);
        execl(BREVIK_TEST_TOOL, "brevikctl", "file", "copy", "C:\\big", "C:\\copy", nullptr);
        _exit(127);
    }
    const ScopedDescriptor terminal(primary);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, WUNTRACED), child);
    ASSERT_EQ(write(primary, "\x13", 1), 1);  // Ctrl-S
    kill(child, SIGCONT);
    while (!fs::exists(Drive() / "copy") && waitpid(child, &status, WNOHANG) == 0) {
    }
    ASSERT_EQ(write(primary, "\x03", 1), 1);  // Ctrl-C
    std::string shown;
    for (char byte = 0; read(primary, &byte, 1) == 1;) {
        shown += byte;
    }
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << shown;
    EXPECT_THAT(shown, HasSubstr("brevikctl: stopped at 'C:\\big'"));
    EXPECT_FALSE(fs::exists(Drive() / "copy"));
}

TEST_F(BrevikctlFile, ATerminalShowsABarAndTakesItAway) {
    Write(Drive() / "file", "text");
    int primary = -1;
    const pid_t child = forkpty(&primary, nullptr, nullptr, nullptr);
    if (child == 0) {
        execl(BREVIK_TEST_TOOL, "brevikctl", "file", "copy", "C:\\file", "C:\\copy", nullptr);
        _exit(127);
    }
    const ScopedDescriptor terminal(primary);
    std::string shown;
    for (char byte = 0; read(primary, &byte, 1) == 1;) {
        shown += byte;
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_THAT(shown, AllOf(StartsWith("\r\x1b[K[....................]   0% copying C:\\file"),
                             EndsWith("\r\x1b[K")));
}

}  // namespace
