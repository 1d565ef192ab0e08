// Owner of a handle.
#pragma once

#include "platform/handles.h"

namespace brevik::platform {

class ScopedHandle {
  public:
    explicit ScopedHandle(HANDLE handle) : handle_(handle) {}
    ScopedHandle(const ScopedHandle&) = delete;
    ScopedHandle& operator=(const ScopedHandle&) = delete;
    ~ScopedHandle() {
        if (IsOpen()) {
            CloseHandle(handle_);
        }
    }

    bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }

  private:
    HANDLE handle_;
};

}  // namespace brevik::platform
