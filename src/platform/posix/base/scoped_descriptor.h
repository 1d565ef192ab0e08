// Owners of a file descriptor, which is never that of a standard stream, and of an open folder.
#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <utility>

#include "platform/types.h"

namespace brevik::platform {

// Takes the numbers of the standard streams that the host runs without, for good, by what can be
// neither written to nor read: what the host prints there would go to the file that is opened next.
PLATFORM_API void TakeStandardStreams();

// Moves a descriptor that has such a number. The descriptor as it is then; -1 with errno where it
// cannot be moved, and is closed.
PLATFORM_API int AboveStandardStreams(int descriptor);

class ScopedDescriptor {
  public:
    ScopedDescriptor() = default;
    explicit ScopedDescriptor(int descriptor) : descriptor_(AboveStandardStreams(descriptor)) {}
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

// Opens a file, relative to a folder if one is given, and closes it in programs that are started.
// Empty with errno on failure. With the right to write, the numbers of the standard streams are
// taken first: to move the file away from one afterwards would be too late for what the host
// prints meanwhile.
PLATFORM_API ScopedDescriptor OpenDescriptor(const std::string& path, int flags, mode_t mode = 0,
                                             int folder = AT_FDCWD);

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using ScopedFolder = std::unique_ptr<DIR, CloseFolder>;

}  // namespace brevik::platform
