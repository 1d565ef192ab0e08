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
