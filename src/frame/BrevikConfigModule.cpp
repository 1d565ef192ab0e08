#include "frame/BrevikConfigModule.h"

#include <mutex>

#include "modules/DllPathManager.h"
#include "modules/ModuleFolders.h"
#include "platform/modules.h"

namespace BrevikConfig {
namespace {

constexpr const WCHAR* kSiblingLibrary = WIDE("VelmarHTTPClient13.dll");

// Two threads that changed the current folder at once would each put back what the other had set.
std::mutex load_lock;

}  // namespace

void BrevikConfigModule::LoadSiblingLibrary() {
    if (libraryLoaded != 0) {
        return;
    }
    const WideString folder = FindLibraryFolder(kSiblingLibrary);
    const std::lock_guard hold(load_lock);
    if (libraryLoaded != 0) {
        return;
    }
    // The folder is current during the load, so that what the library itself needs is found beside
    // it.
    const BrevikUtils::DllPathManager current(folder);
    if (LoadLibraryExW(kSiblingLibrary, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH) != nullptr) {
        libraryLoaded = 1;
    }
}

BrevikConfigModule& GetModule() {
    // Never destroyed: a host may call while the process ends. What its destruction would do is
    // done when the library is unloaded.
    static BrevikConfigModule& module = *new BrevikConfigModule;
    static const struct AtUnload {
        ~AtUnload() { module.Forget(); }
    } at_unload;
    return module;
}

}  // namespace BrevikConfig
