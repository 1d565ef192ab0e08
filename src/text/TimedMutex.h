// A recursive mutex that is waited for as long as one likes: that of the run-time library is hidden
// from the thread sanitizer.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

class TimedMutex {
  public:
    // False when another thread held it all the time.
    bool try_lock_for(std::chrono::milliseconds longestWait) {
        std::unique_lock hold(mutex_);
        const std::thread::id self = std::this_thread::get_id();
        if (!freed_.wait_for(hold, longestWait, [&] { return depth_ == 0 || owner_ == self; })) {
            return false;
        }
        owner_ = self;
        ++depth_;
        return true;
    }

    void unlock() {
        {
            const std::lock_guard hold(mutex_);
            --depth_;
        }
        freed_.notify_one();
    }

  private:
    std::mutex mutex_;
    std::condition_variable freed_;
    std::thread::id owner_;
    int depth_ = 0;
};
