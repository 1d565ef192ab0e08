#include "platform/folders.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/base/scoped_descriptor.h"

namespace brevik::platform {

KeptFolder KeptFolder::Current() {
    KeptFolder kept;
    ScopedDescriptor folder(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    kept.descriptor_ = folder.Release();
    return kept;
}

KeptFolder::~KeptFolder() {
    if (*this) {
        close(descriptor_);
    }
}

void KeptFolder::MakeCurrent() const noexcept {
    if (*this && fchdir(descriptor_) != 0) {
        // It was the current one: all that can be lost is the right to enter it.
        return;
    }
}

}  // namespace brevik::platform
