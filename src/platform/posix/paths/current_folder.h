// The process's current folder, as a Windows path.
#pragma once

#include <sys/stat.h>

#include <string>

namespace brevik::platform {

// Without a trailing backslash but at the root of a drive. It is spelled as SetCurrentDirectoryW
// was given it while the process is still in that folder. Empty when there is none, or when no path
// leads to it, as to a folder whose name ends in a dot. Safe on any thread.
std::u16string CurrentFolder();

// The same on the host, with links followed. Empty when there is none.
std::string HostCurrentFolder();

bool IsCurrentFolder(const struct stat& folder);

}  // namespace brevik::platform
