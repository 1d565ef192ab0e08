// Owner of a handle, of those that INVALID_HANDLE_VALUE marks as none.
#pragma once

#include "platform/handles.h"

class ScopedHandle {
  public:
    explicit ScopedHandle(HANDLE handle) : handle_(handle) {}
    ScopedHandle(const ScopedHandle&) = delete;
    ScopedHandle& operator=(const ScopedHandle&) = delete;
    ~ScopedHandle() {
        if (*this) {
            CloseHandle(handle_);
        }
    }

    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }

  private:
    HANDLE handle_;
};
