// The folder side of a file object. Each operation takes a handle on the object itself.
#pragma once

#include "filesystem/FolderSpec_Iterator.h"
#include "text/SharedHandle.h"

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
