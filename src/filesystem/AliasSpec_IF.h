// The shortcut side of a file object.
#pragma once

#include "text/SharedHandle.h"

class FileSpec_IF;

class AliasSpec_IF {
  public:
    virtual ~AliasSpec_IF() = default;

    // Reads the shortcut and gives what it leads to, null for one without a target. Raises a
    // FileException with the shortcut's path when it cannot be read, or its target cannot be found.
    // Leaves the calling thread's component-model state as it was.
    virtual SharedHandle<FileSpec_IF> ResolveAlias() = 0;
};
