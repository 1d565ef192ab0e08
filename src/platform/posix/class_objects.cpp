#include <algorithm>
#include <iterator>

#include "platform/component_model.h"
#include "platform/posix/built_in_classes.h"
#include "platform/shell_links.h"

namespace brevik::platform {
namespace {

struct BuiltInClass {
    CLSID id;
    HRESULT (*create)(REFIID iid, void** object);
};

constexpr BuiltInClass kBuiltInClasses[] = {
    {CLSID_ShellLink, CreateShellLink},
};

// One more entry tells by its result whether there was one before.
bool IsInApartment() {
    const HRESULT entry = CoInitialize(nullptr);
    if (SUCCEEDED(entry)) {
        CoUninitialize();
    }
    return entry != S_OK;
}

}  // namespace

HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID iid,
                         void** object) {
    if (object == nullptr) {
        return E_INVALIDARG;
    }
    *object = nullptr;
    if (!IsInApartment()) {
        return CO_E_NOTINITIALIZED;
    }
    const auto builtIn =
        std::find_if(std::begin(kBuiltInClasses), std::end(kBuiltInClasses),
                     [&](const BuiltInClass& candidate) { return candidate.id == classId; });
    if (builtIn == std::end(kBuiltInClasses) || (context & CLSCTX_INPROC_SERVER) == 0) {
        return REGDB_E_CLASSNOTREG;
    }
    return outer != nullptr ? CLASS_E_NOAGGREGATION : builtIn->create(iid, object);
}

}  // namespace brevik::platform
