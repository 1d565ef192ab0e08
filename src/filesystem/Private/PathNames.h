// The names of the components of a path.
#pragma once

#include <deque>

#include "filesystem/FileSpec.h"

namespace FileSystem {

struct PathNames {
    // Walks up from the object. Raises for the null object.
    explicit PathNames(const FileSpec& file);

    FileSpec root;
    std::deque<FilePath> names;  // the one nearest the root in front
};

}  // namespace FileSystem
