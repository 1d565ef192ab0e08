// The turn of a writer at a small file that several programs replace whole.
//
// It is a lock on the file PATH.lock, which the host gives back when a process ends. The threads of
// a process queue among themselves, for all files alike, and the first of them queues with other
// processes. So everybody comes to a turn, however many there are, and nobody waits for long behind
// a writer that stands still.
//
// A thread holds one lock at a time.
#pragma once

#include <chrono>
#include <string>

#include "platform/errors.h"
#include "platform/posix/base/scoped_descriptor.h"

namespace brevik::platform {

class PLATFORM_API WriteLock {
  public:
    // How long to wait while nobody else comes to a turn: longer than a slow disk takes for one.
    static constexpr std::chrono::milliseconds kPatience{5000};

    explicit WriteLock(std::chrono::milliseconds patience = kPatience) : patience_(patience) {}
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;
    ~WriteLock();

    // Takes the lock of the file at `path`, which need not exist. NO_ERROR; 32 when the patience
    // has run out; 3 for a missing folder, 5 where no lock may be made there, and others of the
    // host. REQUIRES: it has not been called.
    DWORD Take(const std::string& path);

  private:
    DWORD WaitForOtherProcesses(std::chrono::steady_clock::time_point begin);
    bool SetQueueLock(int type) const;

    std::chrono::milliseconds patience_;
    bool isFirst_ = false;  // of the process's writers
    ScopedDescriptor file_;
};

}  // namespace brevik::platform
