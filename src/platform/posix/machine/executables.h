// The files that processes run.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <string>

namespace brevik::platform {

// Host path of a process's executable, the one that it was started from where that file has been
// replaced since. Empty when it cannot be read.
std::string ExecutableOf(pid_t process);

// False, with errno set, when the status of that file cannot be had.
bool StatExecutableOf(pid_t process, struct stat* status);

}  // namespace brevik::platform
