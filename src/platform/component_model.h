// The component object model: a thread's apartment, the task allocator, BSTR, VARIANT, and the two
// interfaces that every component object begins with.
//
// Off Windows the state is real and shared by everything in the process that uses this platform
// library: the host, the library and the component objects that it loads.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifdef _WIN32

#include <comdef.h>
#include <objbase.h>
#include <oleauto.h>

#else

namespace brevik::platform {

inline constexpr DWORD COINIT_MULTITHREADED = 0x0;
inline constexpr DWORD COINIT_APARTMENTTHREADED = 0x2;

// Enters the calling thread into an apartment, or counts one more entry. S_OK for the first entry,
// S_FALSE for a further one of the same kind, RPC_E_CHANGED_MODE, uncounted, for one of the other
// kind. Pair every S_OK and S_FALSE with one CoUninitialize on the same thread.
PLATFORM_API HRESULT CoInitializeEx(void* reserved, DWORD kind);

// CoInitializeEx for the apartment-threaded kind.
PLATFORM_API HRESULT CoInitialize(void* reserved);

// Undoes one entry of the calling thread; without one, nothing.
PLATFORM_API void CoUninitialize();

inline constexpr DWORD CLSCTX_INPROC_SERVER = 0x1;
inline constexpr DWORD CLSCTX_INPROC_HANDLER = 0x2;
inline constexpr DWORD CLSCTX_LOCAL_SERVER = 0x4;
inline constexpr DWORD CLSCTX_REMOTE_SERVER = 0x10;

class IUnknown;

// Makes an object of a class of the system itself, or of a class whose library the registry names
// in the default value of CLSID\{...}\InprocServer32 under HKEY_CLASSES_ROOT. The library is loaded
// once and stays. Off Windows there are no classes in other processes.
//
// CO_E_NOTINITIALIZED on a thread in no apartment, REGDB_E_CLASSNOTREG for a class that is not
// known, 0x80070000 and the error number when its library cannot be loaded, CO_E_ERRORINDLL when
// that is no library of classes, else the class's own result. On failure the out argument is null.
PLATFORM_API HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID iid,
                                      void** object);

// Memory that passes between caller and callee. A block for a size of 0 too; null when memory is
// short.
PLATFORM_API void* CoTaskMemAlloc(std::size_t size);

// Frees a block of CoTaskMemAlloc; null is legal.
PLATFORM_API void CoTaskMemFree(void* block);

// Counted UTF-16 text with a NUL after it; the 4 bytes before the pointer hold its length in bytes.
// A null BSTR is a text of length 0.
using BSTR = WCHAR*;

// A copy of `length` units, NULs included; with a null text the units are left unset. Null when
// memory is short.
PLATFORM_API BSTR SysAllocStringLen(const WCHAR* text, UINT length);
PLATFORM_API void SysFreeString(BSTR text);
PLATFORM_API UINT SysStringLen(BSTR text);

class IUnknown {
  public:
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

  protected:
    ~IUnknown() = default;
};

class IClassFactory : public IUnknown {
  public:
    virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid,
                                                     void** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) = 0;

  protected:
    ~IClassFactory() = default;
};

inline constexpr IID IID_IUnknown = {
    0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
inline constexpr IID IID_IClassFactory = {
    0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

using VARTYPE = std::uint16_t;
using VARIANT_BOOL = std::int16_t;

inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

enum VARENUM : VARTYPE {
    VT_EMPTY = 0,
    VT_INT = 22,
};

// A tagged value. Off Windows only numbers are passed, which own nothing.
struct VARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        INT intVal;
        struct {
            void* first;
            void* second;
        } record;
    };
};

PLATFORM_API void VariantInit(VARIANT* variant);
PLATFORM_API HRESULT VariantClear(VARIANT* variant);

// The exception form of a component-model failure.
class _com_error {
  public:
    explicit _com_error(HRESULT result) : result_(result) {}
    HRESULT Error() const { return result_; }

  private:
    HRESULT result_;
};

}  // namespace brevik::platform

#endif
