#include "platform/posix/machine/executables.h"

#include <limits.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

#include "platform/posix/base/made_once.h"

namespace brevik::platform {
namespace {

// The mark behind the path of a file that is gone; a file may also be named like that.
constexpr std::string_view kDeletedMark = " (deleted)";

std::string LinkOf(pid_t process) {
    return "/proc/" + std::to_string(process) + "/exe";
}

std::string ReadExecutableLink(const char* link) {
    char path[PATH_MAX];
    const ssize_t length = readlink(link, path, sizeof path);
    if (length <= 0) {
        return {};
    }
    if (static_cast<std::size_t>(length) == sizeof path) {
        errno = ENAMETOOLONG;
        return {};
    }
    std::string target(path, static_cast<std::size_t>(length));
    struct stat status;
    if (target.ends_with(kDeletedMark) && lstat(target.c_str(), &status) != 0) {
        target.resize(target.size() - kDeletedMark.size());
    }
    return target;
}

}  // namespace

std::string ExecutableOf(pid_t process) {
    return ReadExecutableLink(LinkOf(process).c_str());
}

bool StatExecutableOf(pid_t process, struct stat* status) {
    return stat(LinkOf(process).c_str(), status) == 0;
}

// What cannot be had now is asked for again: only memory or descriptors may be short.

std::string HostExecutable() {
    static constinit MadeOnce<std::string> kept;
    if (const std::string* path = kept.Find()) {
        return *path;
    }
    std::string path = ReadExecutableLink("/proc/self/exe");
    return path.empty() ? path : kept.Keep(std::move(path));
}

}  // namespace brevik::platform
