#include "filesystem/Volume.h"

#include <typeinfo>

#include "filesystem/FileException.h"

bool Volume::IsCaseSensitive() const {
    return Existing(impl, ".\\Private\\Volume", 84).IsCaseSensitive();
}

bool Volume::IsEqual(const Volume& other) const {
    if (impl == nullptr || other.impl == nullptr) {
        return impl == other.impl;
    }
    Volume_IF& mine = *impl;
    const Volume_IF& theirs = *other.impl;
    return typeid(mine) == typeid(theirs) && mine.IsEqual(other.impl);
}
