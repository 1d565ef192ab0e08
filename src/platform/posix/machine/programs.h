// The files that processes run, and from where a process takes libraries that it looks for by their
// bare name: not from places in which other users of the host could put one.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <string>

#include "platform/types.h"

namespace brevik::platform {

// Host path of a process's executable, the one that it was started from where that file has been
// replaced since. Empty when it cannot be read.
std::string ExecutableOf(pid_t process);

// False, with errno set, when the status of that file cannot be had.
bool StatExecutableOf(pid_t process, struct stat* status);

// With whose rights a process runs.
struct ProcessRights {
    uid_t user = 0;  // the effective one

    // Whether these are more than the user has who started the process, as with a
    // set-user-id program, or than the effective user has.
    bool isPrivileged = false;
};

ProcessRights CurrentRights();

// Whether a folder counts that is not the host's own, such as the current one: root or the user
// owns it, and no other may write to it. A file or link in it is there because one of them put
// it there. In a privileged process it never does, since its starter chose it.
PLATFORM_API bool MayHoldLibraries(const ProcessRights& rights, const struct stat& folder);

// Whether the folder of a privileged program counts, which has an absolute path without links:
// only root and the program's owner can put anything there, or another folder in its place.
PLATFORM_API bool MayHoldLibraries(const std::string& folder, const struct stat& program);

// Whether the folder of the program that started this one counts: root or the user owns the
// program. In a privileged process it never does.
PLATFORM_API bool MayLendItsFolder(const ProcessRights& rights, const struct stat& program);

}  // namespace brevik::platform
