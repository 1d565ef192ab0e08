#include "filesystem/Private/PathNames.h"
#include "filesystem/Volume.h"
#include "filesystem/utilities/FileUtilities.h"

namespace FileSystem {

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
