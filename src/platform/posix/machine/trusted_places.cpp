#include "platform/posix/machine/trusted_places.h"

#include <sys/auxv.h>
#include <unistd.h>

namespace brevik::platform {

ProcessRights CurrentRights() {
    uid_t real = 0;
    uid_t effective = 0;
    uid_t saved = 0;
    getresuid(&real, &effective, &saved);
    const bool mixed = real != effective || saved != effective;
    return {effective, mixed || getauxval(AT_SECURE) != 0};
}

bool MayHoldLibraries(const ProcessRights& rights, const struct stat& folder) {
    return MayLendItsFolder(rights, folder) && (folder.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool MayLendItsFolder(const ProcessRights& rights, const struct stat& program) {
    return !rights.isPrivileged && (program.st_uid == 0 || program.st_uid == rights.user);
}

}  // namespace brevik::platform
