#include "text/StackWalker.h"

#include <mutex>
#include <utility>

#include "platform/never_destroyed.h"

namespace StackWalker {
namespace {

struct Installed {
    std::mutex lock;
    SharedHandle<StackWalker_IF> walker;
};

Installed& State() {
    static NeverDestroyed<Installed> installed;
    return *installed;
}

}  // namespace

SharedHandle<StackWalker_IF> Current() {
    static NeverDestroyed<SharedHandle<StackWalker_IF>> dummy(std::make_shared<DummyStackWalker>());
    Installed& installed = State();
    const std::lock_guard hold(installed.lock);
    return installed.walker != nullptr ? installed.walker : *dummy;
}

void SetCurrent(SharedHandle<StackWalker_IF> walker) {
    Installed& installed = State();
    const std::lock_guard hold(installed.lock);
    installed.walker = std::move(walker);
}

}  // namespace StackWalker
