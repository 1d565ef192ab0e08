#include "filesystem/FileException.h"
#include "filesystem/utilities/FileUtilities.h"
#include "platform/errors.h"

namespace FileSystem {
namespace {

bool IsBelow(const FileSpec& file, const FileSpec& folder) {
    for (FileSpec above = file.MakeParent(); !above.IsNull(); above = above.MakeParent()) {
        if (above.IsEqual(folder)) {
            return true;
        }
    }
    return false;
}

void CopyTree(const FileSpec& target, const FileSpec& source, bool recursive, Tickler& tickler) {
    if (!target.IsPresent()) {
        target.CreateFolder();
        target.SetAttributes(source.GetAttributes());
    }
    // No listing stays open during a descent.
    std::vector<FileSpec> folders;
    for (FolderIterator entries = FolderSpec(source).MakeIterator(); !entries.GetCurrent().IsNull();
         entries.Advance()) {
        const FileSpec& entry = entries.GetCurrent();
        if (entries.HasNoContents()) {
            continue;
        }
        if (!entries.IsFolder() || entry.IsAlias()) {
            CopyFile(target.MakeChild(entry.GetName()), entry, tickler);
        } else if (recursive) {
            folders.push_back(entry);
        }
    }
    for (const FileSpec& folder : folders) {
        CopyTree(target.MakeChild(folder.GetName()), folder, recursive, tickler);
    }
}

}  // namespace

void CopyFolder(const FileSpec& target, const FileSpec& source, bool recursive, Tickler& tickler) {
    // Such a copy would go on to copy itself.
    if (recursive && IsBelow(target, source)) {
        ThrowFileError(ERROR_SHARING_VIOLATION, target.GetPath());
    }
    CopyTree(target, source, recursive, tickler);
}

}  // namespace FileSystem
