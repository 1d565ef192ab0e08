#include "platform/streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "platform/handles.h"
#include "platform/posix/open_file.h"

namespace brevik::platform {

// The file's share mode ends here: the kernel ties it to the handle's own lock description, and the
// platform would not learn when the run-time library closes the descriptor.
int _open_osfhandle(std::intptr_t handle, int) {
    const auto value = reinterpret_cast<HANDLE>(handle);
    const std::shared_ptr<OpenFile> file = FindHandle<OpenFile>(value);
    if (!file || (!file->CanRead() && !file->CanWrite())) {
        errno = EBADF;
        return -1;
    }
    ScopedDescriptor descriptor = file->Duplicate();
    if (!descriptor) {
        return -1;
    }
    const int flags = fcntl(descriptor.Get(), F_GETFL);
    if (flags >= 0) {
        fcntl(descriptor.Get(), F_SETFL, flags & ~O_NONBLOCK);
    }
    if (!CloseHandle(value)) {
        errno = EBADF;
        return -1;
    }
    return descriptor.Release();
}

std::FILE* _fdopen(int descriptor, const char* mode) {
    return fdopen(descriptor, mode);
}

int _close(int descriptor) {
    return close(descriptor);
}

}  // namespace brevik::platform
