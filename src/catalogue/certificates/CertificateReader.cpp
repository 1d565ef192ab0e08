#include "catalogue/certificates/CertificateReader.h"

#include "catalogue/RecordGathering.h"
#include "modules/ComponentObject.h"
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

}  // namespace

CALLS_FOREIGN_OBJECTS
std::string ReadCertificateFile(const std::string& path, const std::string& verificationKey) {
    CLibraryUtils::ComponentObject<ICertificateReader> reader;
    const HRESULT made = CoCreateInstance(CLSID_CertificateReader, nullptr, kAnyContext,
                                          IID_ICertificateReader, reader.Out());
    if (FAILED(made) || !reader) {
        NoteResult(made, "the certificate reader");
        throw _com_error(E_POINTER);
    }
    const ScopedText pathText(NarrowToWide(path));
    const ScopedText keyText(NarrowToWide(verificationKey));
    ScopedText text;
    // Whatever they answer: a file that cannot be read gives no text.
    const HRESULT opened = reader->OpenFile(pathText.Get(), keyText.Get());
    const HRESULT given = reader->GetText(text.Out());
    std::string narrow = CodePageFromWide(CP_ACP, {text.Get(), SysStringLen(text.Get())});
    if (narrow.empty()) {
        NoteResult(FAILED(opened) ? opened : given, path);
    }
    return narrow;
}
