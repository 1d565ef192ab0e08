// A hook for hosts that want to see the call stack where an exception is made.
#pragma once

#include "text/SharedHandle.h"

namespace StackWalker {

class StackWalker_IF {
  public:
    virtual ~StackWalker_IF() = default;

    // Called on the failing thread while the exception is being made.
    virtual void Walk() = 0;
};

class DummyStackWalker : public StackWalker_IF {
  public:
    void Walk() override {}
};

// The walker installed, or one that does nothing. Any thread may ask and install.
SharedHandle<StackWalker_IF> Current();

// A null handle restores the one that does nothing.
void SetCurrent(SharedHandle<StackWalker_IF> walker);

}  // namespace StackWalker
