#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "platform/handles.h"
#include "platform/posix/files/open_file.h"
#include "platform/posix/paths/paths.h"

namespace brevik::platform {

std::FILE* _wfopen(const WCHAR* path, const WCHAR*) {
    const HostFile file = FindFile(PlaceOf(path));
    if (file.error != NO_ERROR || S_ISDIR(file.status.st_mode)) {
        return nullptr;
    }
    // A pipe without a partner is opened at once, and not waited for.
    constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    ScopedDescriptor descriptor = OpenDescriptor(file.path, kFlags);
    std::FILE* stream = descriptor ? fdopen(descriptor.Get(), "r") : nullptr;
    if (stream != nullptr) {
        descriptor.Release();
    }
    return stream;
}

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
