#include "filesystem/FolderSpec.h"

#include <memory>

#include "filesystem/FileException.h"

namespace {

constexpr const char* kSource = ".\\Private\\FolderSpec";

}  // namespace

FolderSpec::FolderSpec(const FilePath& path) : FolderSpec(FileSpec(path)) {}

FolderSpec::FolderSpec(const FileSpec& file)
    : FileSpec(file), folder(std::dynamic_pointer_cast<FolderSpec_IF>(GetImpl())) {
    if (folder == nullptr) {
        FileSpec::operator=(FileSpec());
    }
}

FolderIterator FolderSpec::MakeIterator() const {
    return FolderIterator(Existing(folder, kSource, 64).MakeIterator(folder));
}

void FolderSpec::DeleteTree() const {
    Existing(folder, kSource, 70).DeleteTree(folder);
}
