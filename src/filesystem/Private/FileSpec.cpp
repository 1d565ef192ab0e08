#include "filesystem/FileSpec.h"

#include <typeinfo>

#include "filesystem/ClassFactory_IF.h"
#include "filesystem/Volume_IF.h"

FileSpec::FileSpec(const FilePath& path) : impl(ClassFactory_IF::MakeFileSpec(path, nullptr)) {}

bool FileSpec::IsEqual(const FileSpec& other) const {
    if (impl == nullptr || other.impl == nullptr) {
        return impl == other.impl;
    }
    const FileSpec_IF& mine = *impl;
    const FileSpec_IF& theirs = *other.impl;
    return typeid(mine) == typeid(theirs) && mine.IsEqual(other);
}
