// What lines look like on the debugger output and in the filter.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/clock.h"
#include "support/debug_output.h"
#include "text/Texts.h"
#include "text/VelmarException.h"
#include "trace/TraceOutput.h"
#include "trace/UTrace.h"

namespace {

struct Seen {
    int level;
    std::string client;
    std::string message;
    friend bool operator==(const Seen&, const Seen&) = default;
};
std::vector<Seen> seen;

bool Remember(int level, const char* client, const char* message) {
    seen.push_back({level, client != nullptr ? client : "(null)", message});
    return true;
}

class TraceLines : public testing::Test {
  protected:
    void SetUp() override {
        UTrace::Terminate();
        ASSERT_TRUE(UTrace::Initialize());
        UTrace::SetClientName("KIT");
        seen.clear();
    }
    void TearDown() override { UTrace::Terminate(); }

    DebugOutput output_;
};

TEST_F(TraceLines, EachEntryPointHasItsLevelAndClient) {
    UTrace::SetFilter(Remember);
    UTrace::Trace(7, "%s", "a");
    UTrace::TraceAs(8, "C", "b");
    UTrace::Error("c %d", 1);
    UTrace::ErrorAs("C", "d");
    UTrace::Level2("e");
    UTrace::Level2As("C", "f");
    UTrace::Info("g");
    UTrace::InfoAs(nullptr, "h");
    UTrace::Tagged(9, "i");
    UTrace::TaggedAs(9, "C", "j");
    EXPECT_EQ(seen, (std::vector<Seen>{{7, "KIT", "a"},
                                       {8, "C", "b"},
                                       {1, "KIT", "c 1"},
                                       {1, "C", "d"},
                                       {2, "KIT", "e"},
                                       {2, "C", "f"},
                                       {3, "KIT", "g"},
                                       {3, "(null)", "h"},
                                       {3, "KIT", "i"},
                                       {3, "C", "j"}}));
    EXPECT_EQ(output_.Take(),
              "KIT: a\r\nC: b\r\nKIT: c 1\r\nC: d\r\nKIT: e\r\nC: f\r\nKIT: g\r\nh\r\nKIT: i\r\n"
              "C: j\r\n");
}

TEST_F(TraceLines, LevelTestAndItsOverride) {
    UTrace::SetLevel(4);
    UTrace::SetFlags(UTrace::kFlagDebuggerOutput);
    UTrace::Trace(5, "above");
    UTrace::Trace(4, "at");
    UTrace::SetLevel(0);
    UTrace::Error("dropped");
    { const UTrace::Function scope("F", nullptr); }  // enter and return need no level
    UTrace::SetFlags(UTrace::kFlagDebuggerOutput | UTrace::kFlagAllLevels);
    UTrace::Trace(99, "all");
    EXPECT_EQ(output_.Take(), "KIT: at\r\nKIT: F - enter\r\nKIT: F - return\r\nKIT: all\r\n");
}

TEST_F(TraceLines, DroppedWhileTheTraceIsStopped) {
    UTrace::Terminate();
    {
        const UTrace::Function scope("F", nullptr);
        UTrace::Info("dropped");
        // A tracer keeps the client name of its making.
        ASSERT_TRUE(UTrace::Initialize());
        UTrace::SetClientName("K");
        const UTrace::Function inner("G", nullptr);
        UTrace::Info("in");
    }
    EXPECT_EQ(output_.Take(), "K: G - enter\r\nK:   in\r\nK: G - return\r\nKIT: F - return\r\n");
}

TEST_F(TraceLines, SecondStartChangesNothing) {
    UTrace::SetLevel(2);
    UTrace::SetFlags(1);
    EXPECT_FALSE(UTrace::Initialize());
    char name[64];
    UTrace::GetClientName(name, sizeof name);
    EXPECT_STREQ(name, "KIT");
    EXPECT_EQ(UTrace::GetLevel(), 2);
    EXPECT_EQ(UTrace::GetFlags(), 1);
    UTrace::Terminate();
    EXPECT_TRUE(UTrace::Initialize());
    UTrace::GetClientName(name, sizeof name);
    EXPECT_STREQ(name, "");
    EXPECT_EQ(UTrace::GetLevel(), 0);
    EXPECT_EQ(UTrace::GetFlags(), 3);
}

TEST_F(TraceLines, ClientNameIsCutAndMayBeEmpty) {
    UTrace::SetClientName(std::string(80, 'n').c_str());
    char name[80];
    UTrace::GetClientName(name, sizeof name);
    EXPECT_EQ(name, std::string(63, 'n'));
    UTrace::GetClientName(name, 3);
    EXPECT_STREQ(name, "nn");
    UTrace::GetClientName(nullptr, 3);
    UTrace::SetClientName(nullptr);
    UTrace::Info("x");
    EXPECT_EQ(output_.Take(), ": x\r\n");
}

TEST_F(TraceLines, TracersIndentWhatLiesBetween) {
    std::thread other;
    {
        UTrace::Function outer("outer", "n=%d", 3);
        UTrace::FunctionComponent inner("COMP", "inner", nullptr);
        const UTrace::Function quiet("quiet", UTrace::silent);
        UTrace::Info("deep");
        std::thread([] { UTrace::Info("elsewhere"); }).join();
        EXPECT_EQ(inner.Return(42, nullptr), 42);
        EXPECT_EQ(outer.Return(7, "done %s", "well"), 7);
        EXPECT_EQ(outer.GetResult(), 7);
    }
    UTrace::Info("after");
    EXPECT_EQ(output_.Take(),
              "KIT: outer - n=3\r\n"
              "COMP:   inner - enter\r\n"
              "KIT:       deep\r\n"
              "KIT: elsewhere\r\n"
              "KIT:     quiet - return\r\n"
              "COMP:   inner - return = 42\r\n"
              "KIT: outer - done well\r\n"
              "KIT: after\r\n");
}

TEST_F(TraceLines, SilentIsAMarkerByAddress) {
    {
        UTrace::Function scope("F", "silent");
        EXPECT_EQ(scope.Return(5, UTrace::silent), 5);
        EXPECT_EQ(scope.GetResult(), 5);
    }
    UTrace::Trace(1, UTrace::silent);
    UTrace::Info("end");
    EXPECT_EQ(output_.Take(), "KIT: F - silent\r\nKIT: end\r\n");
}

TEST_F(TraceLines, DriftedDepthIsHealedByTheOuterTracer) {
    {
        const UTrace::Function outer("outer", nullptr);
        alignas(UTrace::Function) unsigned char place[sizeof(UTrace::Function)];
        new (place) UTrace::Function("skipped", nullptr);  // never ended
    }
    UTrace::Info("x");
    const std::string said = output_.Take();
    EXPECT_EQ(said.substr(said.rfind("KIT: x")), "KIT: x\r\n");
}

TEST_F(TraceLines, LongTextIsCutToItsFirst1023Bytes) {
    const std::string text(2000, 'm');
    UTrace::SetFilter(Remember);
    UTrace::Info("%s", text.c_str());
    {
        UTrace::Function scope("F", nullptr);
        scope.Return(0, "%s", text.c_str());
    }
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0].message, text.substr(0, 1023));
    EXPECT_EQ(seen[2].message, "F - " + text.substr(0, 1019));
}

TEST_F(TraceLines, FilterSeesTheBareMessageAndNeverStopsTheDebuggerOutput) {
    UTrace::SetFilter([](int level, const char* client, const char* message) {
        Remember(level, client, message);
        return false;
    });
    UTrace::SetFlags(7);
    const UTrace::Function scope("F", nullptr);
    UTrace::Info("x");
    EXPECT_EQ(seen, (std::vector<Seen>{{4, "KIT", "F - enter"}, {3, "KIT", "x"}}));
    EXPECT_NE(output_.Take().find("  x\r\n"), std::string::npos);
}

TEST_F(TraceLines, TimePrefixStandsBehindTheClientAndAheadOfTheIndentation) {
    UTrace::SetFlags(1 | 4);
    UTrace::SetLevel(4);
    const UTrace::Function scope("F", UTrace::silent);
    const auto before = static_cast<unsigned>(UTrace::Clock() / 1000000);
    UTrace::Info("x");
    const auto after = static_cast<unsigned>(UTrace::Clock() / 1000000);
    unsigned hours = 0;
    unsigned minutes = 0;
    unsigned seconds = 0;
    char milliseconds[4] = {};
    char rest[16] = {};
    const std::string said = output_.Take();
    ASSERT_EQ(std::sscanf(said.c_str(), "KIT: %u:%u:%u.%3[0-9] : %15[^\r]", &hours, &minutes,
                          &seconds, milliseconds, rest),
              5)
        << said;
    EXPECT_EQ(std::string(milliseconds).size(), 3u);
    EXPECT_LT(minutes, 60u);
    EXPECT_LT(seconds, 60u);
    const unsigned total = hours * 3600 + minutes * 60 + seconds;
    EXPECT_GE(total, before);
    EXPECT_LE(total, after);
    EXPECT_NE(said.find(" :   x\r\n"), std::string::npos) << said;
}

TEST_F(TraceLines, ExceptionsAreReportedWithNumberMessageAndNotes) {
    VelmarException failure(Texts::accessDenied);
    UTrace::Exception(failure, nullptr);
    UTrace::Exception(failure, "opening");
    failure.SetNote("100%s");
    UTrace::ExceptionAs("C", failure, "");
    UTrace::ExceptionAs(nullptr, failure, "opening");
    EXPECT_EQ(output_.Take(),
              "KIT: error = -10000, message = \"access denied\"\r\n"
              "KIT: opening: error = -10000, message = \"access denied\"\r\n"
              "C: error = -10000, message = \"access denied\", note = \"100%s\"\r\n"
              "opening: error = -10000, message = \"access denied\", note = \"100%s\"\r\n");
    UTrace::SetFlags(1);
    UTrace::Exception(failure, "below the level");
    EXPECT_EQ(output_.Take(), "");
}

}  // namespace
