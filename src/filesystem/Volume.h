// A volume as a value. Copies share one Volume_IF; the null volume is legal.
#pragma once

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
    bool IsCaseSensitive() const;

    // Two null volumes are equal; volumes of different classes are not.
    bool IsEqual(const Volume& other) const;

  private:
    SharedHandle<Volume_IF> impl;
};
