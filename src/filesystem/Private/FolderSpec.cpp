#include "filesystem/FolderSpec.h"

#include <memory>

#include "text/Texts.h"

namespace {

bool LeadsNowhere(const FileSpec& file) {
    try {
        file.GetFileSize();
        return false;
    } catch (const FileException& failure) {
        return failure.GetNumber() == Texts::fileNotFound.GetId() ||
               failure.GetNumber() == Texts::filePathNotFound.GetId();
    }
}

}  // namespace

FolderIterator::FolderIterator(const SharedHandle<FolderSpec_Iterator>& listing) : impl(listing) {
    Advance();
}

void FolderIterator::Advance() {
    if (impl == nullptr) {
        return;
    }
    current = FileSpec(impl->Next());
    kind = impl->GetKind();
    if (current.IsNull()) {
        impl.reset();
    }
}

bool FolderIterator::IsFolder() const {
    return kind ? kind->isFolder : current.IsFolder();
}

bool FolderIterator::IsFolderLink() const {
    return kind && kind->isLink && kind->isFolder;
}

bool FolderIterator::HasNoContents() const {
    return kind && kind->isLink && (kind->isFolder || LeadsNowhere(current));
}

FolderSpec::FolderSpec(const FilePath& path) : FolderSpec(FileSpec(path)) {}

FolderSpec::FolderSpec(const FileSpec& file)
    : FileSpec(file), folder(std::dynamic_pointer_cast<FolderSpec_IF>(GetImpl())) {
    if (folder == nullptr) {
        FileSpec::operator=(FileSpec());
    }
}

FolderIterator FolderSpec::MakeIterator() const {
    return FolderIterator(Existing(folder, ".\\Private\\FolderSpec", 64).MakeIterator(folder));
}

void FolderSpec::DeleteTree() const {
    Existing(folder, ".\\Private\\FolderSpec", 70).DeleteTree(folder);
}
