#include "platform/posix/machine/trusted_places.h"

#include <sys/auxv.h>
#include <unistd.h>

namespace brevik::platform {
namespace {

// Whether others than the owner may write there.
bool IsOpen(const struct stat& folder) {
    return (folder.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

}  // namespace

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
        // In a sticky folder above it nobody else can rename what lies there.
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
