#include "platform/posix/base/handle.h"

#include <mutex>
#include <new>
#include <utility>
#include <vector>

#include "platform/handles.h"
#include "platform/never_destroyed.h"
#include "platform/posix/base/last_error.h"

namespace brevik::platform {
namespace {

// A handle holds the place of its object in the low bits, from 1, and above it how often that place
// has been used before, so that a handle which was closed does not come to stand for a later object
// soon. Both leave the two lowest bits and the sign of 32 bits clear.
constexpr unsigned kPlaceBits = 20;
constexpr unsigned kUseBits = 9;
constexpr std::uintptr_t kPlaceMask = (std::uintptr_t{1} << kPlaceBits) - 1;
constexpr std::uintptr_t kUseMask = (std::uintptr_t{1} << kUseBits) - 1;

class HandleTable {
  public:
    static HandleTable& Current() {
        static NeverDestroyed<HandleTable> table;
        return *table;
    }

    HANDLE Open(std::shared_ptr<HandleObject> object) {
        const std::lock_guard lock(mutex_);
        if (firstFree_ == 0) {
            if (places_.size() == kPlaceMask) {
                throw std::bad_alloc();
            }
            places_.emplace_back();
            firstFree_ = places_.size();
        }
        const std::uintptr_t number = firstFree_;
        Place& place = places_[number - 1];
        firstFree_ = place.nextFree;
        place.object = std::move(object);
        return reinterpret_cast<HANDLE>(((place.uses & kUseMask) << kPlaceBits | number) << 2);
    }

    std::shared_ptr<HandleObject> Find(HANDLE handle) {
        const std::lock_guard lock(mutex_);
        const Place* place = FindPlace(handle);
        return place != nullptr ? place->object : nullptr;
    }

    // Gives the object back, so that it ends outside of the lock. Takes no memory: handles are
    // closed where that is short.
    std::shared_ptr<HandleObject> Close(HANDLE handle) {
        const std::lock_guard lock(mutex_);
        Place* place = FindPlace(handle);
        if (place == nullptr) {
            return nullptr;
        }
        ++place->uses;
        place->nextFree =
            std::exchange(firstFree_, static_cast<std::size_t>(place - places_.data()) + 1);
        return std::exchange(place->object, nullptr);
    }

  private:
    struct Place {
        std::shared_ptr<HandleObject> object;
        std::uintptr_t uses = 0;
        std::size_t nextFree = 0;
    };

    Place* FindPlace(HANDLE handle) {
        const auto value = reinterpret_cast<std::uintptr_t>(handle);
        const std::uintptr_t number = (value >> 2) & kPlaceMask;
        if ((value & 3) != 0 || number == 0 || number > places_.size()) {
            return nullptr;
        }
        Place& place = places_[number - 1];
        const bool current = value >> 2 >> kPlaceBits == (place.uses & kUseMask);
        return current && place.object ? &place : nullptr;
    }

    std::mutex mutex_;
    std::vector<Place> places_;
    std::size_t firstFree_ = 0;  // a place's number; 0: none is free
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
