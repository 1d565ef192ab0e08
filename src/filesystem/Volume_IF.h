// The medium that a file object lies on. See Volume for the value class that holds one.
//
// A volume never changes once it is made, so any thread may use it: a medium that is swapped leaves
// the file objects made before on the old volume. Failures raise a FileException with the volume's
// root. Sizes are bytes.
#pragma once

#include <cstdint>

#include "filesystem/FilePath.h"
#include "text/SharedHandle.h"

class FileSpec_IF;

class Volume_IF {
  public:
    virtual ~Volume_IF() = default;

    // Takes a handle on the volume itself.
    virtual SharedHandle<FileSpec_IF> GetRootFolder(const SharedHandle<Volume_IF>& self) = 0;
    virtual std::uint64_t GetCapacity() = 0;

    // What is free for the caller, whose quota counts.
    virtual std::uint64_t GetFreeSpace() = 0;
    virtual std::uint64_t GetMaximumFileSize() = 0;

    // Of one component of a path, in UTF-16 units.
    virtual std::uint32_t GetMaximumNameLength() = 0;

    // The label.
    virtual FilePath GetName() = 0;

    // Whether names that differ in case alone are different names.
    virtual bool IsCaseSensitive() = 0;
    virtual bool IsEqual(const SharedHandle<Volume_IF>& other) = 0;

    // Whether the medium is still there: false for an empty drive and for one with another medium.
    // Never raises.
    virtual bool IsMounted() = 0;
    virtual bool IsNetwork() = 0;
    virtual bool IsRemovable() = 0;
    virtual bool IsValid() = 0;

    // Takes the medium out of the system's use. Raises for one that is in use, and for a volume
    // that is no removable drive.
    virtual void Unmount() = 0;
};
