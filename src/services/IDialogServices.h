// The dialog of the sibling library.
#pragma once

#include "platform/component_model.h"

inline constexpr CLSID CLSID_DialogServices = {
    0x0F978321, 0x52F5, 0x4A5E, {0xB2, 0xBD, 0xCC, 0x6E, 0xEE, 0x98, 0x7C, 0xE7}};
inline constexpr IID IID_IDialogServices = {
    0x0C01CAD3, 0x8B20, 0x4FF6, {0xA6, 0x85, 0x53, 0xEF, 0x01, 0x08, 0x24, 0xA4}};

// Of the dialog's own operations, three are known here; those between them keep their slots.
class IDialogServices : public IUnknown {
  public:
    virtual HRESULT STDMETHODCALLTYPE Slot3() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot4() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot5() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot6() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot7() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot8() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot9() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot10() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot11() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot12() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot13() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot14() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot15() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot16() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot17() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot18() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot19() = 0;

    // Slot 20. The language of the dialog, as a code such as "ENU".
    virtual HRESULT STDMETHODCALLTYPE SetLocale(BSTR locale) = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot21() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot22() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot23() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot24() = 0;

    // Slot 25. Known names are "dialogwidth" and "dialogheight", with a VT_INT in pixels.
    virtual HRESULT STDMETHODCALLTYPE SetParameter(BSTR name, VARIANT value) = 0;

    // Slot 26. Shows the dialog above a window, of whose handle the low 32 bits are given, and
    // returns when it is done. The caller frees `profileId`.
    virtual HRESULT STDMETHODCALLTYPE GetProfileID(BSTR kindletUid, ULONG window,
                                                   BSTR* profileId) = 0;

  protected:
    ~IDialogServices() = default;
};
