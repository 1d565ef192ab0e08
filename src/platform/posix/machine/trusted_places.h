// From where a process takes libraries that it looks for by their bare name: places in which other
// users of the host could put one are none.
#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/types.h"

namespace brevik::platform {

// With whose rights a process runs.
struct ProcessRights {
    uid_t user = 0;  // the effective one

    // Whether there are more than whoever started the process has, as with a set-user-id program,
    // or than the effective user has.
    bool isPrivileged = false;
};

ProcessRights CurrentRights();

// Whether a folder counts that is not the host's own, such as the current one: root or the user
// owns it, and nobody else may write to it. A file or link in it is there because one of them put
// it there. In a privileged process it never does, since whoever started the process chose it.
PLATFORM_API bool MayHoldLibraries(const ProcessRights& rights, const struct stat& folder);

// Whether the folder of a privileged program counts, which has an absolute path without links:
// nobody but root and the program's owner can put anything there, or another folder in its place.
PLATFORM_API bool MayHoldLibraries(const std::string& folder, const struct stat& program);

// Whether the folder of the program that started this one counts: root or the user owns the
// program. In a privileged process it never does.
PLATFORM_API bool MayLendItsFolder(const ProcessRights& rights, const struct stat& program);

}  // namespace brevik::platform
