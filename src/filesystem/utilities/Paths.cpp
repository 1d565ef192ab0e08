#include <cstdio>
#include <deque>

#include "filesystem/FileException.h"
#include "filesystem/Volume_IF.h"
#include "filesystem/utilities/FileUtilities.h"
#include "platform/errors.h"

namespace FileSystem {
namespace {

// The names of the components of a path, the one nearest the root in front. Raises for the null
// object.
struct PathNames {
    explicit PathNames(const FileSpec& file) : root(file) {
        while (!root.IsRoot()) {
            names.push_front(root.GetName());
            root = root.MakeParent();
        }
    }

    FileSpec root;
    std::deque<FilePath> names;
};

}  // namespace

void CreatePath(const FileSpec& folder) {
    const PathNames path(folder);
    FileSpec level = path.root;
    for (const FilePath& name : path.names) {
        level = level.MakeChild(name);
        if (!level.IsPresent()) {
            level.CreateFolder();
        } else if (!level.IsFolder()) {
            ThrowFileError(ERROR_FILE_EXISTS, level.GetPath());
        }
    }
}

FileSpec MakeUniqueName(const FileSpec& folder, const FilePath& name, const FilePath& extension) {
    constexpr int kLastNumber = 999999;
    const std::size_t place = name.find('*');
    const bool hasPlace = place != FilePath::npos;
    if (!hasPlace) {
        const FileSpec candidate = folder.MakeChild(name.AddExtension(extension));
        if (!candidate.IsPresent()) {
            return candidate;
        }
    }
    for (int number = 1; number <= kLastNumber; ++number) {
        char digits[16];
        std::snprintf(digits, sizeof digits, "%d", number);
        FilePath numbered = name;
        numbered.replace(hasPlace ? place : name.size(), hasPlace ? 1 : 0, FilePath(digits));
        const FileSpec candidate = folder.MakeChild(numbered.AddExtension(extension));
        if (!candidate.IsPresent()) {
            return candidate;
        }
    }
    return {};
}

FilePath MakeRelativePath(const FileSpec& target, const FileSpec& base) {
    if (base.IsNull()) {
        return {};
    }
    const Volume volume(target.GetVolume());
    if (!Volume(base.GetVolume()).IsEqual(volume)) {
        return {};
    }
    std::deque<FilePath> down = PathNames(target).names;
    std::deque<FilePath> up = PathNames(base).names;
    while (!down.empty() && !up.empty() &&
           down.front().IsEqual(up.front(), volume.IsCaseSensitive())) {
        down.pop_front();
        up.pop_front();
    }
    FilePath way = ".";
    for (std::size_t i = 0; i < up.size(); ++i) {
        way += FilePath("/..");
    }
    for (const FilePath& name : down) {
        way += FilePath("/") + name;
    }
    return way;
}

}  // namespace FileSystem
