#include "platform/posix/machine/executables.h"

#include <unistd.h>

#include <filesystem>
#include <string_view>
#include <system_error>

namespace brevik::platform {
namespace {

std::string LinkOf(pid_t process) {
    return "/proc/" + (process == getpid() ? "self" : std::to_string(process)) + "/exe";
}

}  // namespace

std::string ExecutableOf(pid_t process) {
    // The mark after the path of a file that is gone; a file may also be named like that.
    constexpr std::string_view kDeletedMark = " (deleted)";
    std::error_code error;
    std::string path = std::filesystem::read_symlink(LinkOf(process), error).string();
    struct stat status;
    if (path.ends_with(kDeletedMark) && lstat(path.c_str(), &status) != 0) {
        path.resize(path.size() - kDeletedMark.size());
    }
    return path;
}

bool StatExecutableOf(pid_t process, struct stat* status) {
    return stat(LinkOf(process).c_str(), status) == 0;
}

}  // namespace brevik::platform
