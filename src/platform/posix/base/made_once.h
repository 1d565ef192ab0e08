// A value that is made once and then stays to the end of the process. No lock is held while it is
// made, which may load a library of the host's whose initialisers come back here: threads that need
// it at once each make one, and the first that is kept counts.
#pragma once

#include <atomic>
#include <memory>
#include <utility>

namespace brevik::platform {

template <typename T>
class MadeOnce {
  public:
    // Null before a value is kept.
    const T* Find() const { return value_.load(std::memory_order_acquire); }

    // Keeps a value unless there is one; the one that is kept.
    const T& Keep(T made) {
        auto own = std::make_unique<const T>(std::move(made));
        const T* kept = nullptr;
        if (value_.compare_exchange_strong(kept, own.get(), std::memory_order_acq_rel)) {
            kept = own.release();
        }
        return *kept;
    }

  private:
    std::atomic<const T*> value_ = nullptr;
};

}  // namespace brevik::platform
