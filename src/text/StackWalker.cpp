#include "text/StackWalker.h"

#include <mutex>
#include <utility>

namespace StackWalker {
namespace {

struct Installed {
    std::mutex lock;
    SharedHandle<StackWalker_IF> walker;
};

// Never destroyed: an exception may be made while the process ends.
Installed& State() {
    static Installed& installed = *new Installed;
    return installed;
}

}  // namespace

SharedHandle<StackWalker_IF> Current() {
    static const auto& dummy =
        *new SharedHandle<StackWalker_IF>(std::make_shared<DummyStackWalker>());
    Installed& installed = State();
    const std::lock_guard hold(installed.lock);
    return installed.walker != nullptr ? installed.walker : dummy;
}

void SetCurrent(SharedHandle<StackWalker_IF> walker) {
    Installed& installed = State();
    const std::lock_guard hold(installed.lock);
    installed.walker = std::move(walker);
}

}  // namespace StackWalker
