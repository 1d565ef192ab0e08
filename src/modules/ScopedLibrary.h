// Owner of one counted reference on a loaded library, which may be none.
#pragma once

#include "platform/modules.h"

namespace CLibraryUtils {

// An operation that a loaded library exports, or null.
template <typename Operation>
Operation ExportOf(HMODULE module, const char* name) {
    return reinterpret_cast<Operation>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

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

}  // namespace CLibraryUtils
