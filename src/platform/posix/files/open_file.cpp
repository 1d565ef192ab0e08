#include "platform/posix/files/open_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/base/host_errors.h"
#include "platform/posix/base/interrupted.h"
#include "platform/posix/base/last_error.h"
#include "platform/threads.h"

namespace brevik::platform {
namespace {

// The host grows a file without taking room for it; the system refuses at once.
bool HasRoomFor(int descriptor, std::int64_t growth) {
    struct statvfs status;
    if (growth <= 0 || fstatvfs(descriptor, &status) != 0 || status.f_frsize == 0) {
        return true;
    }
    return static_cast<std::uint64_t>(growth) / status.f_frsize <=
           std::uint64_t{geteuid() == 0 ? status.f_bfree : status.f_bavail};
}

// Calls `step`, which returns like read, until `count` bytes are done or the file ends.
template <typename Step>
DWORD Transfer(DWORD count, DWORD* done, Step step) {
    while (*done < count) {
        const ssize_t part = Uninterrupted(step);
        if (part == 0) {
            break;
        }
        if (part < 0) {
            return ErrorFromHost(errno);
        }
        *done += static_cast<DWORD>(part);
    }
    return NO_ERROR;
}

}  // namespace

DWORD OpenFile::Read(void* buffer, DWORD count, DWORD* done) {
    const std::lock_guard lock(mutex_);
    const DWORD error = Transfer(count, done, [=, this] {
        return pread(Descriptor(), static_cast<char*>(buffer) + *done, count - *done,
                     position_ + *done);
    });
    position_ += *done;
    return error;
}

DWORD OpenFile::Write(const void* buffer, DWORD count, DWORD* done) {
    const std::lock_guard lock(mutex_);
    if (count > INT64_MAX - position_) {
        return ERROR_DISK_FULL;
    }
    const HeldSignal withinLimit(SIGXFSZ, IsFileSizeLimited());
    const DWORD error = Transfer(count, done, [=, this] {
        return pwrite(Descriptor(), static_cast<const char*>(buffer) + *done, count - *done,
                      position_ + *done);
    });
    position_ += *done;
    return error;
}

DWORD OpenFile::Seek(std::int64_t distance, DWORD method, std::int64_t* position) {
    const std::lock_guard lock(mutex_);
    std::int64_t place = method == FILE_CURRENT ? position_ : 0;
    if (__builtin_add_overflow(place, distance, &place) || place < 0) {
        return ERROR_NEGATIVE_SEEK;
    }
    position_ = place;
    *position = place;
    return NO_ERROR;
}

DWORD OpenFile::Size(std::int64_t* size) const {
    struct stat status;
    if (fstat(Descriptor(), &status) != 0) {
        return ErrorFromHost(errno);
    }
    *size = S_ISREG(status.st_mode) ? status.st_size : 0;
    return NO_ERROR;
}

DWORD OpenFile::SetSize(std::int64_t size) {
    std::int64_t now = 0;
    if (const DWORD error = Size(&now); error != NO_ERROR) {
        return error;
    }
    if (!HasRoomFor(Descriptor(), size - now)) {
        return ERROR_DISK_FULL;
    }
    const HeldSignal withinLimit(SIGXFSZ, IsFileSizeLimited());
    return ErrorOf(Uninterrupted([&] { return ftruncate(Descriptor(), size); }));
}

DWORD OpenFile::SetEnd() {
    const std::lock_guard lock(mutex_);
    return SetSize(position_);
}

ScopedDescriptor OpenFile::Duplicate() {
    const std::lock_guard lock(mutex_);
    ScopedDescriptor copy(fcntl(Descriptor(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (copy && lseek(copy.Get(), position_, SEEK_SET) < 0) {
        copy.Close();
    }
    return copy;
}

std::shared_ptr<OpenFile> FindOpenFile(HANDLE handle) {
    auto file = FindHandle<OpenFile>(handle);
    return file ? file : Fail<std::shared_ptr<OpenFile>>(ERROR_INVALID_HANDLE);
}

}  // namespace brevik::platform
