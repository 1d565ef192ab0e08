// The folder that holds the sockets of the user's programs.
//
// It is "brevikconfig" in the runtime folder of the user's session ($XDG_RUNTIME_DIR, else
// /run/user/UID), else /tmp/brevikconfig-UID. Whoever can write there could take a viewer's place,
// so it counts only while it is a real folder of the effective user that nobody else can enter.
#pragma once

#include <sys/un.h>

#include <array>
#include <string>

#include "platform/posix/scoped_descriptor.h"
#include "platform/types.h"

namespace brevik::platform {

// The file name of a window class's socket; NUL-terminated.
using SocketName = std::array<char, 64>;

// A name for any class text: a readable part of harmless characters and a digest of the whole.
// Class texts that differ only in the case of ASCII letters give the same name.
SocketName SocketNameOf(const WCHAR* windowClass);

struct RuntimeFolder {
    std::string path;
    ScopedDescriptor descriptor;  // of the folder, for its name alone; empty when it is refused
    std::string refusal;          // why it is refused, and what helps

    // The address of a socket in the folder, of any length of path. Valid while the descriptor is
    // open.
    sockaddr_un Address(const SocketName& name) const;
};

// Opens the folder, making it first with mode 0700 where `make` is set. Its parent is never made.
RuntimeFolder OpenRuntimeFolder(bool make);

}  // namespace brevik::platform
