#include "platform/posix/open_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/posix/held_signal.h"
#include "platform/posix/host_errors.h"
#include "platform/posix/interrupted.h"

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

}  // namespace

DWORD OpenFile::Read(void* buffer, DWORD count, DWORD* done) {
    *done = 0;
    const std::lock_guard lock(mutex_);
    while (*done < count) {
        const ssize_t part = Uninterrupted([&] {
            return pread(Descriptor(), static_cast<char*>(buffer) + *done, count - *done,
                         position_);
        });
        if (part < 0 && *done == 0) {
            return ErrorFromHost(errno);
        }
        if (part <= 0) {
            break;
        }
        *done += static_cast<DWORD>(part);
        position_ += part;
    }
    return NO_ERROR;
}

DWORD OpenFile::Write(const void* buffer, DWORD count, DWORD* done) {
    *done = 0;
    const std::lock_guard lock(mutex_);
    if (count > INT64_MAX - position_) {
        return ERROR_DISK_FULL;
    }
    const HeldSignal withinLimit(SIGXFSZ, IsFileSizeLimited());
    while (*done < count) {
        const ssize_t part = Uninterrupted([&] {
            return pwrite(Descriptor(), static_cast<const char*>(buffer) + *done, count - *done,
                          position_);
        });
        if (part < 0) {
            return ErrorFromHost(errno);
        }
        *done += static_cast<DWORD>(part);
        position_ += part;
    }
    return NO_ERROR;
}

DWORD OpenFile::Seek(std::int64_t distance, DWORD method, bool low, std::int64_t* position) {
    const std::lock_guard lock(mutex_);
    std::int64_t base = 0;
    if (method == FILE_CURRENT) {
        base = position_;
    } else if (method == FILE_END) {
        if (const DWORD error = Size(&base); error != NO_ERROR) {
            return error;
        }
    } else if (method != FILE_BEGIN) {
        return ERROR_INVALID_PARAMETER;
    }
    std::int64_t sum = 0;
    if (__builtin_add_overflow(base, distance, &sum)) {
        return ERROR_INVALID_PARAMETER;
    }
    if (sum < 0) {
        return ERROR_NEGATIVE_SEEK;
    }
    if (low && sum > std::int64_t{UINT32_MAX}) {
        return ERROR_INVALID_PARAMETER;
    }
    position_ = sum;
    *position = sum;
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

DWORD OpenFile::SetEnd() {
    const std::lock_guard lock(mutex_);
    std::int64_t size = 0;
    if (const DWORD error = Size(&size); error != NO_ERROR) {
        return error;
    }
    if (!HasRoomFor(Descriptor(), position_ - size)) {
        return ERROR_DISK_FULL;
    }
    const HeldSignal withinLimit(SIGXFSZ, IsFileSizeLimited());
    const int result = Uninterrupted([&] { return ftruncate(Descriptor(), position_); });
    return result == 0 ? NO_ERROR : ErrorFromHost(errno);
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
    std::shared_ptr<OpenFile> file = FindHandle<OpenFile>(handle);
    if (!file) {
        SetLastError(ERROR_INVALID_HANDLE);
    }
    return file;
}

}  // namespace brevik::platform
