#include "filesystem/FolderSpec.h"

#include <memory>

#include "filesystem/FileException.h"

namespace {

FolderSpec_IF& Existing(const SharedHandle<FolderSpec_IF>& folder, int line) {
    if (folder == nullptr) {
        ThrowInternalFileError(".\\Private\\FolderSpec", line);
    }
    return *folder;
}

}  // namespace

FolderSpec::FolderSpec(const FilePath& path) : FolderSpec(FileSpec(path)) {}

FolderSpec::FolderSpec(const FileSpec& file)
    : FileSpec(file), folder(std::dynamic_pointer_cast<FolderSpec_IF>(GetImpl())) {
    if (folder == nullptr) {
        FileSpec::operator=(FileSpec());
    }
}

FolderIterator FolderSpec::MakeIterator() const {
    return FolderIterator(Existing(folder, 64).MakeIterator(folder));
}

void FolderSpec::DeleteTree() const {
    Existing(folder, 70).DeleteTree(folder);
}
