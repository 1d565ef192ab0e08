// The component that reads certificate files. The library opens none itself.
#pragma once

#include <string>

#include "platform/component_model.h"

inline constexpr CLSID CLSID_CertificateReader = {
    0x91C11C22, 0x4B99, 0x439F, {0x90, 0xA6, 0xA0, 0xF3, 0x75, 0x8E, 0x17, 0x17}};
inline constexpr IID IID_ICertificateReader = {
    0x74E07100, 0xA7E9, 0x44AF, {0xA4, 0x73, 0xD8, 0x89, 0x0D, 0x1A, 0x0A, 0x83}};

// Of the component's own operations, two are known here.
class ICertificateReader : public IUnknown {
  public:
    virtual HRESULT STDMETHODCALLTYPE Slot3() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot4() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot5() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot6() = 0;

    // Takes a file; it is tested against the key.
    virtual HRESULT STDMETHODCALLTYPE OpenFile(BSTR path, BSTR verificationKey) = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot8() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot9() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot10() = 0;

    // The file's text, which the caller frees; null when the file gives none.
    virtual HRESULT STDMETHODCALLTYPE GetText(BSTR* text) = 0;

  protected:
    ~ICertificateReader() = default;
};

// The narrow text of a certificate file; empty when it gives none. The calling thread must be in an
// apartment of the component model. Throws a _com_error of E_POINTER when the component cannot be
// made.
std::string ReadCertificateFile(const std::string& path, const std::string& verificationKey);
