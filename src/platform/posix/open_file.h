// Open files and folders: what a handle of CreateFileW stands for.
//
// The position is the handle's own and is guarded, so that threads on one handle read and write one
// after the other. Everything else never changes.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/files.h"
#include "platform/posix/handle.h"
#include "platform/posix/scoped_descriptor.h"
#include "platform/posix/share_modes.h"

namespace brevik::platform {

class OpenFile : public HandleObject {
  public:
    // `access` is what CreateFileW was asked for.
    OpenFile(ScopedDescriptor descriptor, DWORD access, ShareMode share)
        : descriptor_(std::move(descriptor)), access_(access), share_(std::move(share)) {}

    // With neither access to read nor to write the descriptor is good for the file's status alone.
    // Its own position is not used.
    int Descriptor() const { return descriptor_.Get(); }

    bool CanRead() const { return (access_ & GENERIC_READ) != 0; }
    bool CanWrite() const { return (access_ & GENERIC_WRITE) != 0; }

    // Each of these gives 0 or an error number, and looks at no access right.

    // Reads at the position; fewer than `count` bytes only at the end of the file.
    DWORD Read(void* buffer, DWORD count, DWORD* done);

    // Writes all of it at the position; after a failure `done` tells how much was written.
    DWORD Write(const void* buffer, DWORD count, DWORD* done);

    // Moves the position, from the method's base, and tells where it is then. With `low` set, a
    // position of more than 32 bits is refused.
    DWORD Seek(std::int64_t distance, DWORD method, bool low, std::int64_t* position);

    DWORD Size(std::int64_t* size) const;

    // Cuts the file at the position, or grows it to there. 112 where the disk has no such room.
    DWORD SetEnd();

    // A further descriptor on the open file, its own position moved to the handle's; empty with
    // errno on failure.
    ScopedDescriptor Duplicate();

  private:
    // Destroyed last to first: a file's part in sharing ends before the file is closed.
    ScopedDescriptor descriptor_;
    DWORD access_;
    ShareMode share_;

    std::mutex mutex_;
    std::int64_t position_ = 0;
};

// Null with last error 6 for what is no handle of a file.
std::shared_ptr<OpenFile> FindOpenFile(HANDLE handle);

}  // namespace brevik::platform
