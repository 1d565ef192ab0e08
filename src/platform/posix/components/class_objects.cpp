#include <cstdio>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/component_model.h"
#include "platform/modules.h"
#include "platform/never_destroyed.h"
#include "platform/posix/text/host_text.h"
#include "platform/registry.h"
#include "platform/shell_links.h"

namespace brevik::platform {
namespace {

using GetClassObject = HRESULT(STDMETHODCALLTYPE*)(REFCLSID, REFIID, void**);

// One more entry shows by its result whether there was one before.
bool IsInApartment() {
    const HRESULT entry = CoInitialize(nullptr);
    if (SUCCEEDED(entry)) {
        CoUninitialize();
    }
    return entry != S_OK;
}

// The operating system's error as a result of the component model.
HRESULT ResultOf(DWORD error) {
    return MakeHResult(0x80070000 | (error & 0xFFFF));
}

std::u16string ServerKey(REFCLSID id) {
    char text[64];
    std::snprintf(text, sizeof text,
                  "CLSID\\{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}\\InprocServer32",
                  id.Data1, id.Data2, id.Data3, id.Data4[0], id.Data4[1], id.Data4[2], id.Data4[3],
                  id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
    return WideFromUtf8(text);
}

// Path of the library that holds a class, as the registry has it. S_OK, or why there is none.
HRESULT FindServer(REFCLSID classId, std::u16string* server) {
    HKEY key = nullptr;
    const LONG opened =
        RegOpenKeyExW(HKEY_CLASSES_ROOT, ServerKey(classId).c_str(), 0, KEY_QUERY_VALUE, &key);
    if (opened != ERROR_SUCCESS) {
        return opened == ERROR_FILE_NOT_FOUND ? REGDB_E_CLASSNOTREG
                                              : ResultOf(static_cast<DWORD>(opened));
    }
    // No path of the system is longer.
    std::vector<WCHAR> path(0x8000);
    auto size = static_cast<DWORD>((path.size() - 1) * sizeof(WCHAR));
    DWORD type = REG_NONE;
    const LONG error =
        RegQueryValueExW(key, nullptr, nullptr, &type, reinterpret_cast<BYTE*>(path.data()), &size);
    RegCloseKey(key);
    const bool isText = error == ERROR_SUCCESS && (type == REG_SZ || type == REG_EXPAND_SZ);
    *server = isText ? path.data() : std::u16string();
    return server->empty() ? REGDB_E_CLASSNOTREG : S_OK;
}

// The libraries that classes come from. Each stays loaded: nothing shows when its last object has
// gone. No library is loaded under the lock, since its initialisers may ask for other classes.
class Servers {
  public:
    static Servers& Current() {
        static NeverDestroyed<Servers> servers;
        return *servers;
    }

    // The library's class objects. S_OK, or why it has none.
    HRESULT Find(const std::u16string& path, GetClassObject* getClassObject) {
        {
            const std::lock_guard lock(mutex_);
            if (const auto known = servers_.find(path); known != servers_.end()) {
                *getClassObject = known->second;
                return S_OK;
            }
        }
        const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
        if (module == nullptr) {
            return ResultOf(GetLastError());
        }
        *getClassObject = reinterpret_cast<GetClassObject>(
            reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
        if (*getClassObject == nullptr) {
            FreeLibrary(module);
            return CO_E_ERRORINDLL;
        }
        const std::lock_guard lock(mutex_);
        if (!servers_.emplace(path, *getClassObject).second) {
            // Another thread was first, and its loading keeps the library.
            FreeLibrary(module);
        }
        return S_OK;
    }

  private:
    std::mutex mutex_;
    std::map<std::u16string, GetClassObject> servers_;
};

HRESULT CreateFromServer(REFCLSID classId, IUnknown* outer, REFIID iid, void** object) {
    std::u16string server;
    HRESULT result = FindServer(classId, &server);
    GetClassObject getClassObject = nullptr;
    if (SUCCEEDED(result)) {
        result = Servers::Current().Find(server, &getClassObject);
    }
    if (FAILED(result)) {
        return result;
    }
    IClassFactory* factory = nullptr;
    result = getClassObject(classId, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    if (FAILED(result) || factory == nullptr) {
        return FAILED(result) ? result : E_UNEXPECTED;
    }
    result = factory->CreateInstance(outer, iid, object);
    factory->Release();
    if (FAILED(result)) {
        *object = nullptr;
    }
    return result;
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
    // A class in another process is none here.
    if ((context & CLSCTX_INPROC_SERVER) == 0) {
        return REGDB_E_CLASSNOTREG;
    }
    if (classId != CLSID_ShellLink) {
        return CreateFromServer(classId, outer, iid, object);
    }
    return outer != nullptr ? CLASS_E_NOAGGREGATION : CreateShellLink(iid, object);
}

}  // namespace brevik::platform
