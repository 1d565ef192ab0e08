#include "filesystem/FolderIterator.h"

#include "filesystem/FileException.h"
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
