#include "platform/modules.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/never_destroyed.h"
#include "platform/posix/modules/file_search.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/host_text.h"
#include "platform/posix/text/text_buffer.h"

namespace brevik::platform {

// A library that LoadLibraryExW loaded.
struct ModuleHandle {
    void* library = nullptr;  // of dlopen; holds one reference
    std::u16string path;
    unsigned count = 0;
};

namespace {

struct CloseLibrary {
    void operator()(void* library) const { dlclose(library); }
};
using ScopedLibrary = std::unique_ptr<void, CloseLibrary>;

// Whether a name is completed with a folder before it is looked for.
bool IsBareName(std::u16string_view name) {
    return name.find_first_of(u"\\/:") == name.npos;
}

// The name of a module completed with its folder, where it has one, and with the extension of
// libraries where its last part has none. A dot at the end stands for no extension.
std::u16string ModuleName(const WCHAR* name) {
    std::u16string complete = name;
    if (complete.ends_with(u'.')) {
        complete.pop_back();
    } else if (complete.find(u'.', complete.find_last_of(u"\\/") + 1) == complete.npos) {
        complete += u".dll";
    }
    return IsBareName(complete) ? complete : FullPath(complete);
}

// Whether the path is the one named, or, with a bare name, its last part.
bool IsNamed(std::u16string_view path, std::u16string_view name) {
    const std::size_t begin = IsBareName(name) ? path.find_last_of(u'\\') + 1 : 0;
    return UpperCase(path.substr(begin)) == UpperCase(name);
}

// The host's handle is an address that no library has; nothing lies at it.
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

    // The handle of a loaded library, which counts so many further loadings, or null.
    HMODULE FindByName(std::u16string_view name, unsigned loadings) {
        const std::lock_guard lock(mutex_);
        const auto module =
            FindIf([&](const ModuleHandle& entry) { return IsNamed(entry.path, name); });
        if (module == modules_.end()) {
            return nullptr;
        }
        (*module)->count += loadings;
        return module->get();
    }

    // Takes over the reference where the library is new, and leaves it where it is known.
    HMODULE Count(ScopedLibrary& library, std::string_view hostPath) {
        auto made = std::make_unique<ModuleHandle>();
        made->path = WindowsPath(hostPath);
        const std::lock_guard lock(mutex_);
        auto module =
            FindIf([&](const ModuleHandle& entry) { return entry.library == library.get(); });
        if (module == modules_.end()) {
            module = modules_.insert(module, std::move(made));
            (*module)->library = library.release();
        }
        ++(*module)->count;
        return module->get();
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

    std::optional<ModuleHandle> Get(HMODULE handle) {
        const std::lock_guard lock(mutex_);
        const auto module = Find(handle);
        return module != modules_.end() ? std::optional(**module) : std::nullopt;
    }

  private:
    using Modules = std::vector<std::unique_ptr<ModuleHandle>>;

    template <typename Predicate>
    Modules::iterator FindIf(Predicate isMeant) {
        return std::find_if(modules_.begin(), modules_.end(),
                            [&](const auto& entry) { return isMeant(*entry); });
    }
    Modules::iterator Find(HMODULE handle) {
        return FindIf([=](const ModuleHandle& entry) { return &entry == handle; });
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

HMODULE LoadFile(const std::string& path) {
    ScopedLibrary library(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!library) {
        return Fail<HMODULE>(LoadError(path));
    }
    return ModuleRegistry::Current().Count(library, path);
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

}  // namespace

HMODULE LoadLibraryExW(const WCHAR* name, HANDLE, DWORD) {
    const std::u16string complete = ModuleName(name);
    const bool isBare = IsBareName(complete);
    HMODULE const loaded = isBare ? ModuleRegistry::Current().FindByName(complete, 1) : HMODULE{};
    if (loaded != nullptr) {
        return loaded;
    }
    const std::string path = isBare ? FindInSystemOrder(complete) : FindRegularFile(complete);
    return path.empty() ? Fail<HMODULE>(ERROR_MOD_NOT_FOUND) : LoadFile(path);
}

HMODULE LoadLibraryW(const WCHAR* name) {
    return LoadLibraryExW(name, nullptr, 0);
}

BOOL FreeLibrary(HMODULE module) {
    ScopedLibrary library;
    return ModuleRegistry::Current().Release(module, library) ? TRUE : Fail(ERROR_MOD_NOT_FOUND);
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
    const std::optional<ModuleHandle> loaded = ModuleRegistry::Current().Get(module);
    void* const function = loaded ? FindExport(loaded->library, name) : nullptr;
    return function != nullptr ? reinterpret_cast<FARPROC>(function)
                               : Fail<FARPROC>(ERROR_PROC_NOT_FOUND);
}

HMODULE GetModuleHandleW(const WCHAR* name) {
    if (name == nullptr) {
        return HostModule();
    }
    HMODULE const loaded = ModuleRegistry::Current().FindByName(ModuleName(name), 0);
    return loaded != nullptr ? loaded : Fail<HMODULE>(ERROR_MOD_NOT_FOUND);
}

DWORD GetModuleFileNameW(HMODULE module, WCHAR* path, DWORD size) {
    if (module == nullptr || module == HostModule()) {
        const std::u16string host = HostExecutableWindowsPath();
        return host.empty() ? Fail<DWORD>(ERROR_FILE_NOT_FOUND) : CopyCutting(host, path, size);
    }
    const std::optional<ModuleHandle> loaded = ModuleRegistry::Current().Get(module);
    return loaded ? CopyCutting(loaded->path, path, size) : Fail<DWORD>(ERROR_MOD_NOT_FOUND);
}

}  // namespace brevik::platform
