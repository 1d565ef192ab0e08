#include "modules/CLibraryUtilsImpl.h"

#include <utility>

namespace CLibraryUtils {

void CLibraryUtilsImpl::Free() {
    if (module_ != nullptr) {
        FreeLibrary(std::exchange(module_, nullptr));
    }
}

HRESULT CLibraryUtilsImpl::CreateInstance(REFCLSID classId, IUnknown* outer,
                                          const WCHAR* libraryName, REFIID iid, void** object) {
    Free();
    using GetClassObject = HRESULT(STDMETHODCALLTYPE*)(REFCLSID, REFIID, void**);
    module_ = LoadLibraryExW(libraryName, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    const auto getClassObject =
        module_ != nullptr ? ExportOf<GetClassObject>(module_, "DllGetClassObject") : nullptr;
    if (getClassObject == nullptr) {
        return E_FAIL;
    }
    IClassFactory* factory = nullptr;
    HRESULT result = getClassObject(classId, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    if (SUCCEEDED(result) && factory == nullptr) {
        return E_FAIL;
    }
    if (SUCCEEDED(result)) {
        result = factory->CreateInstance(outer, iid, object);
        factory->Release();
    }
    return result;
}

}  // namespace CLibraryUtils
