#include "filesystem/FileException.h"
#include "filesystem/FileSystem.h"
#include "filesystem/Private/PlatformPath.h"
#include "filesystem/Private/Windows/API.h"
#include "filesystem/utilities/FileUtilities.h"
#include "text/Texts.h"

namespace FileSystem {
namespace {

// Another process may make a folder of the name just found to be free. Whoever made it has it, and
// the other one looks for the next.
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
