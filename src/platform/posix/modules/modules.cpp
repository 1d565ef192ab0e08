#include "platform/modules.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/never_destroyed.h"
#include "platform/posix/machine/executables.h"
#include "platform/posix/modules/file_search.h"
#include "platform/posix/modules/system_modules.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/text_buffer.h"
#include "platform/text.h"

namespace brevik::platform {

// A library that LoadLibraryExW loaded.
struct ModuleHandle {
    void* library = nullptr;  // of dlopen; holds one reference
    std::u16string path;
    unsigned count = 0;
};

namespace {

constexpr std::u16string_view kLibraryExtension = u".dll";

struct CloseLibrary {
    void operator()(void* library) const { dlclose(library); }
};
using ScopedLibrary = std::unique_ptr<void, CloseLibrary>;

std::u16string Upper(std::u16string_view text) {
    std::u16string upper(text);
    CharUpperBuffW(upper.data(), static_cast<DWORD>(upper.size()));
    return upper;
}

std::u16string_view LastPart(std::u16string_view path) {
    return path.substr(path.find_last_of(u'\\') + 1);
}

// Whether the path is the one named, or, with a bare name, its last part.
bool IsNamed(std::u16string_view path, std::u16string_view name) {
    return Upper(IsBareName(name) ? LastPart(path) : path) == Upper(name);
}

// The host's handle is an address that no library has; nothing stands behind it.
constinit char hostModule = 0;

HMODULE HostModule() {
    return reinterpret_cast<HMODULE>(&hostModule);
}

// The libraries that are loaded. No library is loaded or unloaded under the lock, since their
// initialisers may load others.
class ModuleRegistry {
  public:
    static ModuleRegistry& Current() {
        static NeverDestroyed<ModuleRegistry> registry;
        return *registry;
    }

    // Counts one more loading; the handle, or null when the library is new.
    ModuleHandle* CountByName(std::u16string_view name) {
        const std::lock_guard lock(mutex_);
        ModuleHandle* module = FindName(name);
        if (module != nullptr) {
            ++module->count;
        }
        return module;
    }

    ModuleHandle* FindByName(std::u16string_view name) {
        const std::lock_guard lock(mutex_);
        return FindName(name);
    }

    // Takes over the reference where the library is new, and leaves it where it is known.
    ModuleHandle* Count(ScopedLibrary& library, std::string_view hostPath) {
        auto module = std::make_unique<ModuleHandle>();
        module->path = WindowsPath(hostPath);
        const std::lock_guard lock(mutex_);
        const auto known = std::find_if(modules_.begin(), modules_.end(), [&](const auto& entry) {
            return entry->library == library.get();
        });
        if (known != modules_.end()) {
            ++(*known)->count;
            return known->get();
        }
        module->library = library.release();
        module->count = 1;
        modules_.push_back(std::move(module));
        return modules_.back().get();
    }

    // Undoes one loading. False when there is no such module; `library` receives the reference
    // where it was the last loading.
    bool Release(HMODULE handle, ScopedLibrary& library) {
        const std::lock_guard lock(mutex_);
        const auto module = Find(handle);
        if (module == modules_.end()) {
            return false;
        }
        if (--(*module)->count == 0) {
            library.reset((*module)->library);
            modules_.erase(module);
        }
        return true;
    }

    void* LibraryOf(HMODULE handle) {
        const std::lock_guard lock(mutex_);
        const auto module = Find(handle);
        return module != modules_.end() ? (*module)->library : nullptr;
    }

    std::optional<std::u16string> PathOf(HMODULE handle) {
        const std::lock_guard lock(mutex_);
        const auto module = Find(handle);
        return module != modules_.end() ? std::optional((*module)->path) : std::nullopt;
    }

  private:
    using Modules = std::vector<std::unique_ptr<ModuleHandle>>;

    Modules::iterator Find(HMODULE handle) {
        return std::find_if(modules_.begin(), modules_.end(),
                            [=](const auto& entry) { return entry.get() == handle; });
    }

    ModuleHandle* FindName(std::u16string_view name) {
        const auto found = std::find_if(modules_.begin(), modules_.end(), [=](const auto& entry) {
            return IsNamed(entry->path, name);
        });
        return found != modules_.end() ? found->get() : nullptr;
    }

    std::mutex mutex_;
    Modules modules_;
};

// Why dlopen refused a file: it is no library itself, or one that it needs is missing.
DWORD LoadError(const std::string& path) {
    const char* message = dlerror();
    if (access(path.c_str(), R_OK) != 0) {
        return ErrorFromHost(errno);
    }
    const bool ofFile = message != nullptr && std::string_view(message).starts_with(path + ":");
    return ofFile ? ERROR_BAD_EXE_FORMAT : ERROR_MOD_NOT_FOUND;
}

HMODULE Fail(DWORD error) {
    SetLastError(error);
    return nullptr;
}

HMODULE LoadFile(const std::string& path) {
    ScopedLibrary library(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!library) {
        return Fail(LoadError(path));
    }
    return ModuleRegistry::Current().Count(library, path);
}

// The name of a module completed with its folder, where it has one.
std::u16string ModuleName(const WCHAR* name) {
    std::u16string complete = WithDefaultExtension(name, kLibraryExtension);
    return IsBareName(complete) ? complete : FullPath(complete);
}

// The address, where the module itself exports the name; the libraries that it needs do not count.
void* FindExport(void* library, const char* name) {
    void* address = dlsym(library, name);
    Dl_info info;
    link_map* owner = nullptr;
    link_map* module = nullptr;
    if (address == nullptr ||
        dladdr1(address, &info, reinterpret_cast<void**>(&owner), RTLD_DL_LINKMAP) == 0 ||
        dlinfo(library, RTLD_DI_LINKMAP, &module) != 0) {
        return nullptr;
    }
    return owner == module ? address : nullptr;
}

FARPROC FindFunction(HMODULE module, const char* name) {
    if (const SystemModule* system = FindSystemModule(module)) {
        const bool found = std::strcmp(system->function.name, name) == 0;
        return found ? system->function.address() : nullptr;
    }
    if (module == HostModule() || module == nullptr) {
        const ScopedLibrary host(dlopen(nullptr, RTLD_NOW));
        return host ? reinterpret_cast<FARPROC>(FindExport(host.get(), name)) : nullptr;
    }
    void* library = ModuleRegistry::Current().LibraryOf(module);
    return library != nullptr ? reinterpret_cast<FARPROC>(FindExport(library, name)) : nullptr;
}

// Whether a function's name is a number instead, which no library here knows its functions by.
bool IsOrdinal(const char* name) {
    return reinterpret_cast<std::uintptr_t>(name) < 0x10000;
}

}  // namespace

HMODULE LoadLibraryExW(const WCHAR* name, HANDLE, DWORD) {
    if (name == nullptr || *name == u'\0') {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const std::u16string complete = ModuleName(name);
    if (const SystemModule* system = FindSystemModule(complete)) {
        return HandleOf(system);
    }
    const bool bare = IsBareName(complete);
    if (bare) {
        if (ModuleHandle* loaded = ModuleRegistry::Current().CountByName(complete)) {
            return loaded;
        }
    }
    const std::string path = bare ? FindInSystemOrder(complete) : FindRegularFile(complete);
    return path.empty() ? Fail(ERROR_MOD_NOT_FOUND) : LoadFile(path);
}

HMODULE LoadLibraryW(const WCHAR* name) {
    return LoadLibraryExW(name, nullptr, 0);
}

BOOL FreeLibrary(HMODULE module) {
    if (module == HostModule() || FindSystemModule(module) != nullptr) {
        return TRUE;
    }
    ScopedLibrary library;
    if (!ModuleRegistry::Current().Release(module, library)) {
        SetLastError(module == nullptr ? ERROR_INVALID_HANDLE : ERROR_MOD_NOT_FOUND);
        return FALSE;
    }
    return TRUE;
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
    const FARPROC function = IsOrdinal(name) ? nullptr : FindFunction(module, name);
    if (function == nullptr) {
        SetLastError(ERROR_PROC_NOT_FOUND);
    }
    return function;
}

HMODULE GetModuleHandleW(const WCHAR* name) {
    if (name == nullptr) {
        return HostModule();
    }
    const std::u16string complete = ModuleName(name);
    if (const SystemModule* system = FindSystemModule(complete)) {
        return HandleOf(system);
    }
    if (ModuleHandle* loaded = ModuleRegistry::Current().FindByName(complete)) {
        return loaded;
    }
    return Fail(ERROR_MOD_NOT_FOUND);
}

DWORD GetModuleFileNameW(HMODULE module, WCHAR* path, DWORD size) {
    if (module == nullptr || module == HostModule()) {
        const std::u16string host = HostExecutableWindowsPath();
        if (host.empty()) {
            SetLastError(ERROR_FILE_NOT_FOUND);
            return 0;
        }
        return CopyCutting(host, path, size);
    }
    if (const SystemModule* system = FindSystemModule(module)) {
        return CopyCutting(system->path, path, size);
    }
    const std::optional<std::u16string> loaded = ModuleRegistry::Current().PathOf(module);
    if (!loaded) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return 0;
    }
    return CopyCutting(*loaded, path, size);
}

}  // namespace brevik::platform
