#include "platform/kept_folder.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/scoped_descriptor.h"

namespace brevik::platform {

KeptFolder KeptFolder::Current() {
    KeptFolder kept;
    ScopedDescriptor folder(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    kept.place_ = folder.Release() + 1;
    return kept;
}

KeptFolder::~KeptFolder() {
    if (*this) {
        close(place_ - 1);
    }
}

void KeptFolder::MakeCurrent() const noexcept {
    if (*this && fchdir(place_ - 1) != 0) {
        // It was the current one: all that can be lost is the right to enter it.
        return;
    }
}

}  // namespace brevik::platform
