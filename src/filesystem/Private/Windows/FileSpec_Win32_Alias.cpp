// The shortcut side of a file object.

#include "filesystem/ClassFactory_IF.h"
#include "filesystem/Private/Windows/FileSpec_Win32.h"
#include "modules/ComponentObject.h"
#include "platform/shell_links.h"

namespace {

constexpr int kPathSize = 0x8000;

// An apartment of the calling thread's own, where it is in none.
class ScopedApartment {
  public:
    ScopedApartment() = default;
    ScopedApartment(const ScopedApartment&) = delete;
    ScopedApartment& operator=(const ScopedApartment&) = delete;
    ~ScopedApartment() {
        if (isEntered_) {
            CoUninitialize();
        }
    }

    HRESULT Enter() {
        const HRESULT result = CoInitialize(nullptr);
        isEntered_ = SUCCEEDED(result);
        return result;
    }

  private:
    bool isEntered_ = false;
};

HRESULT CreateShellLink(ScopedApartment& apartment, void** link) {
    const auto create = [link] {
        return CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                link);
    };
    HRESULT result = create();
    if (result == CO_E_NOTINITIALIZED) {
        result = apartment.Enter();
        result = SUCCEEDED(result) ? create() : result;
    }
    return result;
}

HRESULT ReadTarget(const WideString& shortcut, WideString& target) {
    ScopedApartment apartment;
    CLibraryUtils::ComponentObject<IShellLinkW> link;
    CLibraryUtils::ComponentObject<IPersistFile> file;
    HRESULT result = CreateShellLink(apartment, link.Out());
    if (SUCCEEDED(result)) {
        result = link->QueryInterface(IID_IPersistFile, file.Out());
    }
    if (SUCCEEDED(result)) {
        result = file->Load(shortcut.c_str(), STGM_READ);
    }
    if (SUCCEEDED(result)) {
        result = link->Resolve(nullptr, SLR_NO_UI | SLR_ANY_MATCH | SLR_UPDATE);
    }
    if (SUCCEEDED(result)) {
        target.resize(kPathSize);
        result = link->GetPath(target.data(), kPathSize, nullptr, SLGP_UNCPRIORITY);
    }
    return result;
}

}  // namespace

SharedHandle<FileSpec_IF> FileSpec_Win32::ResolveAlias() {
    WideString target;
    const HRESULT result = ReadTarget(GetLongPath(), target);
    if (FAILED(result)) {
        Fail(static_cast<DWORD>(result));
    }
    return ClassFactory_IF::MakeFileSpec(FilePath(target), nullptr);
}
