#include "platform/shell_links.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/files.h"
#include "platform/handles.h"
#include "platform/posix/files/shortcut_file.h"
#include "platform/posix/paths/paths.h"

namespace brevik::platform {
namespace {

// No shortcut comes near it.
constexpr DWORD kLargestFile = 1 << 20;

constexpr HRESULT ResultOf(DWORD error) {
    return MakeHResult(0x8007'0000 | (error & 0xFFFF));
}

HRESULT ReadShortcut(const WCHAR* path, std::optional<Shortcut>* shortcut) {
    const ScopedHandle file(CreateFileW(path, GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD high = 0;
    const DWORD size = file ? GetFileSize(file.Get(), &high) : INVALID_FILE_SIZE;
    if (size == INVALID_FILE_SIZE && GetLastError() != NO_ERROR) {
        return ResultOf(GetLastError());
    }
    if (high != 0 || size > kLargestFile) {
        return E_FAIL;
    }
    std::string bytes(size, '\0');
    DWORD done = 0;
    if (!ReadFile(file.Get(), bytes.data(), size, &done, nullptr)) {
        return ResultOf(GetLastError());
    }
    bytes.resize(done);
    *shortcut = ParseShortcut(bytes);
    return *shortcut ? S_OK : E_FAIL;
}

bool IsAbsolute(std::u16string_view path) {
    return path.starts_with(u"\\\\") || path.substr(0, 3).ends_with(u":\\");
}

std::u16string_view LastName(std::u16string_view path) {
    return path.substr(path.find_last_of(u'\\') + 1);
}

std::u16string InFolder(std::u16string_view folder, std::u16string_view name) {
    return FullPath(std::u16string(folder) + u'\\' + std::u16string(name));
}

// For one thread at a time, as its apartment would have it.
class ShellLink final : public IShellLinkW, public IPersistFile {
  public:
    virtual ~ShellLink() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (iid == IID_IUnknown || iid == IID_IShellLinkW) {
            *object = static_cast<IShellLinkW*>(this);
        } else if (iid == IID_IPersistFile) {
            *object = static_cast<IPersistFile*>(this);
        } else {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }

    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    HRESULT STDMETHODCALLTYPE Load(const WCHAR* path, DWORD) override {
        std::optional<Shortcut> shortcut;
        const HRESULT result = ReadShortcut(path, &shortcut);
        if (SUCCEEDED(result)) {
            shortcut_ = *std::move(shortcut);
            const std::u16string full = FullPath(WithoutLiteralPrefix(path));
            folder_ = full.substr(0, full.find_last_of(u'\\'));
            target_.clear();
        }
        return result;
    }

    // A link to something that has no path, such as a panel of the shell, has no target here.
    HRESULT STDMETHODCALLTYPE Resolve(HWND, DWORD) override {
        HRESULT result = S_OK;
        for (const std::u16string& place : PlacesToLook()) {
            if (place.empty()) {
                continue;
            }
            const HostFile found = FindFile(PlaceOf(place));
            if (found.error == NO_ERROR) {
                target_ = WithoutLiteralPrefix(place);
                return S_OK;
            }
            // The likeliest place has the error that matters.
            result = FAILED(result) ? result : ResultOf(found.error);
        }
        return result;
    }

    HRESULT STDMETHODCALLTYPE GetPath(WCHAR* path, int size, WIN32_FIND_DATAW*, DWORD) override {
        const std::size_t length = std::min(target_.size(), static_cast<std::size_t>(size) - 1);
        *std::copy_n(target_.begin(), length, path) = u'\0';
        return target_.empty() ? S_FALSE : S_OK;
    }

  private:
    // Where the target may be, the likeliest place first.
    std::array<std::u16string, 4> PlacesToLook() const {
        const std::u16string& relative = shortcut_.relativePath;
        const std::u16string besideLink =
            relative.empty() || IsAbsolute(relative) ? relative : InFolder(folder_, relative);
        const std::u16string_view name = LastName(besideLink);
        return {shortcut_.sharePath, shortcut_.localPath, besideLink,
                name.empty() || !IsAbsolute(shortcut_.workingFolder)
                    ? std::u16string()
                    : InFolder(shortcut_.workingFolder, name)};
    }

    std::atomic<ULONG> references_ = 1;
    Shortcut shortcut_;
    std::u16string folder_;  // of the link
    std::u16string target_;  // empty until Resolve has found it
};

}  // namespace

HRESULT CreateShellLink(REFIID iid, void** object) {
    *object = nullptr;
    auto* link = new (std::nothrow) ShellLink;
    if (link == nullptr) {
        return E_OUTOFMEMORY;
    }
    const HRESULT result = link->QueryInterface(iid, object);
    link->Release();
    return result;
}

}  // namespace brevik::platform
