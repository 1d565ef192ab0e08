#include "frame/CallFrame.h"

#include <exception>
#include <mutex>
#include <stdexcept>

#include "filesystem/FileSystem.h"
#include "text/VelmarException.h"
#include "trace/UTrace.h"

namespace BrevikConfig {
namespace {

constexpr const char* kClientName = "BREVIK KIT";
constexpr int kTraceLevel = 4;

// Set when the start has run to its end; a start that throws is tried again by the next call.
constinit std::once_flag frame_started;

}  // namespace

void StartFrame() {
    // Most calls do without files: one that cannot start the file library goes on all the same,
    // once the trace is there to tell, and the next call tries again.
    const std::exception_ptr failure = FileSystem::EnsureStarted();
    std::call_once(frame_started, [] {
        UTrace::Initialize();
        UTrace::SetClientName(kClientName);
        UTrace::SetLevel(kTraceLevel);
    });
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
        // Not even the report can be made; the result is all that is left to tell.
    }
}

}  // namespace BrevikConfig
