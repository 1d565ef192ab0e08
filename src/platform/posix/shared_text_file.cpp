#include "platform/posix/shared_text_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <thread>

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
    const ScopedDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file) {
        return errno == ENOENT ? NO_ERROR : ErrorNumber(errno);
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

// The writers' lock.
//
// Those who wait for it queue at a second lock, on a byte of the same file, whose holder alone
// tries the first one: writers that never rest would else starve others. The queue is a courtesy,
// and a writer that is stopped there holds nobody for good.
class WriteLock {
  public:
    WriteLock() = default;
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;

    // Closing alone would leave the lock to a child process that was forked meanwhile.
    ~WriteLock() {
        if (file_) {
            flock(file_.Get(), LOCK_UN);
        }
    }

    // NO_ERROR; 32 when another writer holds the lock all the time.
    DWORD Take(const std::string& path) {
        file_ = ScopedDescriptor(open((path + ".lock").c_str(),
                                      O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                                      kOwnerOnly));
        if (!file_) {
            return ErrorNumber(errno);
        }
        const Clock::time_point begin = Clock::now();
        TryUntil(begin + kLongestQueueing, [this] { return SetQueueLock(F_WRLCK); });
        const int failure = TryUntil(begin + kLongestWait,
                                     [this] { return flock(file_.Get(), LOCK_EX | LOCK_NB) == 0; });
        SetQueueLock(F_UNLCK);
        return failure == 0             ? NO_ERROR
               : failure == EWOULDBLOCK ? ERROR_SHARING_VIOLATION
                                        : ErrorNumber(failure);
    }

  private:
    using Clock = std::chrono::steady_clock;

    // Long enough for many writers; a stopped one must not hold a host for longer.
    static constexpr std::chrono::milliseconds kLongestWait{2000};
    static constexpr std::chrono::milliseconds kLongestQueueing{1500};

    static constexpr std::chrono::microseconds kShortestPause{100};
    static constexpr std::chrono::microseconds kLongestPause{2000};

    // 0 once `attempt` has succeeded, else the code of its last failure.
    template <typename Attempt>
    static int TryUntil(Clock::time_point end, Attempt attempt) {
        for (auto pause = kShortestPause; !attempt(); pause = std::min(2 * pause, kLongestPause)) {
            const int failure = errno;
            if ((failure != EWOULDBLOCK && failure != EINTR) || Clock::now() >= end) {
                return failure;
            }
            std::this_thread::sleep_for(pause);
        }
        return 0;
    }

    bool SetQueueLock(int type) const {
        struct flock range = {};
        range.l_type = static_cast<short>(type);
        range.l_whence = SEEK_SET;
        range.l_len = 1;
        return fcntl(file_.Get(), F_OFD_SETLK, &range) == 0;
    }

    ScopedDescriptor file_;
};

}  // namespace

DWORD SharedTextFile::Read(std::string* text) const {
    return ReadFile(path_, text);
}

DWORD SharedTextFile::Update(const std::function<DWORD(std::string* text)>& change) const {
    const std::string path = FollowLinks(path_);
    WriteLock lock;
    if (const DWORD error = lock.Take(path); error != NO_ERROR) {
        return error;
    }
    std::string before;
    if (const DWORD error = ReadFile(path, &before); error != NO_ERROR) {
        return error;
    }
    std::string after = before;
    if (const DWORD error = change(&after); error != NO_ERROR) {
        return error;
    }
    if (after.size() > kLongestText) {
        return ERROR_INVALID_DATA;
    }
    return after == before ? NO_ERROR : ReplaceFile(path, after);
}

}  // namespace brevik::platform
