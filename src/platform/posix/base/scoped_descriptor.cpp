#include "platform/posix/base/scoped_descriptor.h"

#include <algorithm>
#include <cerrno>

#include "platform/posix/base/interrupted.h"

namespace brevik::platform {

void TakeStandardStreams() {
    constexpr int kStreams[] = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    if (std::ranges::all_of(kStreams, [](int stream) { return fcntl(stream, F_GETFD) >= 0; })) {
        return;
    }
    int filler;
    do {
        filler = open("/", O_PATH | O_CLOEXEC);
    } while (filler >= 0 && filler <= STDERR_FILENO);
    if (filler >= 0) {
        close(filler);
    }
}

int AboveStandardStreams(int descriptor) {
    if (descriptor < 0 || descriptor > STDERR_FILENO) {
        return descriptor;
    }
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int failure = errno;
    close(descriptor);
    TakeStandardStreams();
    errno = failure;
    return moved;
}

ScopedDescriptor OpenDescriptor(const std::string& path, int flags, mode_t mode, int folder) {
    if ((flags & O_ACCMODE) != O_RDONLY) {
        TakeStandardStreams();
    }
    return ScopedDescriptor(
        Uninterrupted([&] { return openat(folder, path.c_str(), flags | O_CLOEXEC, mode); }));
}

}  // namespace brevik::platform
