// One open listing of a folder. It belongs to one thread at a time.
#pragma once

#include <optional>

#include "text/SharedHandle.h"

class FileSpec_IF;

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
