// The current folder, the folders that the system names, and the search for a file.
#pragma once

#include <utility>

#include "platform/component_model.h"
#include "platform/errors.h"
#include "platform/types.h"

#ifdef _WIN32

#include <shlobj.h>

class KeptFolder {
  public:
    static KeptFolder Current() {
        KeptFolder kept;
        kept.path_.resize(GetCurrentDirectoryW(0, nullptr));
        const DWORD size = static_cast<DWORD>(kept.path_.size());
        const DWORD length = GetCurrentDirectoryW(size, kept.path_.data());
        // Longer than announced: the host has changed it in between.
        kept.path_.resize(length < size ? length : 0);
        return kept;
    }

    explicit operator bool() const { return !path_.empty(); }
    void MakeCurrent() const { SetCurrentDirectoryW(path_.c_str()); }

  private:
    WideString path_;
};

#else

namespace brevik::platform {

inline constexpr int CSIDL_COMMON_APPDATA = 35;
inline constexpr int CSIDL_PROGRAM_FILES_COMMON = 43;

// The length of the process's current folder without the NUL, or, where it does not fit into `size`
// units, the size needed with it. No trailing backslash but at the root of a drive.
PLATFORM_API DWORD GetCurrentDirectoryW(DWORD size, WCHAR* path);

// Errors: ERROR_FILE_NOT_FOUND for a missing folder, ERROR_DIRECTORY for a file,
// ERROR_PATH_NOT_FOUND for a missing drive, ERROR_INVALID_NAME for an empty path.
PLATFORM_API BOOL SetCurrentDirectoryW(const WCHAR* path);

// The full path of a path without the prefix \\?\; no disk is asked. Result: its length without the
// NUL, or the size needed with it where it does not fit; 0 for an empty path, which leaves the last
// error as it was. `filePart` is left as it is.
PLATFORM_API DWORD GetFullPathNameW(const WCHAR* path, DWORD size, WCHAR* buffer, WCHAR** filePart);

// The folder for temporary files, with its trailing backslash. Results as above.
PLATFORM_API DWORD GetTempPathW(DWORD size, WCHAR* path);

// Looks for a file by its bare name in the order in which LoadLibraryExW does. Result: the length
// of its full path without the NUL, the size needed with it where it does not fit, or 0 with
// ERROR_FILE_NOT_FOUND. REQUIRES: `path` and `extension` are null. `filePart` is left as it is.
PLATFORM_API DWORD SearchPathW(const WCHAR* path, const WCHAR* fileName, const WCHAR* extension,
                               DWORD size, WCHAR* buffer, WCHAR** filePart);

struct ITEMIDLIST;

// The place of a system folder, in a block that the caller frees with CoTaskMemFree, and the path
// of such a place into MAX_PATH units.
PLATFORM_API HRESULT SHGetSpecialFolderLocation(HWND owner, int folder, ITEMIDLIST** list);
PLATFORM_API BOOL SHGetPathFromIDListW(const ITEMIDLIST* list, WCHAR* path);

// The path of a system folder into MAX_PATH units; false where it is missing. REQUIRES: `create` is
// false.
PLATFORM_API BOOL SHGetSpecialFolderPathW(HWND owner, WCHAR* path, int folder, BOOL create);

// The folder of the system's own files. Results as those of GetTempPathW.
PLATFORM_API UINT GetWindowsDirectoryW(WCHAR* path, UINT size);

// The folder that is the current one, to come back to without needing memory.
class PLATFORM_API KeptFolder {
  public:
    // Keeps nothing.
    KeptFolder() = default;

    // Keeps nothing where there is no way back.
    static KeptFolder Current();

    KeptFolder(KeptFolder&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    KeptFolder& operator=(KeptFolder&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~KeptFolder();

    explicit operator bool() const { return descriptor_ >= 0; }
    void MakeCurrent() const noexcept;

  private:
    int descriptor_ = -1;
};

}  // namespace brevik::platform

#endif
