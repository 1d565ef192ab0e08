#include "filesystem/Volume_IF.h"
#include "filesystem/utilities/FileUtilities.h"

namespace FileSystem {
namespace {

// A scan of a folder: what is found, then what is found in the folders below it.
struct Scan {
    const FilePath& pattern;
    bool isCaseSensitive;
    bool recursive;
    std::vector<FileSpec> found;

    bool IsMatch(const FileSpec& entry) const {
        return entry.GetName().IsMatch(pattern, isCaseSensitive);
    }

    // Takes an entry in. True when it is a folder to be looked into.
    bool TakeFile(const FolderIterator& entry) {
        if (recursive && entry.IsFolder()) {
            return !entry.IsFolderLink();
        }
        if (IsMatch(entry.GetCurrent())) {
            found.push_back(entry.GetCurrent());
        }
        return false;
    }
    bool TakeFolder(const FolderIterator& entry) {
        if (!entry.IsFolder()) {
            return false;
        }
        if (IsMatch(entry.GetCurrent())) {
            found.push_back(entry.GetCurrent());
            return false;
        }
        return recursive && !entry.IsFolderLink();
    }

    void Run(const FolderSpec& folder, bool (Scan::*take)(const FolderIterator&)) {
        std::vector<FileSpec> below;
        for (FolderIterator entries = folder.MakeIterator(); entries; entries.Advance()) {
            if ((this->*take)(entries)) {
                below.push_back(entries.GetCurrent());
            }
        }
        for (const FileSpec& entry : below) {
            Run(FolderSpec(entry), take);
        }
    }
};

std::vector<FileSpec> RunScan(const FolderSpec& folder, const FilePath& pattern, bool recursive,
                              bool (Scan::*take)(const FolderIterator&)) {
    Scan scan = {pattern, Volume(folder.GetVolume()).IsCaseSensitive(), recursive, {}};
    scan.Run(folder, take);
    return std::move(scan.found);
}

}  // namespace

std::vector<FileSpec> FindFiles(const FolderSpec& folder, const FilePath& pattern, bool recursive) {
    return RunScan(folder, pattern, recursive, &Scan::TakeFile);
}

std::vector<FileSpec> FindFolders(const FolderSpec& folder, const FilePath& pattern,
                                  bool recursive) {
    return RunScan(folder, pattern, recursive, &Scan::TakeFolder);
}

std::uint64_t GetFolderSize(const FolderSpec& folder, bool recursive) {
    std::uint64_t size = 0;
    for (FolderIterator entries = folder.MakeIterator(); entries; entries.Advance()) {
        const FileSpec& entry = entries.GetCurrent();
        if (entries.HasNoContents()) {
            continue;
        }
        if (!entries.IsFolder()) {
            size += entry.GetFileSize();
        } else if (recursive) {
            size += GetFolderSize(FolderSpec(entry), recursive);
        }
    }
    return size;
}

}  // namespace FileSystem
