#include "services/VelmarUpdateService.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <utility>

#include "catalogue/manager/CertificateSources.h"
#include "platform/never_destroyed.h"
#include "registry/CRegKeyW.h"
#include "services/ServiceCall.h"

namespace {

// Installers of the suite write to the 32-bit view alone.
constexpr REGSAM kAccess = KEY_READ | KEY_WOW64_32KEY;

bool OpenUninstallKey(CRegKeyW& key, const Utf8String& entry) {
    return key.Open(HKEY_LOCAL_MACHINE, CertificateSources::UninstallKeyOf(entry).c_str(),
                    kAccess) == ERROR_SUCCESS;
}

DWORD NumberOr(CRegKeyW& key, const WCHAR* name, DWORD otherwise) {
    DWORD value = 0;
    return key.QueryDWORDValue(name, &value) == ERROR_SUCCESS ? value : otherwise;
}

std::string ReadVersion(CRegKeyW& key) {
    const auto major = static_cast<int>(NumberOr(key, WIDE("VersionMajor"), 0));
    const auto minor = static_cast<int>(NumberOr(key, WIDE("VersionMinor"), 0));
    char text[MAX_PATH];
    std::snprintf(text, sizeof text, "%d.%d", major, minor);
    return text;
}

std::string ReadSku(CRegKeyW& key) {
    WCHAR text[MAX_PATH] = {};
    DWORD count = MAX_PATH;
    key.QueryStringValue(WIDE("SKUID"), text, &count);
    return WideToNarrow(text);
}

using Service = VelmarUpdateService::Service;

// The process's service object. It belongs to a foreign library, so nothing is called on it, and
// none is made or given back, under the lock.
class ProcessService {
  public:
    static ProcessService& Current() {
        static NeverDestroyed<ProcessService> service;
        return *service;
    }

    std::shared_ptr<Service> Get() {
        const std::lock_guard hold(lock_);
        return object_;
    }

    // Keeps the object unless another thread was first; the one that is kept.
    std::shared_ptr<Service> Keep(const std::shared_ptr<Service>& made) {
        const std::lock_guard hold(lock_);
        if (object_ == nullptr) {
            object_ = made;
        }
        return object_;
    }

    void GiveBack() {
        std::unique_lock hold(lock_);
        const std::shared_ptr<Service> object = std::move(object_);
        hold.unlock();
    }

  private:
    std::mutex lock_;
    std::shared_ptr<Service> object_;
};

// Gives the object back, and then its library, when the process ends.
struct AtEnd {
    ~AtEnd() { ProcessService::Current().GiveBack(); }
};

// A service may dispatch while it is made, which makes another one; a third is not made, or this
// would never end.
constexpr int kMostMakings = 2;
thread_local int makings = 0;

struct Making {
    Making() { ++makings; }
    ~Making() { --makings; }
};

// Null where it cannot be made.
std::shared_ptr<Service> Make() {
    if (makings == kMostMakings) {
        return nullptr;
    }
    const Making making;
    const auto object = std::make_shared<Service>();
    // The object counts, not the result.
    CallService("IUpdateServices", [&object] {
        return object->CreateInstance(CLSID_UpdateServices, kServiceLibrary, IID_IUpdateServices);
    });
    if (!*object) {
        return nullptr;
    }
    // Made once the object's library is loaded, so that it ends before what that library keeps.
    static const AtEnd at_end;
    return ProcessService::Current().Keep(object);
}

}  // namespace

bool VelmarUpdateService::GetUninstallInfo(const Utf8String& installerGuid,
                                           const Utf8String& usedBy, std::uint32_t* language,
                                           std::string* version, std::string* sku) const {
    CRegKeyW user;
    const bool hasUser = OpenUninstallKey(user, usedBy.empty() ? installerGuid : usedBy);
    if (hasUser) {
        *version = ReadVersion(user);
        *sku = ReadSku(user);
    }
    CRegKeyW own;
    const bool hasOwn = OpenUninstallKey(own, installerGuid);
    if (hasOwn) {
        *language = NumberOr(own, WIDE("Language"), *language);
    }
    return hasUser || hasOwn;
}

VelmarUpdateService::Service VelmarUpdateService::GetService() const {
    std::shared_ptr<Service> object = ProcessService::Current().Get();
    if (object == nullptr) {
        object = Make();
    }
    return Service(object != nullptr ? object->NewReference() : nullptr);
}
