// One open listing of a folder. It belongs to one thread at a time.
#pragma once

#include <optional>

#include "text/SharedHandle.h"

class FileSpec_IF;

class FolderSpec_Iterator {
  public:
    virtual ~FolderSpec_Iterator() = default;

    // The next entry, files and folders alike, in the platform's order; null at the end, and from
    // then on. Raises for a name that no path may hold.
    virtual SharedHandle<FileSpec_IF> Next() = 0;

    // Whether the entry that Next gave last is a folder, where the listing itself tells that.
    std::optional<bool> IsFolder() const { return isFolder_; }

  protected:
    std::optional<bool> isFolder_;
};
