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

        // It stands for something elsewhere: a link to a folder or one that leads nowhere, and
        // whatever else the platform calls a reparse point.
        bool isLink;
    };

    // The next entry, files and folders alike, in the platform's order; null at the end, and from
    // then on. Raises for a name that no path may hold; one that ends in a dot is passed over,
    // since a path loses that dot and would name another file, or the folder itself.
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

    // Deletes the folder with all that it holds, depth first; a folder that does not exist is no
    // failure. Of links, also of a folder that is one, what they lead to stays. Stops at the first
    // failure and raises it: what was deleted stays deleted.
    virtual void DeleteTree(const SharedHandle<FolderSpec_IF>& self) = 0;

    // Deletes the folder's files and, where `recursive`, its folders with all that they hold.
    virtual void DeleteContents(bool recursive, const SharedHandle<FolderSpec_IF>& self) = 0;

    // Opens a listing; a folder that does not exist raises.
    virtual SharedHandle<FolderSpec_Iterator> MakeIterator(
        const SharedHandle<FolderSpec_IF>& self) = 0;
};
