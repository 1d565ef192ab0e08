#include "filesystem/FileException.h"
#include "filesystem/FileSystem.h"
#include "filesystem/Private/PlatformPath.h"
#include "filesystem/Private/Windows/API.h"
#include "filesystem/utilities/FileUtilities.h"
#include "text/Texts.h"

namespace FileSystem {
namespace {

bool IsPresentFile(const FileSpec& file) {
    return file.IsPresent() && !file.IsFolder();
}

FileSpec MakeSibling(const FilePath& name) {
    return GetLibraryFile().MakeParent().MakeChild(name);
}

// Another process may make a folder of the name just found to be free. The one that made it has it,
// and the other one looks for the next.
FileSpec MakeOwnFolder(const FileSpec& shared) {
    constexpr int kMostAttempts = 1000;
    for (int attempt = 1;; ++attempt) {
        const FileSpec own = MakeUniqueName(shared, "Velmar", "tmp");
        try {
            own.CreateFolder();
            return own;
        } catch (const FileException& failure) {
            if (failure.GetNumber() != Texts::fileExists.GetId() || attempt == kMostAttempts) {
                throw;
            }
        }
    }
}

}  // namespace

FileSpec GetApplicationFile() {
    return FileSpec(PathOfModule(nullptr));
}

FileSpec GetLibraryFile() {
    return FileSpec(PathOfModule(GetModule()));
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

FileSpec GetTempFolder() {
    const VelmarAutoCriticalSection lock(&GetTempFolderLock());
    FolderSpec& kept = GetTempFolderState();
    if (!kept.IsNull() && kept.IsPresent()) {
        return kept;
    }
    const FileSpec shared(AskForPath([](DWORD size, WCHAR* buffer) {
        return FileSystem_Win32::GetApi()->GetTempPathW(size, buffer);
    }));
    // Kept only once it is ours: what is kept is deleted at the end.
    kept = FolderSpec(MakeOwnFolder(shared));
    return kept;
}

}  // namespace FileSystem
