#include "filesystem/Private/PathNames.h"

namespace FileSystem {

PathNames::PathNames(const FileSpec& file) : root(file) {
    while (!root.IsRoot()) {
        names.push_front(root.GetName());
        root = root.MakeParent();
    }
}

}  // namespace FileSystem
