// A folder by its path. That it is a folder on disk is not tested when it is made.
#pragma once

#include "filesystem/FileSpec.h"
#include "filesystem/FolderIterator.h"
#include "filesystem/FolderSpec_IF.h"
#include "text/SharedHandle.h"

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
