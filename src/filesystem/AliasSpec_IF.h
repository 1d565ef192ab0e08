// The shortcut side of a file object.
#pragma once

#include "text/SharedHandle.h"

class FileSpec_IF;

class AliasSpec_IF {
  public:
    virtual ~AliasSpec_IF() = default;

    // Reads the shortcut and gives what it points to, which need not exist; null for one without a
    // target. Raises a FileException with the shortcut's path when it cannot be read or resolved.
    // Leaves the calling thread's component-model state as it was.
    virtual SharedHandle<FileSpec_IF> ResolveAlias() = 0;
};
