// Holder of a library whose component objects are made without the system's registry.
//
// An object made here has its code in the library: release it first, and end the holder after it.
#pragma once

#include "platform/component_model.h"
#include "platform/modules.h"

namespace CLibraryUtils {

class CLibraryUtilsImpl {
  public:
    CLibraryUtilsImpl() = default;
    CLibraryUtilsImpl(const CLibraryUtilsImpl&) = delete;
    CLibraryUtilsImpl& operator=(const CLibraryUtilsImpl&) = delete;
    virtual ~CLibraryUtilsImpl() { Free(); }

    // Loads the library, keeps it, and has its class factory make an object. E_FAIL when the
    // library cannot be loaded or has no factory; else the factory's result. A library held before
    // is freed.
    HRESULT CreateInstance(REFCLSID classId, IUnknown* outer, const WCHAR* libraryName, REFIID iid,
                           void** object);

  private:
    void Free();

    HMODULE module_ = nullptr;
};

}  // namespace CLibraryUtils
