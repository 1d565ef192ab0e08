#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/drive_files.h"
#include "support/test_machine.h"
#include "support/tool.h"

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

class BrevikctlFile : public testing::Test, protected Tool {
  protected:
    BrevikctlFile() : Tool({"file"}) {}

    static fs::path Drive() { return DriveC(); }
    static void Write(const fs::path& path, const std::string& text) {
        fs::create_directories(path.parent_path());
        WriteHostFile(path, text);
    }
};

TEST_F(BrevikctlFile, CopiesMovesAndDeletesBetweenHostAndMachine) {
    const fs::path source = TestMachine::ScratchFolder() / "source.txt";
    Write(source, "text");
    EXPECT_EQ(OutputOf({"mkdir", "C:\\a\\b"}), "");
    OutputOf({"copy", source, "C:\\a\\b\\copy.txt"});
    EXPECT_EQ(ReadHostFile(Drive() / "a/b/copy.txt"), "text");
    // A folder takes a copy in.
    OutputOf({"copy", source, "c:/A"});
    EXPECT_EQ(ReadHostFile(Drive() / "a/source.txt"), "text");
    OutputOf({"copy", "-r", "C:\\a", "C:\\all"});
    OutputOf({"move", "C:\\a", "C:\\all"});
    EXPECT_EQ(ReadHostFile(Drive() / "all/a/b/copy.txt"), "text");
    EXPECT_EQ(ReadHostFile(Drive() / "all/b/copy.txt"), "text");
    OutputOf({"move", (Drive() / "all/source.txt").string(), "C:\\moved.txt"});
    EXPECT_EQ(ReadHostFile(Drive() / "moved.txt"), "text");
    OutputOf({"delete", "C:\\moved.txt"});
    OutputOf({"delete", "--recursive", "C:\\all"});
    EXPECT_FALSE(fs::exists(Drive() / "moved.txt"));
    EXPECT_FALSE(fs::exists(Drive() / "all"));
    EXPECT_EQ(ReadHostFile(source), "text");

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
    EXPECT_EQ(ReadHostFile(Drive() / "folder/file"), "new");
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
    EXPECT_EQ(RunTool({"copy", "C:\\file"}).exitCode, 2);
}

// The terminal holds back what is written, and so the copy at its first report, until Ctrl-C.
TEST_F(BrevikctlFile, CtrlCStopsACopyAndLeavesNoTarget) {
    Write(Drive() / "big", std::string(100'000, 'x'));
    ToolOnTerminal tool({"file", "copy", "C:\\big", "C:\\copy"}, true);
    tool.Type('\x13');  // Ctrl-S
    kill(tool.Id(), SIGCONT);
    while (!fs::exists(Drive() / "copy")) {
    }
    tool.Type('\x03');  // Ctrl-C
    const std::string shown = tool.ReadAll();
    const int status = tool.Wait();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << shown;
    EXPECT_THAT(shown, HasSubstr("brevikctl: stopped at 'C:\\big'"));
    EXPECT_FALSE(fs::exists(Drive() / "copy"));
}

TEST_F(BrevikctlFile, ATerminalShowsABarAndTakesItAway) {
    Write(Drive() / "file", "text");
    ToolOnTerminal tool({"file", "copy", "C:\\file", "C:\\copy"});
    const std::string shown = tool.ReadAll();
    EXPECT_EQ(tool.Wait(), 0);
    EXPECT_THAT(shown, AllOf(StartsWith("\r\x1b[K[....................]   0% copying C:\\file"),
                             EndsWith("\r\x1b[K")));
}

}  // namespace
