#include "platform/posix/base/handle.h"

#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "platform/handles.h"
#include "platform/never_destroyed.h"
#include "platform/posix/base/last_error.h"

namespace brevik::platform {
namespace {

class HandleTable {
  public:
    static HandleTable& Current() {
        static NeverDestroyed<HandleTable> table;
        return *table;
    }

    // A number comes back only when all others have been used, so that a handle which was closed
    // does not come to stand for a later object soon.
    HANDLE Open(std::shared_ptr<HandleObject> object) {
        const std::lock_guard lock(mutex_);
        do {
            last_ = last_ == kLast ? kStep : last_ + kStep;
        } while (objects_.contains(last_));
        objects_.emplace(last_, std::move(object));
        return reinterpret_cast<HANDLE>(last_);
    }

    std::shared_ptr<HandleObject> Find(HANDLE handle) {
        const std::lock_guard lock(mutex_);
        const auto found = objects_.find(reinterpret_cast<std::uintptr_t>(handle));
        return found != objects_.end() ? found->second : nullptr;
    }

    // Gives the object back, so that it ends outside of the lock. Takes no memory: handles are
    // closed where that is short.
    std::shared_ptr<HandleObject> Close(HANDLE handle) {
        const std::lock_guard lock(mutex_);
        const auto found = objects_.find(reinterpret_cast<std::uintptr_t>(handle));
        if (found == objects_.end()) {
            return nullptr;
        }
        std::shared_ptr<HandleObject> object = std::move(found->second);
        objects_.erase(found);
        return object;
    }

  private:
    // Handles leave the two lowest bits and the sign of 32 bits clear.
    static constexpr std::uintptr_t kStep = 4;
    static constexpr std::uintptr_t kLast = 0x7FFFFFFC;

    std::mutex mutex_;
    std::unordered_map<std::uintptr_t, std::shared_ptr<HandleObject>> objects_;
    std::uintptr_t last_ = 0;
};

}  // namespace

HANDLE OpenHandle(std::shared_ptr<HandleObject> object) {
    return HandleTable::Current().Open(std::move(object));
}

std::shared_ptr<HandleObject> FindHandleObject(HANDLE handle) {
    return HandleTable::Current().Find(handle);
}

BOOL CloseHandle(HANDLE handle) {
    return HandleTable::Current().Close(handle) ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

}  // namespace brevik::platform
