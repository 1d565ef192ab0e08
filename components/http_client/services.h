// The two classes of the online services, as VelmarHTTPClient13.dll makes them.
//
// The operations stand in their slots, those of IUnknown being 0 to 2. Those between them belong to
// the real services alone. An object may be called on any number of threads at once.
#pragma once

#include "common/objects.h"
#include "platform/component_model.h"

namespace HttpClient {

inline constexpr CLSID kUpdateClass = {
    0x2C5F985E, 0xE5DD, 0x4D05, {0x83, 0x90, 0x2A, 0x4F, 0x06, 0xD5, 0x8D, 0xAA}};
inline constexpr IID kUpdateInterface = {
    0xA24FAAE4, 0xFC9F, 0x42E2, {0xA5, 0x92, 0x15, 0x61, 0x3B, 0x5B, 0x82, 0xDA}};
inline constexpr CLSID kDialogClass = {
    0x0F978321, 0x52F5, 0x4A5E, {0xB2, 0xBD, 0xCC, 0x6E, 0xEE, 0x98, 0x7C, 0xE7}};
inline constexpr IID kDialogInterface = {
    0x0C01CAD3, 0x8B20, 0x4FF6, {0xA6, 0x85, 0x53, 0xEF, 0x01, 0x08, 0x24, 0xA4}};

class IUpdateCalls : public Component::Reserved<Component::Unknown, 3, 13> {
  public:
    // Slots 16 and 17.
    virtual HRESULT STDMETHODCALLTYPE RunUpdate(BSTR sku, BSTR version, ULONG langId,
                                                BSTR productIdentifier) = 0;
    virtual HRESULT STDMETHODCALLTYPE CheckUpdateOrMessage(BSTR sku, BSTR version, ULONG langId,
                                                           VARIANT_BOOL connectToServer,
                                                           VARIANT_BOOL* available) = 0;
};

class IUpdateServices : public Component::Reserved<IUpdateCalls, 18, 2> {
  public:
    // Slot 20.
    virtual HRESULT STDMETHODCALLTYPE RunUpdateInBackground(BSTR sku, BSTR version, ULONG langId,
                                                            BSTR productIdentifier) = 0;

  protected:
    ~IUpdateServices() = default;
};

class ILocaleCall : public Component::Reserved<Component::Unknown, 3, 17> {
  public:
    // Slot 20.
    virtual HRESULT STDMETHODCALLTYPE SetLocale(BSTR locale) = 0;
};

class IDialogServices : public Component::Reserved<ILocaleCall, 21, 4> {
  public:
    // Slots 25 and 26.
    virtual HRESULT STDMETHODCALLTYPE SetParameter(BSTR name, VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProfileID(BSTR kindletUid, ULONG window,
                                                   BSTR* profileId) = 0;

  protected:
    ~IDialogServices() = default;
};

}  // namespace HttpClient
