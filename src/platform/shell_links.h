// Shortcuts: the component object that reads a .lnk file.
#pragma once

#include "platform/component_model.h"
#include "platform/files.h"
#include "platform/types.h"

#ifdef _WIN32

#include <objidl.h>
#include <shlguid.h>
#include <shlobj.h>

#else

namespace brevik::platform {

inline constexpr CLSID CLSID_ShellLink = {
    0x00021401, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
inline constexpr IID IID_IShellLinkW = {
    0x000214F9, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
inline constexpr IID IID_IPersistFile = {
    0x0000010B, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

inline constexpr DWORD STGM_READ = 0;
inline constexpr DWORD SLR_NO_UI = 0x1;
inline constexpr DWORD SLR_ANY_MATCH = 0x2;
inline constexpr DWORD SLR_UPDATE = 0x4;
inline constexpr DWORD SLGP_UNCPRIORITY = 0x2;

// The operations that the library calls; not laid out like the system's.
class IShellLinkW : public IUnknown {
  public:
    // The path that Resolve has found, cut to `size` units with its NUL; S_FALSE and an empty text
    // for a link without a path. REQUIRES: `data` is null and `flags` is SLGP_UNCPRIORITY.
    virtual HRESULT STDMETHODCALLTYPE GetPath(WCHAR* path, int size, WIN32_FIND_DATAW* data,
                                              DWORD flags) = 0;

    // Finds out where the target is; a failure when it is nowhere. The flags are not looked at.
    virtual HRESULT STDMETHODCALLTYPE Resolve(HWND owner, DWORD flags) = 0;

  protected:
    ~IShellLinkW() = default;
};

class IPersistFile : public IUnknown {
  public:
    // Reads a .lnk file; a failure for one that is missing or broken.
    virtual HRESULT STDMETHODCALLTYPE Load(const WCHAR* path, DWORD mode) = 0;

  protected:
    ~IPersistFile() = default;
};

// Makes an object of CLSID_ShellLink, for CoCreateInstance.
HRESULT CreateShellLink(REFIID iid, void** object);

}  // namespace brevik::platform

#endif
