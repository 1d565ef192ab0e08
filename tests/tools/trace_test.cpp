#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/viewer_window.h"
#include "support/test_machine.h"
#include "support/tool.h"
#include "trace/TraceRecord.h"

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;
using UTrace::TraceRecord;

std::string Waiting() {
    return "brevikctl: waiting for trace lines of the machine '" + TestMachine::Folder().string() +
           "'; Ctrl-C ends";
}

TraceRecord MakeRecord(int level, const std::string& client, const std::string& text) {
    TraceRecord record = {};
    record.size = TraceRecord::kEmptySize + static_cast<std::uint32_t>(text.size());
    record.magic = TraceRecord::kMagic;
    record.level = level;
    std::memcpy(record.client, client.data(), client.size());
    std::memcpy(record.text, text.data(), text.size());
    return record;
}

LRESULT Send(HWND window, const void* bytes, std::size_t size) {
    COPYDATASTRUCT data = {TraceRecord::kMagic, static_cast<DWORD>(size), const_cast<void*>(bytes)};
    return SendMessageTimeoutW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data),
                               SMTO_BLOCK | SMTO_ABORTIFHUNG, 50, nullptr);
}

LRESULT Send(const TraceRecord& record) {
    return Send(FindWindowW(UTrace::kViewerClass, nullptr), &record, record.size);
}

// A viewer with both its outputs in one, started and waiting.
class Viewer : public ChildProcess {
  public:
    explicit Viewer(const std::string& options = "")
        : ChildProcess({"sh", "-c", "exec \"$0\" trace " + options + " 2>&1", BREVIK_TEST_TOOL}) {
        EXPECT_EQ(ReadLine(), Waiting());
    }
};

bool IsSocketLeft() {
    for (const auto& entry :
         std::filesystem::directory_iterator(TestMachine::RuntimeFolder() / "brevikconfig")) {
        if (entry.is_socket()) {
            return true;
        }
    }
    return false;
}

TEST(BrevikctlTrace, ShowsRecordsUntilItIsStopped) {
    for (const int signal : {SIGINT, SIGTERM}) {
        Viewer viewer;
        ASSERT_EQ(Send(MakeRecord(3, "BREVIK KIT", "    two steps in")), TRUE);
        EXPECT_THAT(viewer.ReadLine(),
                    MatchesRegex("[0-9][0-9]:[0-9][0-9]:[0-9][0-9]\\.[0-9][0-9][0-9] +" +
                                 std::to_string(getpid()) + " BREVIK KIT 3      two steps in"));
        TraceRecord tagged = MakeRecord(3, "", "");
        tagged.tag = 1;
        tagged.channel = 4000000000;
        EXPECT_EQ(Send(tagged), TRUE);
        EXPECT_THAT(viewer.ReadLine(), EndsWith("  3#4000000000  "));
        viewer.Signal(signal);
        EXPECT_EQ(viewer.Wait(), 0);
        EXPECT_FALSE(IsSocketLeft());
        EXPECT_EQ(FindWindowW(UTrace::kViewerClass, nullptr), nullptr);
    }
}

TEST(BrevikctlTrace, FiltersByLevelAndClient) {
    Viewer viewer("--level 3 --client 'A B'");
    Send(MakeRecord(4, "A B", "level"));
    Send(MakeRecord(1, "A", "client"));
    Send(MakeRecord(1, "A B C", "longer client"));
    TraceRecord lost = MakeRecord(1, "A", "2650 lines");
    lost.tag = 1;
    lost.channel = TraceRecord::kLostChannel;
    Send(lost);
    Send(MakeRecord(-1, "A B", "first"));
    Send(MakeRecord(3, "A B", "second"));
    EXPECT_THAT(viewer.ReadLine(), EndsWith(" A 1  2650 lines")) << "they may have been wanted";
    EXPECT_THAT(viewer.ReadLine(), EndsWith(" A B -1  first"));
    EXPECT_THAT(viewer.ReadLine(), EndsWith(" A B 3  second"));
}

TEST(BrevikctlTrace, JsonIsAlwaysWellFormed) {
    Viewer viewer("--json");
    TraceRecord record = MakeRecord(-2147483647, "cut\xE2\x82",
                                    "\"\\\x1b[0m\n\x7F \xC2\x9B \xC3\xA9 \xF0\x9F\x98\x80");
    record.tag = 1;
    record.channel = 9;
    Send(record);
    EXPECT_THAT(viewer.ReadLine(),
                AllOf(MatchesRegex("\\{\"time\":\"20[0-9-]+T[0-9:]+\\.[0-9]{3}Z\",.*"),
                      EndsWith("\"pid\":" + std::to_string(getpid()) +
                               ",\"level\":-2147483647,\"channel\":9,\"tag\":1,"
                               "\"client\":\"cut\xEF\xBF\xBD\",\"text\":\"\\\"\\\\\\u001b[0m\\u000a"
                               "\\u007f \\u009b \xC3\xA9 \xF0\x9F\x98\x80\"}")));
    record = MakeRecord(1, "c", "2650 lines");
    record.tag = 1;
    record.channel = TraceRecord::kLostChannel;
    Send(record);
    EXPECT_THAT(viewer.ReadLine(), EndsWith("\"text\":\"2650 lines\",\"lost\":2650}"));
    Send(MakeRecord(1, std::string(63, 'c'), std::string(1023, '\xFF')));
    std::string replaced;
    for (int i = 0; i < 1023; ++i) {
        replaced += "\xEF\xBF\xBD";
    }
    EXPECT_THAT(viewer.ReadLine(), EndsWith("\"client\":\"" + std::string(63, 'c') +
                                            "\",\"text\":\"" + replaced + "\"}"));
}

TEST(BrevikctlTrace, MalformedPacketsAreReportedAndSkipped) {
    Viewer viewer;
    const HWND window = FindWindowW(UTrace::kViewerClass, nullptr);
    const auto spoil = [window](auto change) {
        TraceRecord record = MakeRecord(3, "client", "text");
        std::size_t size = record.size;
        change(record, size);
        EXPECT_EQ(Send(window, &record, size), TRUE);
    };
    spoil([](TraceRecord& record, std::size_t&) { record.magic ^= 1; });
    spoil([](TraceRecord& record, std::size_t&) { ++record.size; });
    spoil([](TraceRecord& record, std::size_t& size) { record.size = 81, size = 81; });
    spoil([](TraceRecord&, std::size_t& size) { size = 1; });
    spoil([](TraceRecord& record, std::size_t&) { record.client[63] = 'x'; });
    spoil([](TraceRecord& record, std::size_t&) { std::memset(record.client, 'x', 64); });
    spoil([](TraceRecord& record, std::size_t&) { record.text[1] = '\0'; });
    spoil([](TraceRecord& record, std::size_t&) { record.text[4] = 'x'; });
    const std::string large(70000, 'x');
    EXPECT_EQ(Send(window, large.data(), large.size()), TRUE);
    Send(MakeRecord(3, "client", "good"));
    for (int i = 0; i < 9; ++i) {
        EXPECT_THAT(viewer.ReadLine(), StartsWith("brevikctl: skipped a packet of ")) << i;
    }
    EXPECT_THAT(viewer.ReadLine(), EndsWith(" client 3  good"));
}

TEST(BrevikctlTrace, TakesTheSendersOfItsMachine) {
    Viewer viewer;
    const std::filesystem::path link = TestMachine::ScratchFolder() / "link";
    std::filesystem::create_directory_symlink(TestMachine::Folder(), link);
    const auto sendFrom = [](const std::string& machine) {
        const pid_t child = fork();
        if (child == 0) {
            setenv("BREVIK_MACHINE", machine.c_str(), 1);
            _exit(Send(MakeRecord(3, "child", machine)) == TRUE ? 0 : 1);
        }
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status == 0, machine.find("other") == std::string::npos) << machine;
        return std::to_string(child);
    };
    sendFrom(TestMachine::ScratchFolder() / "other");
    const std::string child = sendFrom(link.string() + "/./");
    EXPECT_THAT(viewer.ReadLine(), EndsWith(" " + child + " child 3  " + link.string() + "/./"));
    Send(MakeRecord(3, "parent", "from the parent"));
    EXPECT_THAT(viewer.ReadLine(),
                EndsWith(" " + std::to_string(getpid()) + " parent 3  from the parent"));
}

TEST(BrevikctlTrace, OneViewerAtATimeAndTheNextTakesOver) {
    {
        Viewer killed;
        const ChildResult second = Tool().RunTool({"trace"});
        EXPECT_EQ(second.exitCode, 1);
        EXPECT_THAT(second.errors, HasSubstr("already running"));
        EXPECT_EQ(second.output, "");
        killed.Signal(SIGKILL);
        killed.Wait();
    }
    EXPECT_TRUE(IsSocketLeft());
    EXPECT_EQ(FindWindowW(UTrace::kViewerClass, nullptr), nullptr);
    Viewer next;
    EXPECT_EQ(Send(MakeRecord(1, "client", "hello")), TRUE);
    EXPECT_THAT(next.ReadLine(), EndsWith("hello"));
}

TEST(BrevikctlTrace, AClosedOutputEndsItQuietly) {
    ChildProcess viewer({"sh", "-c",
                         "{ { \"$0\" trace 2>&3; echo \"code $?\" >&3; } |"
                         "  { read line; echo \"$line\" >&3; }; } 3>&1",
                         BREVIK_TEST_TOOL});
    EXPECT_EQ(viewer.ReadLine(), Waiting());
    ASSERT_EQ(Send(MakeRecord(3, "client", "read")), TRUE);
    EXPECT_THAT(viewer.ReadLine(), EndsWith("read"));
    // The reader is going; the viewer learns it from one of the next lines.
    while (Send(MakeRecord(3, "client", "unread")) == TRUE) {
    }
    EXPECT_EQ(viewer.ReadLine(), "code 0");
}

TEST(BrevikctlTrace, NothingOfARecordSteersTheTerminal) {
    setenv("TERM", "xterm", 1);
    const auto show = [](const char* noColor, const TraceRecord& record) {
        setenv("NO_COLOR", noColor, 1);
        const ToolOnTerminal tool({"trace"});
        tool.ReadLine();
        Send(record);
        return tool.ReadLine();
    };
    const TraceRecord record = MakeRecord(1, "a\nb",
                                          "\x1b]0;title\x07\r\xC2\x9B"
                                          "31m\xE2\x80\xAE\t\xFF");
    const std::string safe =
        " a\\x0Ab 1  \\x1B]0;title\\x07\\x0D\\u009B31m\\u202E\\x09\xEF\xBF\xBD";
    EXPECT_THAT(show("1", record), AllOf(HasSubstr(safe), Not(HasSubstr("\x1b"))));
    EXPECT_THAT(show("", record), AllOf(StartsWith("\x1b[31m"), EndsWith(safe + "\x1b[0m\r\n")));
}

TEST(Brevikctl, TellsWhatItCanDo) {
    const ChildResult help = Tool().RunTool({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.output, AllOf(HasSubstr("trace"), HasSubstr("Exit codes: 0 ")));
    EXPECT_THAT(
        Tool().RunTool({"--version"}).output,
        MatchesRegex("brevikctl [0-9]+\\.[0-9]+\\.[0-9]+\nbuilt with a development key.*\n"));
    for (const std::vector<std::string>& misuse :
         {std::vector<std::string>{}, {"trac"}, {"trace", "--level", "high"}, {"trace", "more"}}) {
        const ChildResult result = Tool().RunTool(misuse);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, AllOf(StartsWith("brevikctl: "), HasSubstr("\nTry: brevikctl")));
    }
}

}  // namespace
