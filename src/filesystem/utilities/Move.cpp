#include "filesystem/FileException.h"
#include "filesystem/Private/CopyProgress.h"
#include "filesystem/utilities/FileUtilities.h"
#include "platform/errors.h"

namespace FileSystem {
namespace {

bool TryRename(const FileSpec& target, const FileSpec& source) {
    try {
        source.Rename(target);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

// What a copy of the folder would leave out, the first one met; null when it would be whole.
FileSpec FindLeftOut(const FolderSpec& folder) {
    for (FolderIterator entries = folder.MakeIterator(); !entries.GetCurrent().IsNull();
         entries.Advance()) {
        const FileSpec& entry = entries.GetCurrent();
        if (entries.HasNoContents()) {
            return entry;
        }
        if (entries.IsFolder() && !entry.IsAlias()) {
            const FileSpec below = FindLeftOut(FolderSpec(entry));
            if (!below.IsNull()) {
                return below;
            }
        }
    }
    return {};
}

void MoveFolderByCopying(const FileSpec& target, const FileSpec& source, Tickler& tickler) {
    const FolderSpec folder(source);
    const FileSpec leftOut = FindLeftOut(folder);
    if (!leftOut.IsNull()) {
        ThrowFileError(ERROR_ACCESS_DENIED, leftOut.GetPath());
    }
    CopyFolder(target, source, true, tickler);
    folder.DeleteTree();
}

}  // namespace

void Move(const FileSpec& target, const FileSpec& source, Tickler& tickler) {
    if (!TryRename(target, source)) {
        if (source.IsFile()) {
            CopyFile(target, source, tickler);
            source.Delete();
        } else if (source.IsFolder()) {
            MoveFolderByCopying(target, source, tickler);
        } else {
            ThrowFileError(ERROR_ACCESS_DENIED, source.GetPath());
        }
    }
    BeginCopy(tickler, source.GetPath());
    tickler.SetProgress(1.0);
}

}  // namespace FileSystem
