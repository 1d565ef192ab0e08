// The folders that the system names.

#include <algorithm>
#include <new>
#include <string_view>

#include "platform/folders.h"
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

}  // namespace brevik::platform
