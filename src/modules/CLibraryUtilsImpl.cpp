#include "modules/CLibraryUtilsImpl.h"

#include <utility>

#include "modules/ScopedLibrary.h"

namespace CLibraryUtils {
namespace {

using GetClassObject = HRESULT(STDMETHODCALLTYPE*)(REFCLSID, REFIID, void**);

}  // namespace

CLibraryUtilsImpl::~CLibraryUtilsImpl() {
    Free();
}

void CLibraryUtilsImpl::Free() {
    if (module_ != nullptr) {
        FreeLibrary(std::exchange(module_, nullptr));
    }
}

HRESULT CLibraryUtilsImpl::CreateInstance(REFCLSID classId, IUnknown* outer,
                                          const WCHAR* libraryName, REFIID iid, void** object) {
    Free();
    module_ = LoadLibraryExW(libraryName, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (module_ == nullptr) {
        return E_FAIL;
    }
    const auto getClassObject = ExportOf<GetClassObject>(module_, "DllGetClassObject");
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
