// The files that processes run.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <string>

namespace brevik::platform {

// Host path of a process's executable, the one that it was started from where that file has been
// replaced since. Empty, with errno set, when it cannot be read.
std::string ExecutableOf(pid_t process);

// What the host knows of that file. False, with errno set, when it cannot be had.
bool StatExecutableOf(pid_t process, struct stat* status);

// The same for this process. Once had, it is not asked for again: the host does not move.
std::string HostExecutable();

}  // namespace brevik::platform
