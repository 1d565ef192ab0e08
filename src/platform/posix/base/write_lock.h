// The turn of a writer at a small file that several programs replace whole.
//
// It is a lock on the file PATH.lock, which the host gives back when a process ends. The threads of
// a process queue among themselves, for all files alike, and the first of them queues with other
// processes, so that each comes to a turn. A thread holds one lock at a time.
#pragma once

#include <chrono>
#include <string>

#include "platform/errors.h"
#include "platform/posix/base/scoped_descriptor.h"

namespace brevik::platform {

class PLATFORM_API WriteLock {
  public:
    // How long to wait while no other comes to a turn: longer than a slow disk takes for one.
    static constexpr std::chrono::milliseconds kPatience{5000};

    explicit WriteLock(std::chrono::milliseconds patience = kPatience) : patience_(patience) {}
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;
    ~WriteLock();

    // Takes the lock of the file at `path`, which need not exist. NO_ERROR;
    // ERROR_SHARING_VIOLATION when the patience has run out, ERROR_PATH_NOT_FOUND for a missing
    // folder, and others of the host. REQUIRES: it has not been called.
    DWORD Take(const std::string& path);

  private:
    DWORD WaitForOtherProcesses(std::chrono::steady_clock::time_point begin);
    bool SetQueueLock(int type) const;

    std::chrono::milliseconds patience_;
    bool isFirst_ = false;  // of the process's writers
    ScopedDescriptor file_;
};

}  // namespace brevik::platform
