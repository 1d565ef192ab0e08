#include "frame/BrevikConfigModule.h"

#include "modules/DllPathManager.h"
#include "modules/ModuleFolders.h"
#include "platform/modules.h"
#include "platform/never_destroyed.h"
#include "services/ServiceCall.h"

namespace BrevikConfig {
namespace {

HMODULE Load(const WideString& name) {
    return LoadLibraryExW(name.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

}  // namespace

void BrevikConfigModule::LoadSiblingLibrary() {
    if (libraryLoaded != 0) {
        return;
    }
    const WideString folder = FindSpelledLibraryFolder(kServiceLibrary);
    // The folder is current during the load, so that what the library itself needs is found beside
    // it. Threads that come here at once each load the library, which counts.
    const BrevikUtils::DllPathManager current(folder);
    HMODULE module = Load(kServiceLibrary);
    if (module == nullptr && !folder.empty()) {
        // Not every system looks into every current folder.
        module = Load(folder + WIDE("\\") + kServiceLibrary);
    }
    if (module != nullptr) {
        libraryLoaded = 1;
    }
}

BrevikConfigModule& GetModule() {
    static NeverDestroyed<BrevikConfigModule> module;
    return *module;
}

}  // namespace BrevikConfig
