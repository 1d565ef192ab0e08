// The component that gives the text of certificate files to the library.
//
//     CoCreateInstance(CLSID_CertificateReader, nullptr, CLSCTX_INPROC_SERVER,
//                      IID_ICertificateReader, &reader);
//     reader->OpenFile(path, verificationKey);
//     reader->GetText(&text);
//
// An object belongs to one thread at a time. It keeps no file open.
#pragma once

#include "certificate_reader/certificate_file.h"
#include "common/objects.h"
#include "platform/component_model.h"

namespace CertificateReader {

inline constexpr CLSID kClass = {
    0x91C11C22, 0x4B99, 0x439F, {0x90, 0xA6, 0xA0, 0xF3, 0x75, 0x8E, 0x17, 0x17}};
inline constexpr IID kInterface = {
    0x74E07100, 0xA7E9, 0x44AF, {0xA4, 0x73, 0xD8, 0x89, 0x0D, 0x1A, 0x0A, 0x83}};

// The class in the form in which the registry names it.
inline constexpr char kClassText[] = "{91C11C22-4B99-439F-90A6-A0F3758E1717}";

// A fault of a file as a result: 0x80040200 and its number.
constexpr HRESULT ResultOf(CertificateFault fault) {
    return fault == CertificateFault::kNone
               ? S_OK
               : static_cast<HRESULT>(0x80040200u + static_cast<unsigned>(fault));
}

// The operations by their slots, those of IUnknown being 0 to 2. Slots 3 to 6 are where automation
// has its calls by name, which this class does not offer.
class IOpenFile : public Component::Reserved<Component::Unknown, 3, 4> {
  public:
    // Slot 7. Reads a file and tests it against a verification key, a text of 130 characters. On
    // failure there is no text, and the result says why: ResultOf a fault, or 0x80070000 and the
    // system's error number where the file cannot be read.
    virtual HRESULT STDMETHODCALLTYPE OpenFile(BSTR path, BSTR verificationKey) = 0;
};

// Slots 8 to 10 are kept for other questions on the open file.
class IReader : public Component::Reserved<IOpenFile, 8, 3> {
  public:
    // Slot 11. The file's text, which the caller frees with SysFreeString. Without one it is null,
    // and the result is that of the last OpenFile, or E_UNEXPECTED when there was none.
    virtual HRESULT STDMETHODCALLTYPE GetText(BSTR* text) = 0;

  protected:
    ~IReader() = default;
};

}  // namespace CertificateReader
