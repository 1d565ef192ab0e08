// Owner of an open folder of the host.
#pragma once

#include <dirent.h>

#include <memory>

namespace brevik::platform {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using ScopedFolder = std::unique_ptr<DIR, CloseFolder>;

}  // namespace brevik::platform
