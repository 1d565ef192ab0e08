#include "catalogue/certificates/CertificateReader.h"

#include <algorithm>

#include "catalogue/RecordGathering.h"
#include "modules/ScopedText.h"
#include "platform/text.h"
#include "text/StringConversions.h"

namespace {

// The component context of the class is asked for in any place where it may live.
constexpr DWORD kAnyContext =
    CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;

using CLibraryUtils::ScopedText;

// A result that holds an error number of the system may be another one at the next try.
void NoteResult(HRESULT result, const std::string& what) {
    const auto code = static_cast<std::uint32_t>(result);
    if (code >> 16 == 0x8007) {
        RecordGathering::Note(code & 0xFFFF, what);
    }
}

// Owner of one reference on the component.
class ScopedReader {
  public:
    ScopedReader() {
        void* object = nullptr;
        const HRESULT result = CoCreateInstance(CLSID_CertificateReader, nullptr, kAnyContext,
                                                IID_ICertificateReader, &object);
        if (SUCCEEDED(result)) {
            reader_ = static_cast<ICertificateReader*>(object);
        } else {
            NoteResult(result, "the certificate reader");
        }
    }
    ScopedReader(const ScopedReader&) = delete;
    ScopedReader& operator=(const ScopedReader&) = delete;
    ~ScopedReader() {
        if (reader_ != nullptr) {
            reader_->Release();
        }
    }

    ICertificateReader* operator->() const {
        if (reader_ == nullptr) {
            throw _com_error(E_POINTER);
        }
        return reader_;
    }

  private:
    ICertificateReader* reader_ = nullptr;
};

// All of the text, NULs included.
std::string Narrow(BSTR text) {
    const int length = static_cast<int>(SysStringLen(text));
    if (length == 0) {
        return {};
    }
    const int size = WideCharToMultiByte(CP_ACP, 0, text, length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(std::max(size, 0)), '\0');
    WideCharToMultiByte(CP_ACP, 0, text, length, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

}  // namespace

CALLS_FOREIGN_OBJECTS
std::string ReadCertificateFile(const std::string& path, const std::string& verificationKey) {
    const ScopedReader reader;
    const ScopedText pathText(NarrowToWide(path));
    const ScopedText keyText(NarrowToWide(verificationKey));
    ScopedText text;
    // Whatever they answer: a file that cannot be read gives no text.
    const HRESULT opened = reader->OpenFile(pathText.Get(), keyText.Get());
    const HRESULT given = reader->GetText(text.Out());
    std::string narrow = Narrow(text.Get());
    if (narrow.empty()) {
        NoteResult(FAILED(opened) ? opened : given, path);
    }
    return narrow;
}
