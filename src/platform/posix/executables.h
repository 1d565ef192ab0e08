// The files that processes run.
#pragma once

#include <sys/types.h>

#include <string>

namespace brevik::platform {

// Host path of a process's executable, the one that it was started from where that file has been
// replaced since. Empty, with errno set, when it cannot be read.
std::string ExecutableOf(pid_t process);

// The same for this process, asked once: the host does not move.
const std::string& HostExecutable();

// Its Windows path.
const std::u16string& HostExecutableWindowsPath();

}  // namespace brevik::platform
