#include "modules/DllPathManager.h"

#include <mutex>

#include "platform/folders.h"

namespace BrevikUtils {
namespace {

// Held while the folder is changed, and not for the lifetime of an object: what is loaded meanwhile
// may come back here.
std::mutex lock;
constinit DllPathManager* latest = nullptr;

WideString CurrentFolder() {
    WideString path(GetCurrentDirectoryW(0, nullptr), WCHAR{});
    const DWORD length = GetCurrentDirectoryW(static_cast<DWORD>(path.size()), path.data());
    // Longer than announced: the host has changed it in between.
    path.resize(length < path.size() ? length : 0);
    return path;
}

}  // namespace

DllPathManager::DllPathManager(const WideString& folder) {
    if (folder.empty()) {
        return;
    }
    const std::lock_guard hold(lock);
    // A current folder that no path leads to could not be put back, so it is not left.
    WideString current = CurrentFolder();
    if (current.empty() || !SetCurrentDirectoryW(folder.c_str())) {
        return;
    }
    previous_ = std::move(current);
    earlier_ = latest;
    if (earlier_ != nullptr) {
        earlier_->later_ = this;
    }
    latest = this;
}

DllPathManager::~DllPathManager() {
    if (previous_.empty()) {
        return;
    }
    const std::lock_guard hold(lock);
    if (later_ != nullptr) {
        // Whoever came since goes back to where this one came from.
        later_->previous_ = std::move(previous_);
        later_->earlier_ = earlier_;
    } else {
        SetCurrentDirectoryW(previous_.c_str());
        latest = earlier_;
    }
    if (earlier_ != nullptr) {
        earlier_->later_ = later_;
    }
}

}  // namespace BrevikUtils
