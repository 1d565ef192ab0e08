#include "platform/posix/file_watch.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

namespace brevik::platform {
namespace {

constexpr std::int64_t kNanosecondsOfSecond = 1'000'000'000;

// Twice the coarsest step in which a kernel's time stamps advance.
constexpr std::int64_t kSettlingNanoseconds = 20'000'000;

std::int64_t Nanoseconds(const timespec& time) {
    return time.tv_sec * kNanosecondsOfSecond + time.tv_nsec;
}

}  // namespace

FileStamp::FileStamp(const struct stat& status)
    : error(0),
      device(status.st_dev),
      number(status.st_ino),
      links(status.st_nlink),
      size(status.st_size),
      modified(Nanoseconds(status.st_mtim)),
      changed(Nanoseconds(status.st_ctim)) {}

bool FileStamp::IsMissing() const {
    return error == ENOENT || error == ENOTDIR;
}

bool FileStamp::IsSettledAt(std::int64_t moment) const {
    return error != 0 || std::abs(moment - changed) > kSettlingNanoseconds;
}

FileStamp StampOf(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? FileStamp(status) : FileStamp(errno);
}

std::int64_t Now() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return Nanoseconds(now);
}

FileWatch::FileWatch(std::string path) : path_(std::move(path)) {}

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
    const FileStamp& decisive = isDirect_ ? watched_ : file_;
    isSettled_ = decisive.IsSettledAt(started_);
    isSettled_ = IsUnchanged() && StampOf(path_) == file_;
    return isSettled_;
}

FileStamp FileWatch::Look() const {
    struct stat status;
    return fstat(descriptor_, &status) == 0 ? FileStamp(status) : FileStamp(errno);
}

// A host that closes descriptors it does not know may have given the number to a file of its own,
// which is not to be closed here.
void FileWatch::Forget() {
    if (descriptor_ >= 0 && Look().IsOfSameFile(watched_)) {
        close(descriptor_);
    }
    descriptor_ = -1;
    isSettled_ = false;
}

}  // namespace brevik::platform
