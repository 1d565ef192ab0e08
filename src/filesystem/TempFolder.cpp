#include "filesystem/FileSystem.h"
#include "filesystem/FileUtilities.h"
#include "filesystem/Private/PlatformPath.h"
#include "filesystem/Private/Windows/API.h"

namespace FileSystem {

FileSpec GetTempFolder() {
    const VelmarAutoCriticalSection lock(&GetTempFolderLock());
    FolderSpec& kept = GetTempFolderState();
    if (!kept.IsNull() && kept.IsPresent()) {
        return kept;
    }
    const FileSpec shared(AskForPath([](DWORD size, WCHAR* buffer) {
        return FileSystem_Win32::GetApi()->GetTempPathW(size, buffer);
    }));
    const FileSpec own = MakeUniqueName(shared, "Velmar", "tmp");
    own.CreateFolder();
    // Kept only once it is ours: what is kept is deleted at the end.
    kept = FolderSpec(own);
    return kept;
}

}  // namespace FileSystem
