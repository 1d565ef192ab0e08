#include "platform/posix/executables.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string_view>

#include "platform/posix/paths.h"

namespace brevik::platform {
namespace {

// The mark behind the path of a file that is gone; a file may also be named like that.
constexpr std::string_view kDeletedMark = " (deleted)";

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
    char link[32];
    std::snprintf(link, sizeof link, "/proc/%d/exe", process);
    return ReadExecutableLink(link);
}

// Neither path is ever destroyed: a host may call while the process ends.

const std::string& HostExecutable() {
    static const std::string& path = *new std::string(ReadExecutableLink("/proc/self/exe"));
    return path;
}

const std::u16string& HostExecutableWindowsPath() {
    static const std::u16string& path = *new std::u16string(WindowsPath(HostExecutable()));
    return path;
}

}  // namespace brevik::platform
