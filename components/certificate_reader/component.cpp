#include <algorithm>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "certificate_reader/reader.h"
#include "common/objects.h"
#include "platform/files.h"
#include "platform/handles.h"

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

class Reader final : public Component::Object<IReader, kInterface> {
  public:
    static constexpr const CLSID& kClassId = kClass;

    static HRESULT BeforeMaking() { return S_OK; }

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

    HRESULT STDMETHODCALLTYPE GetText(BSTR* text) override {
        if (text == nullptr) {
            return E_POINTER;
        }
        *text = result_ == S_OK ? Component::NewText(text_) : nullptr;
        return result_ == S_OK && *text == nullptr ? E_OUTOFMEMORY : result_;
    }

  private:
    HRESULT Open(BSTR path, BSTR verificationKey) {
        const auto key = CertificateKeys::ParseVerificationText(Ascii(verificationKey));
        if (!key) {
            return ResultOf(CertificateFault::kBadKey);
        }
        std::string bytes;
        if (const HRESULT result = ReadAll(path, &bytes); FAILED(result)) {
            return result;
        }
        std::string text;
        const CertificateFault fault = ReadCertificate(bytes, *key, &text);
        text_ = WideFromCodePage(CP_UTF8, text);
        return ResultOf(fault);
    }

    HRESULT result_ = E_UNEXPECTED;
    WideString text_;
};

}  // namespace
}  // namespace CertificateReader

extern "C" __attribute__((visibility("default"))) HRESULT DllGetClassObject(REFCLSID classId,
                                                                            REFIID iid,
                                                                            void** object) {
    return Component::FindClassObject<CertificateReader::Reader>(classId, iid, object);
}
