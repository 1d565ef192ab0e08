// Owner of a file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace brevik::platform {

class ScopedDescriptor {
  public:
    ScopedDescriptor() = default;
    explicit ScopedDescriptor(int descriptor) : descriptor_(descriptor) {}
    ScopedDescriptor(ScopedDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    ScopedDescriptor& operator=(ScopedDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~ScopedDescriptor() { Close(); }

    explicit operator bool() const { return descriptor_ >= 0; }
    int Get() const { return descriptor_; }

    // Gives the descriptor up to the caller.
    int Release() { return std::exchange(descriptor_, -1); }
    void Close() {
        if (descriptor_ >= 0) {
            ::close(std::exchange(descriptor_, -1));
        }
    }

  private:
    int descriptor_ = -1;
};

}  // namespace brevik::platform
