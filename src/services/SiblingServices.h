// The update service and the dialog of the sibling library. Of their own operations three each are
// known here; those between them keep their slots.
#pragma once

#include "platform/component_model.h"

inline constexpr CLSID CLSID_UpdateServices = {
    0x2C5F985E, 0xE5DD, 0x4D05, {0x83, 0x90, 0x2A, 0x4F, 0x06, 0xD5, 0x8D, 0xAA}};
inline constexpr IID IID_IUpdateServices = {
    0xA24FAAE4, 0xFC9F, 0x42E2, {0xA5, 0x92, 0x15, 0x61, 0x3B, 0x5B, 0x82, 0xDA}};

class IUpdateServices : public IUnknown {
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

    // Slot 16. Updates a product. `version` is "MAJOR.MINOR" or empty; in the place of a SKU that
    // is not known stands the product's installer GUID.
    virtual HRESULT STDMETHODCALLTYPE RunUpdate(BSTR sku, BSTR version, ULONG langId,
                                                BSTR productIdentifier) = 0;

    // Slot 17. Tells whether an update or a message waits for the product: VARIANT_TRUE, and that
    // alone, for yes.
    virtual HRESULT STDMETHODCALLTYPE CheckUpdateOrMessage(BSTR sku, BSTR version, ULONG langId,
                                                           VARIANT_BOOL connectToServer,
                                                           VARIANT_BOOL* available) = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot18() = 0;
    virtual HRESULT STDMETHODCALLTYPE Slot19() = 0;

    // Slot 20. RunUpdate without a window of its own.
    virtual HRESULT STDMETHODCALLTYPE RunUpdateInBackground(BSTR sku, BSTR version, ULONG langId,
                                                            BSTR productIdentifier) = 0;

  protected:
    ~IUpdateServices() = default;
};

inline constexpr CLSID CLSID_DialogServices = {
    0x0F978321, 0x52F5, 0x4A5E, {0xB2, 0xBD, 0xCC, 0x6E, 0xEE, 0x98, 0x7C, 0xE7}};
inline constexpr IID IID_IDialogServices = {
    0x0C01CAD3, 0x8B20, 0x4FF6, {0xA6, 0x85, 0x53, 0xEF, 0x01, 0x08, 0x24, 0xA4}};

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
