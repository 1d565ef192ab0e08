#include "filesystem/Private/Windows/ClassFactory.h"

#include <memory>

#include "filesystem/Private/Windows/FileSpec_Win9X.h"

void ClassFactory::MakeFileSpec(const FilePath& path, const SharedHandle<Volume_IF>& volume,
                                SharedHandle<FileSpec_IF>& file) {
    if (path.IsEmpty()) {
        file.reset();
    } else if (IsWin9x()) {
        file = std::make_shared<FileSpec_Win9X>(path, volume);
    } else {
        file = std::make_shared<FileSpec_Win32>(path, volume);
    }
}
