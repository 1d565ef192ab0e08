// The frame and its barrier, with calls that fail.

#include "frame/CallFrame.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>

#include "platform/component_model.h"
#include "support/debug_output.h"
#include "text/SystemException.h"
#include "text/Texts.h"
#include "trace/UTrace.h"

namespace {

constexpr int kFailure = 99;

template <typename Forward>
int RunExport(Forward forward) {
    return BrevikConfig::RunCall(
        "the_export", kFailure, [] { UTrace::Info("line"); }, forward);
}

class CallFrame : public testing::Test {
  protected:
    CallFrame() {
        RunExport([] { return 0; });  // the one-time start
        output_.Take();
    }

    DebugOutput output_;
};

TEST_F(CallFrame, ResultPassesUnchanged) {
    EXPECT_EQ(RunExport([] { return 7; }), 7);
    EXPECT_EQ(output_.Take(), "BREVIK KIT: line\r\n");
}

TEST_F(CallFrame, AWriteBeyondTheLimitOnFileSizesFailsAndNoMore) {
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit none = {0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
    std::FILE* const file = std::tmpfile();
    EXPECT_EQ(RunExport([file] { return ftruncate(fileno(file), 1) == 0 ? 0 : errno; }), EFBIG);
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::fclose(file);
}

TEST_F(CallFrame, ExceptionsAreReportedAndBecomeTheFailureResult) {
    EXPECT_EQ(RunExport([]() -> int { throw VelmarException(Texts::accessDenied); }), kFailure);
    EXPECT_EQ(RunExport([]() -> int { throw std::runtime_error("broken"); }), kFailure);
    EXPECT_EQ(RunExport([]() -> int { throw std::bad_alloc(); }), kFailure);
    EXPECT_EQ(RunExport([]() -> int { throw 5; }), kFailure);
    EXPECT_EQ(
        output_.Take(),
        "BREVIK KIT: line\r\n"
        "BREVIK KIT: the_export: error = -10000, message = \"access denied\"\r\n"
        "BREVIK KIT: line\r\n"
        "BREVIK KIT: the_export: error = -3, message = \"runtime error: broken\"\r\n"
        "BREVIK KIT: line\r\n"
        "BREVIK KIT: the_export: error = -1, message = \"memory allocation error\"\r\n"
        "BREVIK KIT: line\r\n"
        "BREVIK KIT: the_export: error = -3, message = \"runtime error: unknown exception\"\r\n");
}

TEST_F(CallFrame, FailingCallLeavesDepthAndApartmentAsTheyWere) {
    std::thread([this] {
        RunExport([]() -> int {
            const UTrace::Function scope("F", nullptr);
            throw std::runtime_error("broken");
        });
        output_.Take();
        UTrace::Info("flat");
        EXPECT_EQ(output_.Take(), "BREVIK KIT: flat\r\n");
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        CoUninitialize();
    }).join();
}

TEST_F(CallFrame, SettingsMadeBetweenCallsStay) {
    UTrace::SetClientName("HOST");
    UTrace::SetLevel(2);
    RunExport([] { return 0; });
    EXPECT_EQ(output_.Take(), "HOST: line\r\n");
    EXPECT_EQ(UTrace::GetLevel(), 2);
}

TEST_F(CallFrame, CancelledThreadEndsBehindTheCall) {
    bool ended = false;
    pthread_t thread;
    ASSERT_EQ(pthread_create(
                  &thread, nullptr,
                  [](void* argument) -> void* {
                      RunExport([] {
                          pthread_cancel(pthread_self());
                          pthread_testcancel();
                          return 0;
                      });
                      *static_cast<bool*>(argument) = true;
                      pthread_testcancel();
                      return nullptr;
                  },
                  &ended),
              0);
    void* result = nullptr;
    pthread_join(thread, &result);
    EXPECT_TRUE(ended);
    EXPECT_EQ(result, PTHREAD_CANCELED);
}

}  // namespace
