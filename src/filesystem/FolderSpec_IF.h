// The folder side of a file object, and a listing of its entries.
#pragma once

#include <optional>

#include "text/SharedHandle.h"

class FileSpec_IF;

// One open listing. It belongs to one thread at a time.
class FolderSpec_Iterator {
  public:
    virtual ~FolderSpec_Iterator() = default;

    // What a listing reports about an entry.
    struct Kind {
        bool isFolder;

        // A reparse point, such as a link to a folder or one that leads nowhere.
        bool isLink;
    };

    // The next entry, files and folders alike, in the platform's order; null from the end on.
    // Raises for a name that no path may hold; one that ends in a dot, which a path loses, is
    // passed over.
    virtual SharedHandle<FileSpec_IF> Next() = 0;

    // The kind of the entry that Next returned last; nothing where the listing does not report it.
    const std::optional<Kind>& GetKind() const { return kind_; }

  protected:
    std::optional<Kind> kind_;
};

// Each operation takes a handle on the object itself.
class FolderSpec_IF {
  public:
    virtual ~FolderSpec_IF() = default;

    // Deletes the folder with all that it holds, depth first; a missing one is no failure. Of links
    // the targets stay, also of the folder itself. Stops at the first failure and raises it.
    virtual void DeleteTree(const SharedHandle<FolderSpec_IF>& self) = 0;

    // Deletes the folder's files and, where `recursive`, its folders with all that they hold.
    virtual void DeleteContents(bool recursive, const SharedHandle<FolderSpec_IF>& self) = 0;

    // Opens a listing; a folder that does not exist raises.
    virtual SharedHandle<FolderSpec_Iterator> MakeIterator(
        const SharedHandle<FolderSpec_IF>& self) = 0;
};
