// Holders of loaded libraries.
#pragma once

#include "platform/component_model.h"
#include "platform/modules.h"

namespace CLibraryUtils {

// An operation that a loaded library exports, or null.
template <typename Operation>
Operation ExportOf(HMODULE module, const char* name) {
    return reinterpret_cast<Operation>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// Owner of one counted reference on a loaded library, which may be none.
class ScopedLibrary {
  public:
    explicit ScopedLibrary(HMODULE module) : module_(module) {}
    ScopedLibrary(const ScopedLibrary&) = delete;
    ScopedLibrary& operator=(const ScopedLibrary&) = delete;
    ~ScopedLibrary() {
        if (module_ != nullptr) {
            FreeLibrary(module_);
        }
    }

    explicit operator bool() const { return module_ != nullptr; }

    // An operation that the library exports, of the type Operation, or null.
    template <typename Operation>
    Operation Find(const char* name) const {
        return module_ != nullptr ? ExportOf<Operation>(module_, name) : nullptr;
    }

  private:
    HMODULE module_;
};

// Holder of a library whose component objects are made without the system's registry.
//
// An object made here has its code in the library: release it first, and end the holder after it.
class CLibraryUtilsImpl {
  public:
    CLibraryUtilsImpl() = default;
    CLibraryUtilsImpl(const CLibraryUtilsImpl&) = delete;
    CLibraryUtilsImpl& operator=(const CLibraryUtilsImpl&) = delete;
    virtual ~CLibraryUtilsImpl() { Free(); }

    // Frees the library held, loads and keeps another, and has its class factory make an object.
    // E_FAIL when it cannot be loaded or has no factory; else the factory's result.
    HRESULT CreateInstance(REFCLSID classId, IUnknown* outer, const WCHAR* libraryName, REFIID iid,
                           void** object);

  private:
    void Free();

    HMODULE module_ = nullptr;
};

}  // namespace CLibraryUtils
