// A volume as a value. Copies share one Volume_IF; the null volume is legal.
#pragma once

#include <typeinfo>

#include "filesystem/FileException.h"
#include "filesystem/Volume_IF.h"
#include "text/SharedHandle.h"

class Volume {
  public:
    // The null volume.
    Volume() = default;
    Volume(const SharedHandle<Volume_IF>& object) : impl(object) {}
    Volume(const Volume&) = default;
    Volume& operator=(const Volume&) = default;
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
