#include "platform/posix/base/shared_text_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>

#include "platform/posix/base/host_errors.h"
#include "platform/posix/base/interrupted.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "platform/threads.h"

namespace brevik::platform {
namespace {

// The place that a path leads to, which need not exist. A link that cannot be read at this moment
// is an error: it would be taken for a file, and replaced.
DWORD FollowLinks(const std::string& path, std::string* target) {
    constexpr int kMostLinks = 40;
    std::filesystem::path place = path;
    for (int links = 0; links < kMostLinks; ++links) {
        std::error_code error;
        const std::filesystem::path next = std::filesystem::read_symlink(place, error);
        if (error == std::errc::invalid_argument || error == std::errc::no_such_file_or_directory) {
            *target = place.string();
            return NO_ERROR;
        }
        if (error) {
            return ErrorFromHost(error.value());
        }
        place = place.parent_path() / next;
    }
    return ErrorFromHost(ELOOP);
}

DWORD ReadFile(const std::string& path, std::string* text) {
    text->clear();
    // Without blocking: a pipe in the file's place must not hold the host.
    const ScopedDescriptor file = OpenDescriptor(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    if (!file) {
        return errno == ENOENT ? NO_ERROR : ErrorFromHost(errno);
    }
    struct stat status;
    if (fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return ERROR_ACCESS_DENIED;
    }
    if (static_cast<std::uint64_t>(status.st_size) > SharedTextFile::kLongestText) {
        return ERROR_INVALID_DATA;
    }
    text->resize(static_cast<std::size_t>(status.st_size));
    std::size_t size = 0;
    while (size < text->size()) {
        const ssize_t count = Uninterrupted(
            [&] { return read(file.Get(), text->data() + size, text->size() - size); });
        if (count < 0) {
            return ErrorFromHost(errno);
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
        const ssize_t count = Uninterrupted(
            [&] { return write(descriptor, text.data() + written, text.size() - written); });
        if (count < 0) {
            return false;
        }
        written += static_cast<std::size_t>(count);
    }
    return true;
}

// REQUIRES: the lock, which makes one name enough for the new file.
DWORD ReplaceFile(const std::string& path, const std::string& text, mode_t mode) {
    const HeldSignal withinLimit(SIGXFSZ, IsFileSizeLimited());
    const std::string newPath = path + ".new";
    unlink(newPath.c_str());
    const ScopedDescriptor file = OpenDescriptor(newPath, O_WRONLY | O_CREAT | O_EXCL, mode);
    if (!file) {
        return errno == ENOENT ? ERROR_PATH_NOT_FOUND : ErrorFromHost(errno);
    }
    // The mode again: a new file's lacks what the umask takes away.
    if (!WriteAll(file.Get(), text) || fchmod(file.Get(), mode) != 0 ||
        Uninterrupted([&] { return fsync(file.Get()); }) != 0 ||
        std::rename(newPath.c_str(), path.c_str()) != 0) {
        const int failure = errno;
        unlink(newPath.c_str());
        return ErrorFromHost(failure);
    }
    return NO_ERROR;
}

}  // namespace

DWORD SharedTextFile::Read(std::string* text) const {
    return path_.empty() ? ERROR_PATH_NOT_FOUND : ReadFile(path_, text);
}

DWORD SharedTextFile::Update(const std::function<DWORD(std::string* text)>& change) const {
    LockedTextFile file;
    const DWORD error = file.Lock(*this);
    return error == NO_ERROR ? file.Update(change) : error;
}

DWORD LockedTextFile::Lock(const SharedTextFile& file) {
    if (file.path_.empty()) {
        return ERROR_PATH_NOT_FOUND;
    }
    mode_ = file.mode_;
    const DWORD error = FollowLinks(file.path_, &path_);
    return error == NO_ERROR ? lock_.Take(path_) : error;
}

DWORD LockedTextFile::Read(std::string* text) const {
    return ReadFile(path_, text);
}

DWORD LockedTextFile::Update(const std::function<DWORD(std::string* text)>& change) const {
    std::string before;
    if (const DWORD error = Read(&before); error != NO_ERROR) {
        return error;
    }
    std::string after = before;
    if (const DWORD error = change(&after); error != NO_ERROR) {
        return error;
    }
    if (after.size() > SharedTextFile::kLongestText) {
        return ERROR_INVALID_DATA;
    }
    return after == before ? NO_ERROR : ReplaceFile(path_, after, mode_);
}

}  // namespace brevik::platform
