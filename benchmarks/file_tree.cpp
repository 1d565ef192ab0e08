#include "file_tree.h"

#include <fcntl.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "platform/posix/base/scoped_descriptor.h"
#include "platform/types.h"

namespace FileTree {
namespace {

void MakeFile(const std::filesystem::path& path) {
    const ScopedDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    if (file.Get() < 0) {
        throw std::runtime_error(path.string() + " cannot be made");
    }
}

}  // namespace

std::filesystem::path HostPath(const std::string& path) {
    return std::filesystem::path(getenv("BREVIK_MACHINE")) / "drives/c" / path;
}

void Make(const std::string& path, int folders) {
    for (int folder = 0; folder < folders; ++folder) {
        const std::filesystem::path place = HostPath(path) / ("Folder " + std::to_string(folder));
        std::filesystem::create_directories(place);
        for (int file = 0; file < kFilesPerFolder; ++file) {
            MakeFile(place / ("File " + std::to_string(file) + ".txt"));
        }
    }
}

void MakeFlat(const std::string& path, int files) {
    std::filesystem::create_directories(HostPath(path));
    for (int file = 0; file < files; ++file) {
        MakeFile(HostPath(path) / ("Entry " + std::to_string(file) + ".txt"));
    }
}

}  // namespace FileTree
