// The folders that the system names.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <new>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/folders.h"
#include "platform/posix/base/environment.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/text_buffer.h"

namespace brevik::platform {

struct ITEMIDLIST {
    int folder;
};

namespace {

// Empty for any other folder.
std::u16string_view PathOf(int folder) {
    switch (folder) {
        case CSIDL_COMMON_APPDATA:
            return u"C:\\ProgramData";
        case CSIDL_PROGRAM_FILES_COMMON:
            return u"C:\\Program Files\\Common Files";
        default:
            return {};
    }
}

BOOL CopyPath(std::u16string_view text, WCHAR* path) {
    *std::copy(text.begin(), text.end(), path) = u'\0';
    return !text.empty();
}

constexpr char16_t kMachineFolder[] = u"C:\\Windows\\Temp";

bool TakesFiles(const std::string& hostFolder) {
    return faccessat(AT_FDCWD, (hostFolder + "/.").c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool MachineFolderTakesFiles() {
    const HostFile folder = FindFile(PlaceOf(kMachineFolder));
    return folder.error == NO_ERROR && TakesFiles(folder.path);
}

// The path under which a folder of the host is known; empty when it has none, or takes no files.
std::u16string HostFolder(const char* path) {
    if (path == nullptr || *path != '/' || !TakesFiles(path)) {
        return {};
    }
    std::error_code error;
    return WindowsPath(std::filesystem::canonical(path, error).string());
}

std::u16string TempFolder() {
    if (!MachineFolderTakesFiles()) {
        for (const char* path : {EnvironmentVariable("TMPDIR"), "/tmp"}) {
            std::u16string folder = HostFolder(path);
            if (!folder.empty()) {
                return folder;
            }
        }
    }
    return kMachineFolder;
}

}  // namespace

HRESULT SHGetSpecialFolderLocation(HWND, int folder, ITEMIDLIST** list) {
    void* block = CoTaskMemAlloc(sizeof(ITEMIDLIST));
    if (block == nullptr) {
        return E_OUTOFMEMORY;
    }
    *list = new (block) ITEMIDLIST{folder};
    return S_OK;
}

BOOL SHGetPathFromIDListW(const ITEMIDLIST* list, WCHAR* path) {
    return CopyPath(PathOf(list->folder), path);
}

BOOL SHGetSpecialFolderPathW(HWND, WCHAR* path, int folder, BOOL) {
    const std::u16string_view text = PathOf(folder);
    return FindFile(text).error == NO_ERROR && CopyPath(text, path);
}

UINT GetWindowsDirectoryW(WCHAR* path, UINT size) {
    return CopyOrAskForRoom(u"C:\\Windows", path, size);
}

DWORD GetTempPathW(DWORD size, WCHAR* path) {
    std::u16string folder = TempFolder();
    if (!folder.ends_with(u'\\')) {
        folder += u'\\';
    }
    return CopyOrAskForRoom(folder, path, size);
}

}  // namespace brevik::platform
