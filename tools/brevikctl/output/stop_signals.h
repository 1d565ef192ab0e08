// The signals that ask a program to end.
#pragma once

#include <signal.h>

#include "platform/posix/base/scoped_descriptor.h"

// While it lives, SIGINT, SIGTERM and SIGHUP are noted and end nothing but the system call that is
// under way. At most one lives at a time.
class StopSignals {
  public:
    StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;
    ~StopSignals();

    // The last that came, or 0.
    static int Last();

    // Readable once one has come.
    int Descriptor() const { return event_.Get(); }

  private:
    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
    ScopedDescriptor event_;
    struct sigaction before_[3];
};
