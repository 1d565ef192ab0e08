// Open files and folders: what a handle of CreateFileW stands for.
//
// The position belongs to the handle and is guarded, so that threads on one handle read and write
// one after the other. Everything else never changes.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/files.h"
#include "platform/posix/base/handle.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "platform/posix/files/share_modes.h"

namespace brevik::platform {

class OpenFile : public HandleObject {
  public:
    // `access` is what CreateFileW was asked for.
    OpenFile(ScopedDescriptor descriptor, DWORD access, ShareMode share)
        : descriptor_(std::move(descriptor)), access_(access), share_(std::move(share)) {}

    // Without access to read or to write the descriptor gives the file's status alone. Its own
    // position is not used.
    int Descriptor() const { return descriptor_.Get(); }

    bool CanRead() const { return (access_ & GENERIC_READ) != 0; }
    bool CanWrite() const { return (access_ & GENERIC_WRITE) != 0; }

    // Each of these returns NO_ERROR or an error number, and checks no access right.

    // Read or write at the position. `done`, which is 0 before, counts the bytes, also on failure;
    // fewer than `count` are read only at the end of the file.
    DWORD Read(void* buffer, DWORD count, DWORD* done);
    DWORD Write(const void* buffer, DWORD count, DWORD* done);

    // Moves the position from the beginning, or, with FILE_CURRENT, from where it is, and returns
    // the new one.
    DWORD Seek(std::int64_t distance, DWORD method, std::int64_t* position);

    DWORD Size(std::int64_t* size) const;

    // Cuts the file at a size, or grows it to that; ERROR_DISK_FULL where there is no such room.
    DWORD SetSize(std::int64_t size);

    // The same at the position.
    DWORD SetEnd();

    // Another descriptor on the open file, at the handle's position; empty with errno on failure.
    ScopedDescriptor Duplicate();

  private:
    // Destroyed last to first: the file leaves its share mode before it is closed.
    ScopedDescriptor descriptor_;
    DWORD access_;
    ShareMode share_;

    std::mutex mutex_;
    std::int64_t position_ = 0;
};

// Null with ERROR_INVALID_HANDLE for what is no handle of a file.
std::shared_ptr<OpenFile> FindOpenFile(HANDLE handle);

}  // namespace brevik::platform
