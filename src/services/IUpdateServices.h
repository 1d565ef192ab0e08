// The update service of the sibling library.
#pragma once

#include "platform/component_model.h"

inline constexpr CLSID CLSID_UpdateServices = {
    0x2C5F985E, 0xE5DD, 0x4D05, {0x83, 0x90, 0x2A, 0x4F, 0x06, 0xD5, 0x8D, 0xAA}};
inline constexpr IID IID_IUpdateServices = {
    0xA24FAAE4, 0xFC9F, 0x42E2, {0xA5, 0x92, 0x15, 0x61, 0x3B, 0x5B, 0x82, 0xDA}};

// Of the service's own operations, three are known here; those between them keep their slots.
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
