// The trace's process-wide settings, its lock and its per-thread depth.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "platform/errors.h"
#include "platform/viewer_window.h"
#include "text/CriticalSection.h"
#include "trace/UTrace.h"

namespace UTrace {

// Never destroyed: a host may call on while the process ends.
struct TraceState {
    // Words that any thread may read and write without the lock.
    std::atomic<bool> started = false;
    std::atomic<int> level = 0;
    std::atomic<int> flags = kFlagDebuggerOutput | kFlagAllLevels;
    std::atomic<Filter> filter = nullptr;

    // Guarded by the lock.
    std::array<char, 64> clientName = {};
    bool hasLooked = false;  // for a viewer, since the start
    HWND viewerWindow = nullptr;
    DWORD lastLookup = 0;
    std::uint32_t lost = 0;  // lines that the viewer was too slow for, and does not know of yet
    DWORD lastLoss = 0;      // when it was last tried in vain
};

TraceState& State();

// Puts the thread's last error back at its end: a line between a failing call and the look at its
// error must not change what is seen.
class KeepLastError {
  public:
    KeepLastError() : code_(GetLastError()) {}
    KeepLastError(const KeepLastError&) = delete;
    KeepLastError& operator=(const KeepLastError&) = delete;
    ~KeepLastError() { SetLastError(code_); }

  private:
    DWORD code_;
};

// The trace lock; null when the library is already being unloaded, which one thread does alone.
BaseCriticalSection* Lock();

// The calling thread's indentation in steps. The thread's last error stays as it is.
unsigned& Depth();

}  // namespace UTrace
