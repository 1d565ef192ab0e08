#include "filesystem/FileException.h"
#include "filesystem/Private/PathNames.h"
#include "filesystem/utilities/FileUtilities.h"
#include "platform/errors.h"

namespace FileSystem {

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

}  // namespace FileSystem
