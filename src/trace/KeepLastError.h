// Puts the thread's last error back at its end: a line between a failing call and the look at its
// error must not change what is seen.
#pragma once

#include "platform/errors.h"

namespace UTrace {

class KeepLastError {
  public:
    KeepLastError() : code_(GetLastError()) {}
    KeepLastError(const KeepLastError&) = delete;
    KeepLastError& operator=(const KeepLastError&) = delete;
    ~KeepLastError() { SetLastError(code_); }

  private:
    DWORD code_;
};

}  // namespace UTrace
