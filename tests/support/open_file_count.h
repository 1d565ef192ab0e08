// How many files this process holds open.
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <iterator>

#include "platform/posix/files/share_modes.h"

inline std::ptrdiff_t OpenFileCount() {
    // One lock file stays open for the next use once it was needed: here it is from the start.
    struct stat status;
    stat("/", &status);
    ShareMode().EnterToDelete(status);
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}
