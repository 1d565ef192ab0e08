#include <cstdio>

#include "filesystem/utilities/FileUtilities.h"

namespace FileSystem {

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

}  // namespace FileSystem
