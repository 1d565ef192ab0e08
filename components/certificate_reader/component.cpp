#include <algorithm>
#include <atomic>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "certificate_reader/reader.h"
#include "platform/files.h"
#include "platform/scoped_handle.h"
#include "platform/text.h"

namespace CertificateReader {
namespace {

HRESULT ResultOfSystem() {
    return static_cast<HRESULT>(0x80070000u | (GetLastError() & 0xFFFF));
}

// All bytes of a file, or as many as show that it is too large.
HRESULT ReadAll(const WCHAR* path, std::string* bytes) {
    const ScopedHandle file(CreateFileW(path, GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file) {
        return ResultOfSystem();
    }
    constexpr std::size_t kBlock = 65536;
    while (bytes->size() <= kLargestCertificateFile) {
        const std::size_t size = bytes->size();
        bytes->resize(size + kBlock);
        DWORD count = 0;
        if (!ReadFile(file.Get(), bytes->data() + size, kBlock, &count, nullptr)) {
            return ResultOfSystem();
        }
        bytes->resize(size + count);
        if (count == 0) {
            break;
        }
    }
    return S_OK;
}

// A text in ASCII; empty for any other.
std::string Ascii(BSTR text) {
    const std::u16string_view units(text, SysStringLen(text));
    const bool isAscii =
        std::all_of(units.begin(), units.end(), [](char16_t unit) { return unit < 0x80; });
    return isAscii ? std::string(units.begin(), units.end()) : std::string();
}

// Null when memory is short.
BSTR TextOf(const std::string& utf8) {
    const int bytes = static_cast<int>(utf8.size());
    const int units =
        bytes == 0 ? 0 : MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, nullptr, 0);
    const BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(units));
    if (text != nullptr && units > 0) {
        MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, text, units);
    }
    return text;
}

class Reader final : public IReader {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        const bool isKnown = iid == IID_IUnknown || iid == kInterface;
        *object = isKnown ? this : nullptr;
        if (isKnown) {
            AddRef();
        }
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    HRESULT STDMETHODCALLTYPE CountTypes() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetType() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetNames() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke() override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE OpenFile(BSTR path, BSTR verificationKey) override {
        text_.clear();
        try {
            result_ = Open(path, verificationKey);
        } catch (const std::bad_alloc&) {
            result_ = E_OUTOFMEMORY;
        } catch (const std::exception&) {
            result_ = E_FAIL;
        }
        return result_;
    }

    HRESULT STDMETHODCALLTYPE Reserved8() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reserved9() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reserved10() override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetText(BSTR* text) override {
        if (text == nullptr) {
            return E_POINTER;
        }
        *text = result_ == S_OK ? TextOf(text_) : nullptr;
        return result_ == S_OK && *text == nullptr ? E_OUTOFMEMORY : result_;
    }

  private:
    ~Reader() = default;

    HRESULT Open(BSTR path, BSTR verificationKey) {
        const auto key = CertificateKeys::ParseVerificationText(Ascii(verificationKey));
        if (!key) {
            return ResultOf(CertificateFault::kBadKey);
        }
        std::string bytes;
        const HRESULT result = ReadAll(path, &bytes);
        return FAILED(result) ? result : ResultOf(ReadCertificate(bytes, *key, &text_));
    }

    std::atomic<ULONG> references_ = 1;
    HRESULT result_ = E_UNEXPECTED;
    std::string text_;
};

// Lives as long as the library, which stays loaded, and so counts nothing.
class Factory final : public IClassFactory {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        const bool isKnown = iid == IID_IUnknown || iid == IID_IClassFactory;
        *object = isKnown ? this : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        if (outer != nullptr) {
            return CLASS_E_NOAGGREGATION;
        }
        auto* const reader = new (std::nothrow) Reader;
        if (reader == nullptr) {
            return E_OUTOFMEMORY;
        }
        const HRESULT result = reader->QueryInterface(iid, object);
        reader->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

Factory factory;

}  // namespace
}  // namespace CertificateReader

extern "C" __attribute__((visibility("default"))) HRESULT DllGetClassObject(REFCLSID classId,
                                                                            REFIID iid,
                                                                            void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    return classId == CertificateReader::kClass
               ? CertificateReader::factory.QueryInterface(iid, object)
               : CLASS_E_CLASSNOTAVAILABLE;
}
