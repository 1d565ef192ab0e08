#include "platform/posix/shared_text_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "platform/posix/scoped_descriptor.h"

namespace brevik::platform {
namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

DWORD ErrorNumber(int code) {
    switch (code) {
        case ENOENT:
        case ENOTDIR:
            return ERROR_PATH_NOT_FOUND;
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR:
        case ELOOP:
            return ERROR_ACCESS_DENIED;
        case ENOSPC:
        case EDQUOT:
            return ERROR_DISK_FULL;
        default:
            return ERROR_GEN_FAILURE;
    }
}

// The place that a path leads to, which need not exist.
std::string FollowLinks(const std::string& path) {
    constexpr int kMostLinks = 40;
    std::filesystem::path place = path;
    for (int links = 0; links < kMostLinks; ++links) {
        std::error_code error;
        const std::filesystem::path target = std::filesystem::read_symlink(place, error);
        if (error) {
            break;
        }
        place = place.parent_path() / target;
    }
    return place.string();
}

DWORD ReadFile(const std::string& path, std::string* text) {
    text->clear();
    // Without blocking: a pipe in the file's place must not hold the host.
    const ScopedDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file) {
        return errno == ENOENT ? NO_ERROR : ErrorNumber(errno);
    }
    struct stat status;
    if (fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return ERROR_ACCESS_DENIED;
    }
    text->resize(static_cast<std::size_t>(status.st_size));
    std::size_t size = 0;
    while (size < text->size()) {
        const ssize_t count = read(file.Get(), text->data() + size, text->size() - size);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return ErrorNumber(errno);
        }
        if (count == 0) {
            break;
        }
        size += static_cast<std::size_t>(count);
    }
    text->resize(size);
    return NO_ERROR;
}

bool WriteAll(int descriptor, const std::string& text) {
    for (std::size_t written = 0; written < text.size();) {
        const ssize_t count = write(descriptor, text.data() + written, text.size() - written);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        written += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    return true;
}

// REQUIRES: the lock. It makes one name enough for the new file: what a killed writer left behind
// there is nobody's.
DWORD ReplaceFile(const std::string& path, const std::string& text) {
    const std::string newPath = path + ".new";
    unlink(newPath.c_str());
    ScopedDescriptor file(
        open(newPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnly));
    if (!file) {
        return ErrorNumber(errno);
    }
    if (!WriteAll(file.Get(), text) || std::rename(newPath.c_str(), path.c_str()) != 0) {
        const int failure = errno;
        unlink(newPath.c_str());
        return ErrorNumber(failure);
    }
    return NO_ERROR;
}

// The lock goes with the descriptor.
ScopedDescriptor TakeLock(const std::string& path) {
    ScopedDescriptor lock(open((path + ".lock").c_str(),
                               O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kOwnerOnly));
    while (lock && flock(lock.Get(), LOCK_EX) != 0) {
        if (errno != EINTR) {
            return {};
        }
    }
    return lock;
}

}  // namespace

DWORD SharedTextFile::Read(std::string* text) const {
    return ReadFile(path_, text);
}

DWORD SharedTextFile::Update(const std::function<DWORD(std::string* text)>& change) const {
    const std::string path = FollowLinks(path_);
    const ScopedDescriptor lock = TakeLock(path);
    if (!lock) {
        return ErrorNumber(errno);
    }
    std::string before;
    if (const DWORD error = ReadFile(path, &before); error != NO_ERROR) {
        return error;
    }
    std::string after = before;
    if (const DWORD error = change(&after); error != NO_ERROR) {
        return error;
    }
    return after == before ? NO_ERROR : ReplaceFile(path, after);
}

}  // namespace brevik::platform
