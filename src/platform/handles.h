// Handles of the system's objects: files, listings, processes and snapshots of them.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifndef _WIN32

namespace brevik::platform {

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(std::intptr_t{-1});

// False with error 6 for what is no handle.
PLATFORM_API BOOL CloseHandle(HANDLE handle);

}  // namespace brevik::platform

#endif

// Owner of a handle; null and INVALID_HANDLE_VALUE are none.
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

    explicit operator bool() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }

  private:
    HANDLE handle_;
};
