#include "platform/posix/base/file_watch.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace brevik::platform {

FileStamp FileWatch::Begin() {
    Forget();
    started_ = Now();
    descriptor_ = open(path_.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    const bool isFolder = descriptor_ < 0;
    if (isFolder) {
        const std::string folder = path_.substr(0, path_.rfind('/') + 1);
        descriptor_ = open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    }
    watched_ = Look();
    file_ = StampOf(path_);
    isDirect_ =
        watched_.error == 0 && (isFolder ? file_.error == ENOENT : watched_.IsOfSameFile(file_));
    return file_;
}

bool FileWatch::Settle() {
    isSettled_ = (isDirect_ ? watched_ : file_).IsSettledAt(started_);
    isSettled_ = IsUnchanged() && StampOf(path_) == file_;
    return isSettled_;
}

FileStamp FileWatch::Look() const {
    struct stat status;
    return fstat(descriptor_, &status) == 0 ? FileStamp(status) : FileStamp(errno);
}

// A host that closes descriptors it does not know may have given the number to a file of its own,
// which is not ours to close.
void FileWatch::Forget() {
    if (descriptor_ >= 0 && Look().IsOfSameFile(watched_)) {
        close(descriptor_);
    }
    descriptor_ = -1;
    isSettled_ = false;
}

}  // namespace brevik::platform
