// Keeps from the host a signal that a failing write raises, until the object ends: SIGPIPE of a
// pipe without a reader, SIGXFSZ beyond the process's limit on the size of files. The write fails
// with an error number all the same.
#pragma once

#include <signal.h>

#include "platform/types.h"

namespace brevik::platform {

class PLATFORM_API HeldSignal {
  public:
    // Without need for it the object does nothing.
    HeldSignal(int signal, bool isNeeded);
    HeldSignal(const HeldSignal&) = delete;
    HeldSignal& operator=(const HeldSignal&) = delete;

    // One that came meanwhile is taken back; one that was pending before is the host's.
    ~HeldSignal();

  private:
    bool isNeeded_;
    bool wasPending_ = false;
    sigset_t signal_ = {};
    sigset_t previous_ = {};
};

// Whether a write can raise SIGXFSZ.
PLATFORM_API bool IsFileSizeLimited();

}  // namespace brevik::platform
