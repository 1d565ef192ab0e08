// The shortcut side of a file object.

#include "filesystem/ClassFactory_IF.h"
#include "filesystem/Private/Windows/FileSpec_Win32.h"
#include "platform/shell_links.h"

namespace {

constexpr int kPathSize = 0x8000;

// Undoes one successful CoInitialize of the calling thread, if there was one.
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

    bool IsEntered() const { return isEntered_; }
    HRESULT Enter() {
        const HRESULT result = CoInitialize(nullptr);
        isEntered_ = SUCCEEDED(result);
        return result;
    }

  private:
    bool isEntered_ = false;
};

template <typename Interface>
class ScopedInterface {
  public:
    ScopedInterface() = default;
    ScopedInterface(const ScopedInterface&) = delete;
    ScopedInterface& operator=(const ScopedInterface&) = delete;
    ~ScopedInterface() {
        if (pointer_ != nullptr) {
            pointer_->Release();
        }
    }

    Interface* operator->() const { return pointer_; }
    void** Receive() { return reinterpret_cast<void**>(&pointer_); }

  private:
    Interface* pointer_ = nullptr;
};

// Makes the shortcut object, in an apartment of our own where the thread is in
// none.
HRESULT CreateShellLink(ScopedApartment& apartment, void** link) {
    for (;;) {
        const HRESULT result =
            CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW, link);
        if (result != CO_E_NOTINITIALIZED || apartment.IsEntered()) {
            return result;
        }
        const HRESULT entered = apartment.Enter();
        if (FAILED(entered)) {
            return entered;
        }
    }
}

HRESULT ReadTarget(const WideString& shortcut, WideString& target) {
    ScopedApartment apartment;
    ScopedInterface<IShellLinkW> link;
    ScopedInterface<IPersistFile> file;
    HRESULT result = CreateShellLink(apartment, link.Receive());
    if (SUCCEEDED(result)) {
        result = link->QueryInterface(IID_IPersistFile, file.Receive());
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
