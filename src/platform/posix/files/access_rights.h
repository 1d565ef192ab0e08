// What a security descriptor means on the host.
//
// An entry for Everyone becomes the permissions of group and others. For a folder it also becomes
// the default access list, which is what new files get whatever the mask of the process that makes
// them, bounded by the mode that the process asks for. A file system without access lists keeps the
// permissions alone.
#pragma once

#include <string>

#include "platform/errors.h"
#include "platform/types.h"

namespace brevik::platform {

enum class OtherUsersRights {
    kAsTheMaskSays,  // no descriptor was given
    kNone,
    kAll,
};

// REQUIRES: a descriptor of either form, with an access list.
OtherUsersRights RightsIn(const void* descriptor);

// Gives the file or folder these rights in place of those that it grants others now. The owner's
// permissions stay, and nobody may write or run a file that its owner may not. 0 or an error
// number.
//
// REQUIRES: kNone or kAll.
DWORD GrantToOthers(const std::string& path, OtherUsersRights rights);

// Makes a folder, which has these rights from its first moment. 0 or an error number.
DWORD MakeFolderWithRights(const std::string& path, OtherUsersRights rights);

}  // namespace brevik::platform
