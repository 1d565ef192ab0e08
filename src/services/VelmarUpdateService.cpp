#include "services/VelmarUpdateService.h"

#include <cstdio>
#include <mutex>
#include <optional>

#include "registry/CRegKeyW.h"
#include "services/ServiceCall.h"

namespace {

constexpr const WCHAR* kUninstallKey =
    WIDE("Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\");

// Installers of the suite write to the 32-bit view alone.
constexpr REGSAM kAccess = KEY_READ | KEY_WOW64_32KEY;

bool OpenUninstallKey(CRegKeyW& key, const Utf8String& entry) {
    return key.Open(HKEY_LOCAL_MACHINE, (kUninstallKey + Utf8ToWide(entry)).c_str(), kAccess) ==
           ERROR_SUCCESS;
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

// The process's service object.
struct ProcessService {
    std::mutex mutex;  // guards the object, and its making
    std::optional<VelmarUpdateService::Service> object;
};

ProcessService& Current() {
    // Never destroyed: a host may call while the process ends, and then makes an object anew.
    static ProcessService& service = *new ProcessService;
    return service;
}

// Gives the object back, and then its library, when the library is unloaded or the process ends.
class AtUnload {
  public:
    ~AtUnload() {
        // A thread that makes the object at this moment keeps it: the end does not wait for what
        // the sibling library may be doing.
        const std::unique_lock hold(Current().mutex, std::try_to_lock);
        if (hold.owns_lock()) {
            Current().object.reset();
        }
    }
};

// Leaves the service empty where it cannot be made.
void MakeObject(ProcessService& service) {
    VelmarUpdateService::Service& object = service.object.emplace();
    // Whatever it answers: an object that is there is one.
    CallService("IUpdateServices", [&object] {
        return object.CreateInstance(CLSID_UpdateServices, kServiceLibrary, IID_IUpdateServices);
    });
    if (!object) {
        service.object.reset();
        return;
    }
    // Made when the object's library is there already, so that it ends ahead of what that library
    // keeps.
    static const AtUnload at_unload;
}

}  // namespace

VelmarUpdateService::~VelmarUpdateService() = default;

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
    ProcessService& service = Current();
    const std::lock_guard hold(service.mutex);
    if (!service.object) {
        MakeObject(service);
    }
    return Service(service.object ? service.object->NewReference() : nullptr);
}
