#include "frame/CallFrame.h"

#include <atomic>
#include <exception>
#include <stdexcept>

#include "filesystem/FileSystem.h"
#include "text/VelmarException.h"
#include "trace/TraceState.h"
#include "trace/UTrace.h"

namespace BrevikConfig {
namespace {

constexpr const char* kClientName = "BREVIK KIT";
constexpr int kTraceLevel = 4;

// Set when the trace's start has run to its end.
constinit std::atomic<bool> trace_started = false;

void StartTrace() {
    if (trace_started) {
        return;
    }
    // No line is made before all of this is set. A call of a library that is loaded in here gets
    // through: its thread may take the lock again.
    const VelmarAutoCriticalSection hold(UTrace::Lock());
    if (!trace_started) {
        UTrace::Initialize();
        UTrace::SetClientName(kClientName);
        UTrace::SetLevel(kTraceLevel);
        trace_started = true;
    }
}

}  // namespace

void StartFrame() {
    // Most calls need no files: one that cannot start the file library reports that, once there is
    // a trace, and goes on. The next call tries again.
    const std::exception_ptr failure = FileSystem::EnsureStarted();
    StartTrace();
    if (failure != nullptr) {
        try {
            std::rethrow_exception(failure);
        } catch (...) {
            ReportException("FileSystem_Start");
        }
    }
}

void ReportException(const char* exportName) noexcept {
    try {
        try {
            throw;
        } catch (const std::exception& caught) {
            UTrace::Exception(VelmarException(caught), exportName);
        } catch (...) {
            UTrace::Exception(VelmarException(std::runtime_error("unknown exception")), exportName);
        }
    } catch (...) {
        // Without memory for the report there is still the result.
    }
}

}  // namespace BrevikConfig
