#include "platform/posix/base/write_lock.h"

#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>

#include "platform/never_destroyed.h"
#include "platform/posix/base/host_errors.h"
#include "platform/posix/base/interrupted.h"

namespace brevik::platform {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// The writers of this process in the order of their coming; the first one is at work.
class ProcessQueue {
  public:
    static ProcessQueue& Current() {
        static NeverDestroyed<ProcessQueue> queue;
        return *queue;
    }

    // Waits to become the first. False, and not in the queue, when the patience has run out.
    bool Enter(Clock::time_point begin, milliseconds patience) {
        std::unique_lock lock(mutex_);
        const auto place = places_.emplace(places_.end());
        while (place != places_.begin()) {
            const Clock::time_point end = std::max(begin, lastTurn_) + patience;
            if (Clock::now() >= end) {
                places_.erase(place);
                return false;
            }
            place->wait_until(lock, end);
        }
        return true;
    }

    void Leave() {
        const std::lock_guard lock(mutex_);
        places_.pop_front();
        if (!places_.empty()) {
            places_.front().notify_one();
        }
    }

    // A writer of any process has come to a turn.
    void NoteTurn() {
        const std::lock_guard lock(mutex_);
        lastTurn_ = Clock::now();
    }

    Clock::time_point LastTurn() {
        const std::lock_guard lock(mutex_);
        return lastTurn_;
    }

  private:
    std::mutex mutex_;
    std::list<std::condition_variable> places_;
    Clock::time_point lastTurn_;
};

// When the file was last touched, as each writer does in its turn.
timespec LastTouch(int file) {
    struct stat status = {};
    fstat(file, &status);
    return status.st_mtim;
}

bool operator!=(const timespec& a, const timespec& b) {
    return a.tv_sec != b.tv_sec || a.tv_nsec != b.tv_nsec;
}

}  // namespace

WriteLock::~WriteLock() {
    if (file_) {
        // Closing alone would leave the lock to a child process that was forked meanwhile.
        flock(file_.Get(), LOCK_UN);
        file_.Close();
    }
    if (isFirst_) {
        ProcessQueue::Current().Leave();
    }
}

DWORD WriteLock::Take(const std::string& path) {
    const Clock::time_point begin = Clock::now();
    isFirst_ = ProcessQueue::Current().Enter(begin, patience_);
    if (!isFirst_) {
        return ERROR_SHARING_VIOLATION;
    }
    file_ = OpenDescriptor(path + ".lock", O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK,
                           S_IRUSR | S_IWUSR);
    if (!file_) {
        return errno == ENOENT ? ERROR_PATH_NOT_FOUND : ErrorFromHost(errno);
    }
    const DWORD error = WaitForOtherProcesses(begin);
    SetQueueLock(F_UNLCK);
    if (error == NO_ERROR) {
        futimens(file_.Get(), nullptr);
        ProcessQueue::Current().NoteTurn();
    }
    return error;
}

// Processes queue at a second lock, on a byte of the file, whose holder alone tries the first one:
// writers that never rest would else starve others. The queueing ends after a while, since a writer
// may be stopped there.
DWORD WriteLock::WaitForOtherProcesses(Clock::time_point begin) {
    constexpr std::chrono::microseconds kShortestPause{100};
    constexpr std::chrono::microseconds kLongestPause{2000};
    const Clock::time_point courtesyEnd = begin + patience_ / 2;
    ProcessQueue& ours = ProcessQueue::Current();
    timespec lastTouch = LastTouch(file_.Get());
    bool isNext = false;
    for (auto pause = kShortestPause;; pause = std::min(2 * pause, kLongestPause)) {
        isNext = isNext || SetQueueLock(F_WRLCK) || Clock::now() >= courtesyEnd;
        const auto tryLock = [&] { return flock(file_.Get(), LOCK_EX | LOCK_NB); };
        if (isNext && Uninterrupted(tryLock) == 0) {
            return NO_ERROR;
        }
        if (isNext && errno != EWOULDBLOCK) {
            return ErrorFromHost(errno);
        }
        if (const timespec touch = LastTouch(file_.Get()); touch != lastTouch) {
            lastTouch = touch;
            ours.NoteTurn();
        }
        if (Clock::now() >= std::max(begin, ours.LastTurn()) + patience_) {
            return ERROR_SHARING_VIOLATION;
        }
        std::this_thread::sleep_for(pause);
    }
}

// False while another process holds it. A file system without such locks has no queue.
bool WriteLock::SetQueueLock(int type) const {
    struct flock range = {};
    range.l_type = static_cast<short>(type);
    range.l_whence = SEEK_SET;
    range.l_len = 1;
    return Uninterrupted([&] { return fcntl(file_.Get(), F_OFD_SETLK, &range); }) == 0 ||
           (errno != EAGAIN && errno != EACCES);
}

}  // namespace brevik::platform
