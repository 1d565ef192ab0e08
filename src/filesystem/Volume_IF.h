// The medium that a file object lies on, and the value class that holds one.
//
// A volume never changes, so any thread may use it: file objects made before a medium was swapped
// stay on the old one. Failures raise a FileException with the volume's root. Sizes are bytes.
#pragma once

#include <cstdint>
#include <typeinfo>

#include "filesystem/FileException.h"
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

    // Raises for a medium that is in use, and for a volume that is no removable drive.
    virtual void Unmount() = 0;
};

// Copies share one Volume_IF; the null volume is legal.
class Volume {
  public:
    // The null volume.
    Volume() = default;
    Volume(const SharedHandle<Volume_IF>& object) : impl(object) {}
    virtual ~Volume() = default;

    bool IsNull() const { return impl == nullptr; }

    // Raises a FileException with an empty path for the null volume.
    bool IsCaseSensitive() const {
        return Existing(impl, ".\\Private\\Volume", 84).IsCaseSensitive();
    }

    // Two null volumes are equal; volumes of different classes are not.
    bool IsEqual(const Volume& other) const {
        if (impl == nullptr || other.impl == nullptr) {
            return impl == other.impl;
        }
        Volume_IF& mine = *impl;
        const Volume_IF& theirs = *other.impl;
        return typeid(mine) == typeid(theirs) && mine.IsEqual(other.impl);
    }

  private:
    SharedHandle<Volume_IF> impl;
};
