// The registry as the machine's file has it now.
#pragma once

#include <memory>
#include <string>

#include "platform/errors.h"
#include "platform/posix/registry/registry_tree.h"

namespace brevik::platform {

struct RegistrySnapshot {
    RegistryTree tree;       // with its sub keys listed
    DWORD error = NO_ERROR;  // why the file could not be read so far; the tree is empty then
};

// The newest state of the registry, which never changes. Never null.
//
// While the file stays as it is, a call costs one system call. A file that is missing is an empty
// registry. One that is malformed or cannot be read is refused whole, with one line on the debugger
// output for each change of it, and what was read before stays in force. Safe on any thread; throws
// nothing but std::bad_alloc, and the next call tries again.
std::shared_ptr<const RegistrySnapshot> NewestRegistry();

// Host path of the machine's registry file.
PLATFORM_API std::string RegistryFilePath();

}  // namespace brevik::platform
