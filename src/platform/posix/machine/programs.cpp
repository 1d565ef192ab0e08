#include "platform/posix/machine/programs.h"

#include <sys/auxv.h>
#include <unistd.h>

#include <filesystem>
#include <string_view>
#include <system_error>

namespace brevik::platform {
namespace {

// Whether others than the owner may write there.
bool IsOpen(const struct stat& folder) {
    return (folder.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

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

ProcessRights CurrentRights() {
    uid_t real = 0;
    uid_t effective = 0;
    uid_t saved = 0;
    getresuid(&real, &effective, &saved);
    const bool mixed = real != effective || saved != effective;
    return {effective, mixed || getauxval(AT_SECURE) != 0};
}

bool MayHoldLibraries(const ProcessRights& rights, const struct stat& folder) {
    return MayLendItsFolder(rights, folder) && !IsOpen(folder);
}

bool MayHoldLibraries(const std::string& folder, const struct stat& program) {
    for (std::size_t end = folder.size();; end = folder.rfind('/', end - 1)) {
        struct stat status = {};
        const bool isOwned = lstat(folder.substr(0, end).append("/").c_str(), &status) == 0 &&
                             (status.st_uid == 0 || status.st_uid == program.st_uid);
        // In a sticky folder above it no other user can rename what lies there.
        const bool isSticky = end < folder.size() && (status.st_mode & S_ISVTX) != 0;
        if (!isOwned || (IsOpen(status) && !isSticky)) {
            return false;
        }
        if (end == 0) {
            return true;
        }
    }
}

bool MayLendItsFolder(const ProcessRights& rights, const struct stat& program) {
    return !rights.isPrivileged && (program.st_uid == 0 || program.st_uid == rights.user);
}

}  // namespace brevik::platform
