// Where the viewers and the programs of a user meet: a folder that holds a socket for each machine.
//
// It is "brevikconfig" in the runtime folder of the user's session ($XDG_RUNTIME_DIR, else
// /run/user/UID), or /tmp/brevikconfig-UID where the user has no such folder. It counts only while
// it is a real folder of the effective user that no other can enter: one who can write to it could
// take a viewer's place. The second choice is .brevikconfig in the user's home folder.
#pragma once

#include <sys/un.h>

#include <array>
#include <string>
#include <vector>

#include "platform/posix/base/scoped_descriptor.h"
#include "platform/types.h"

namespace brevik::platform {

// The file name of a socket; NUL-terminated.
using SocketName = std::array<char, 24>;

// The name for windows of this class that belong to the machine of this process.
PLATFORM_API SocketName SocketNameOf(const WCHAR* windowClass);

struct RuntimeFolder {
    std::string path;
    ScopedDescriptor descriptor;  // of the folder, for its name alone; empty when it is refused
    std::string refusal;          // why it is refused, and what helps

    // The address of a socket in the folder, of any length of path. Valid while the descriptor is
    // open.
    PLATFORM_API sockaddr_un Address(const SocketName& name) const;
};

// In the order of their choice.
PLATFORM_API std::vector<std::string> RuntimeFolderPaths();

// Opens the folder, making it first with mode 0700 where `make` is set. Its parent is never made.
PLATFORM_API RuntimeFolder OpenRuntimeFolder(const std::string& path, bool make);

}  // namespace brevik::platform
