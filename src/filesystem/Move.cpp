#include "filesystem/FileException.h"
#include "filesystem/FileUtilities.h"
#include "filesystem/Private/CopyProgress.h"
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

}  // namespace

void Move(const FileSpec& target, const FileSpec& source, Tickler& tickler) {
    if (!TryRename(target, source)) {
        if (source.IsFile()) {
            CopyFile(target, source, tickler);
            source.Delete();
        } else if (source.IsFolder()) {
            CopyFolder(target, source, true, tickler);
            FolderSpec(source).DeleteTree();
        } else {
            ThrowFileError(ERROR_ACCESS_DENIED, source.GetPath());
        }
    }
    BeginCopy(tickler, source.GetPath());
    tickler.SetProgress(1.0);
}

}  // namespace FileSystem
