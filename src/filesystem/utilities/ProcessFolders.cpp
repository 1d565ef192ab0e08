#include "filesystem/FileException.h"
#include "filesystem/FileSystem.h"
#include "filesystem/Private/PlatformPath.h"
#include "filesystem/Private/Windows/API.h"
#include "filesystem/utilities/FileUtilities.h"
#include "platform/modules.h"

namespace FileSystem {
namespace {

FileSpec FileOf(HMODULE module) {
    return FileSpec(AskForPath(
        [module](DWORD size, WCHAR* buffer) { return GetModuleFileNameW(module, buffer, size); }));
}

bool IsPresentFile(const FileSpec& file) {
    return file.IsPresent() && !file.IsFolder();
}

FileSpec MakeSibling(const FilePath& name) {
    return GetLibraryFile().MakeParent().MakeChild(name);
}

}  // namespace

FileSpec GetApplicationFile() {
    return FileOf(nullptr);
}

FileSpec GetLibraryFile() {
    return FileOf(GetModule());
}

FileSpec GetCurrentFolder() {
    return FileSpec(AskForPath([](DWORD size, WCHAR* buffer) {
        return FileSystem_Win32::GetApi()->GetCurrentDirectoryW(size, buffer);
    }));
}

void SetCurrentFolder(const FileSpec& folder) {
    if (!FileSystem_Win32::GetApi()->SetCurrentDirectoryW(folder.GetNativePath().c_str())) {
        ThrowFileError(GetLastError(), folder.GetPath());
    }
}

bool FindProgramFile(const FilePath& name) {
    FileSpec folder = GetApplicationFile().MakeParent();
    for (;;) {
        if (IsPresentFile(folder.MakeChild(name)) ||
            IsPresentFile(folder.MakeChild("Velmar Works").MakeChild(name))) {
            return true;
        }
        const FileSpec library = GetLibraryFile().MakeParent();
        if (library.IsEqual(folder)) {
            return false;
        }
        folder = library;
    }
}

FileSpec GetSiblingFile(const FilePath& name) {
    const FileSpec sibling = MakeSibling(name);
    if (sibling.IsPresent() && !sibling.IsFile()) {
        ThrowFileError(ERROR_ACCESS_DENIED, sibling.GetPath());
    }
    return sibling;
}

FileSpec GetSiblingFolder(const FilePath& name) {
    const FileSpec sibling = MakeSibling(name);
    if (sibling.IsPresent() && !sibling.IsFolder()) {
        ThrowFileError(ERROR_ACCESS_DENIED, sibling.GetPath());
    }
    return sibling;
}

}  // namespace FileSystem
