// What the objects and class objects of every component have in common.
#pragma once

#include <atomic>
#include <new>
#include <string_view>
#include <type_traits>

#include "platform/component_model.h"
#include "platform/text.h"

namespace Component {

// Operations that a class does not offer, `count` of them in the slots from `first` on, after those
// of Base: each answers E_NOTIMPL and looks at nothing. The parameter has no size; it makes each
// slot's operation another one.
template <typename Base, int first, int count>
class Reserved : public Reserved<Base, first, count - 1> {
  public:
    using Reserved<Base, first, count - 1>::Unused;
    virtual HRESULT STDMETHODCALLTYPE Unused(std::integral_constant<int, first + count - 1>) {
        return E_NOTIMPL;
    }
};

template <typename Base, int first>
class Reserved<Base, first, 0> : public Base {};

// The first Base of a class with reserved slots.
class Unknown : public IUnknown {
  public:
    void Unused() = delete;
};

// Answers QueryInterface of an object for IUnknown and one interface more.
inline HRESULT Query(IUnknown* self, REFIID own, REFIID iid, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    const bool isKnown = iid == IID_IUnknown || iid == own;
    *object = isKnown ? self : nullptr;
    if (isKnown) {
        self->AddRef();
    }
    return isKnown ? S_OK : E_NOINTERFACE;
}

// An object that lives while it is referred to; it begins with one reference.
template <typename Interface, const IID& kInterface>
class Object : public Interface {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        return Query(this, kInterface, iid, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

  protected:
    Object() = default;
    virtual ~Object() = default;

  private:
    std::atomic<ULONG> references_ = 1;
};

// The class object of Class. It lives as long as the library, whose users hold it loaded, and so
// counts nothing.
template <typename Class>
class Factory : public IClassFactory {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        return Query(this, IID_IClassFactory, iid, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        if (outer != nullptr) {
            return CLASS_E_NOAGGREGATION;
        }
        if (const HRESULT refusal = Class::BeforeMaking(); refusal != S_OK) {
            return refusal;
        }
        auto* const made = new (std::nothrow) Class;
        if (made == nullptr) {
            return E_OUTOFMEMORY;
        }
        const HRESULT result = made->QueryInterface(iid, object);
        made->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

// Answers DllGetClassObject of a library that makes one Class, of the identifier Class::kClassId,
// or of several.
template <typename Class, typename... More>
HRESULT FindClassObject(REFCLSID classId, REFIID iid, void** object) {
    static Factory<Class> factory;
    if (object == nullptr) {
        return E_POINTER;
    }
    if (classId == Class::kClassId) {
        return factory.QueryInterface(iid, object);
    }
    *object = nullptr;
    if constexpr (sizeof...(More) > 0) {
        return FindClassObject<More...>(classId, iid, object);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

// The text for a caller, who frees it with SysFreeString; null where memory is short.
inline BSTR NewText(std::basic_string_view<WCHAR> text) {
    return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

}  // namespace Component
