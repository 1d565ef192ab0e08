#include "platform/posix/handle.h"

#include <mutex>
#include <utility>
#include <vector>

#include "platform/processes.h"

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
        // Never destroyed: a thread may still use a handle while the process ends.
        static HandleTable& table = *new HandleTable;
        return table;
    }

    HANDLE Open(std::shared_ptr<HandleObject> object) {
        const std::lock_guard lock(mutex_);
        if (free_.empty()) {
            if (places_.size() == kPlaceMask) {
                return nullptr;
            }
            if (free_.capacity() <= places_.size()) {
                free_.reserve(2 * places_.size() + 8);
            }
            places_.emplace_back();
            free_.push_back(places_.size() - 1);
        }
        const std::size_t index = free_.back();
        free_.pop_back();
        Place& place = places_[index];
        place.object = std::move(object);
        return reinterpret_cast<HANDLE>(((place.uses & kUseMask) << kPlaceBits | (index + 1)) << 2);
    }

    std::shared_ptr<HandleObject> Find(HANDLE handle) {
        const std::lock_guard lock(mutex_);
        const Place* place = FindPlace(handle);
        return place != nullptr ? place->object : nullptr;
    }

    // Gives the object back, so that it ends outside of the lock.
    std::shared_ptr<HandleObject> Close(HANDLE handle) {
        const std::lock_guard lock(mutex_);
        Place* place = FindPlace(handle);
        if (place == nullptr) {
            return nullptr;
        }
        ++place->uses;
        free_.push_back(static_cast<std::size_t>(place - places_.data()));
        return std::exchange(place->object, nullptr);
    }

  private:
    struct Place {
        std::shared_ptr<HandleObject> object;
        std::uintptr_t uses = 0;
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
    std::vector<std::size_t> free_;  // has room for all places: to close takes no memory
};

}  // namespace

HANDLE OpenHandle(std::shared_ptr<HandleObject> object) {
    return HandleTable::Current().Open(std::move(object));
}

std::shared_ptr<HandleObject> FindHandleObject(HANDLE handle) {
    return HandleTable::Current().Find(handle);
}

BOOL CloseHandle(HANDLE handle) {
    if (!HandleTable::Current().Close(handle)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return TRUE;
}

}  // namespace brevik::platform
