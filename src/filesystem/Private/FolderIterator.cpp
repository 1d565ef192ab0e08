#include "filesystem/FolderIterator.h"

FolderIterator::FolderIterator(const SharedHandle<FolderSpec_Iterator>& listing) : impl(listing) {
    Advance();
}

void FolderIterator::Advance() {
    if (impl == nullptr) {
        return;
    }
    current = FileSpec(impl->Next());
    if (current.IsNull()) {
        impl.reset();
    }
}

bool FolderIterator::IsFolder() const {
    const std::optional<bool> told = impl->IsFolder();
    return told ? *told : current.IsFolder();
}
