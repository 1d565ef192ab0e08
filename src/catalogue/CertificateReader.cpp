#include "catalogue/CertificateReader.h"

#include <algorithm>

#include "modules/ScopedText.h"
#include "platform/text.h"
#include "text/StringConversions.h"

namespace {

// The component context of the class is asked for in any place where it may live.
constexpr DWORD kAnyContext =
    CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;

using CLibraryUtils::ScopedText;

// Owner of one reference on the component.
class ScopedReader {
  public:
    ScopedReader() {
        void* object = nullptr;
        if (SUCCEEDED(CoCreateInstance(CLSID_CertificateReader, nullptr, kAnyContext,
                                       IID_ICertificateReader, &object))) {
            reader_ = static_cast<ICertificateReader*>(object);
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
    reader->OpenFile(pathText.Get(), keyText.Get());
    reader->GetText(text.Out());
    return Narrow(text.Get());
}
