#include "platform/posix/base/scoped_descriptor.h"

#include <fcntl.h>

#include <cerrno>

namespace brevik::platform {

void TakeStandardStreams() {
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

}  // namespace brevik::platform
