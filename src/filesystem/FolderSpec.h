// A folder by its path, and the loop through its entries.
#pragma once

#include <optional>

#include "filesystem/FileSpec.h"
#include "filesystem/FolderSpec_IF.h"
#include "text/SharedHandle.h"

// A place in the listing of a folder, which converts to false at its end. Copies advance one and
// the same listing; together they belong to one thread at a time.
class FolderIterator {
  public:
    // Stands on the listing's next entry.
    explicit FolderIterator(const SharedHandle<FolderSpec_Iterator>& listing);

    // The entry; null at the end.
    const FileSpec& GetCurrent() const { return current; }
    explicit operator bool() const { return !current.IsNull(); }

    // Whether the entry is a folder, as the listing reports it; the disk is asked only where the
    // listing does not. REQUIRES: the entry is not null.
    bool IsFolder() const;

    // Whether the entry is a link to a folder. REQUIRES: as above.
    bool IsFolderLink() const;

    // Whether the entry is a link to a folder, or one that leads nowhere. REQUIRES: as above.
    bool HasNoContents() const;

    // Goes to the next entry; at the end it does nothing.
    void Advance();

  private:
    SharedHandle<FolderSpec_Iterator> impl;
    FileSpec current;
    std::optional<FolderSpec_Iterator::Kind> kind;  // of `current`, which copies may outlive
};

// That it is a folder on disk is not tested when it is made.
class FolderSpec : public FileSpec {
  public:
    // The null object.
    FolderSpec() = default;

    // As for FileSpec.
    explicit FolderSpec(const FilePath& path);

    // Shares the file object; null where that has no folder side.
    explicit FolderSpec(const FileSpec& file);

    // The folder's entries, in the platform's order, hidden ones included. Raises when there is no
    // such folder, and for the null object.
    FolderIterator MakeIterator() const;

    // FolderSpec_IF::DeleteTree; raises for the null object.
    void DeleteTree() const;

  private:
    SharedHandle<FolderSpec_IF> folder;
};
