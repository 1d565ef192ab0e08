#include "modules/DllPathManager.h"

#include <mutex>

#include "platform/folders.h"

namespace BrevikUtils {
namespace {

// Held while the folder is changed, and not for the lifetime of an object: what is loaded meanwhile
// may come back here.
std::mutex lock;
constinit DllPathManager* latest = nullptr;

}  // namespace

DllPathManager::DllPathManager(const WideString& folder) {
    if (folder.empty()) {
        return;
    }
    const std::lock_guard hold(lock);
    // A folder without a way back is not left. Nothing after the change can fail.
    previous_ = KeptFolder::Current();
    if (!previous_ || !SetCurrentDirectoryW(folder.c_str())) {
        previous_ = KeptFolder();
        return;
    }
    earlier_ = latest;
    if (earlier_ != nullptr) {
        earlier_->later_ = this;
    }
    latest = this;
}

DllPathManager::~DllPathManager() {
    if (!previous_) {
        return;
    }
    const std::lock_guard hold(lock);
    if (later_ != nullptr) {
        // The next object goes back to where this one came from.
        later_->previous_ = std::move(previous_);
        later_->earlier_ = earlier_;
    } else {
        previous_.MakeCurrent();
        latest = earlier_;
    }
    if (earlier_ != nullptr) {
        earlier_->later_ = later_;
    }
}

}  // namespace BrevikUtils
