// The folder that is the process's current one, to come back to without needing memory.
#pragma once

#include <utility>

#include "platform/folders.h"
#include "platform/types.h"

namespace brevik::platform {

class PLATFORM_API KeptFolder {
  public:
    // Keeps nothing.
    KeptFolder() = default;

    // Of the present current folder; keeps nothing where there is no way back to it.
    static KeptFolder Current();

    KeptFolder(KeptFolder&& other) noexcept : place_(std::exchange(other.place_, Place())) {}
    KeptFolder& operator=(KeptFolder&& other) noexcept {
        std::swap(place_, other.place_);
        return *this;
    }
    ~KeptFolder();

    explicit operator bool() const { return place_ != Place(); }

    void MakeCurrent() const noexcept;

  private:
#ifdef _WIN32
    using Place = WideString;  // its path; empty for none
#else
    using Place = int;  // one more than its descriptor; 0 for none
#endif

    Place place_ = Place();
};

#ifdef _WIN32

inline KeptFolder KeptFolder::Current() {
    KeptFolder kept;
    kept.place_.resize(GetCurrentDirectoryW(0, nullptr));
    const DWORD size = static_cast<DWORD>(kept.place_.size());
    const DWORD length = GetCurrentDirectoryW(size, kept.place_.data());
    // Longer than announced: the host has changed it in between.
    kept.place_.resize(length < size ? length : 0);
    return kept;
}

inline KeptFolder::~KeptFolder() = default;

inline void KeptFolder::MakeCurrent() const noexcept {
    SetCurrentDirectoryW(place_.c_str());
}

#endif

}  // namespace brevik::platform

using brevik::platform::KeptFolder;
