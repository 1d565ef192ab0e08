#include "filesystem/Private/Windows/VolumeRegistry.h"

#include <map>
#include <memory>
#include <mutex>

#include "filesystem/Private/Windows/Volume_Win32.h"
#include "platform/never_destroyed.h"

namespace FileSystem_Win32 {
namespace {

struct Registry {
    std::mutex lock;
    std::map<VolumeInfo, SharedHandle<Volume_IF>> volumes;
};

Registry& GetRegistry() {
    static NeverDestroyed<Registry> registry;
    return *registry;
}

}  // namespace

SharedHandle<Volume_IF> FindVolume(const VolumeInfo& info, bool create) {
    Registry& registry = GetRegistry();
    const std::lock_guard<std::mutex> hold(registry.lock);
    const auto found = registry.volumes.find(info);
    if (found != registry.volumes.end()) {
        return found->second;
    }
    if (!create) {
        return nullptr;
    }
    SharedHandle<Volume_IF> volume = std::make_shared<Volume_Win32>(info);
    registry.volumes.emplace(info, volume);
    return volume;
}

void ClearVolumes() {
    Registry& registry = GetRegistry();
    const std::lock_guard<std::mutex> hold(registry.lock);
    registry.volumes.clear();
}

}  // namespace FileSystem_Win32
