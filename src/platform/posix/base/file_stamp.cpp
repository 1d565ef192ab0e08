#include "platform/posix/base/file_stamp.h"

#include <time.h>

#include <cerrno>

namespace brevik::platform {
namespace {

std::int64_t Nanoseconds(const timespec& time) {
    return time.tv_sec * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

std::int64_t Now() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return Nanoseconds(now);
}

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

// Both times count, since some file systems keep only one of them. Unlike the time of the last
// change, that of the last write can be set by programs: one in the future is what a program set.
bool FileStamp::IsSettledAt(std::int64_t moment) const {
    return error != 0 ||
           (HasSettled(changed, moment) && (modified > moment || HasSettled(modified, moment)));
}

FileStamp StampOf(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? FileStamp(status) : FileStamp(errno);
}

}  // namespace brevik::platform
