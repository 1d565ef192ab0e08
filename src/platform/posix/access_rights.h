// What a security descriptor means on the host.
//
// The entry for Everyone becomes the permissions of group and others. Entries that are inherited
// become the folder's default access list, which is what new files get whatever the mask of the
// process that makes them; it is bounded by the mode that their maker asks for. A file system
// without access lists keeps the permissions alone.
#pragma once

#include <optional>
#include <string>

#include "platform/errors.h"
#include "platform/types.h"

namespace brevik::platform {

inline constexpr unsigned kMayRead = 4;
inline constexpr unsigned kMayWrite = 2;
inline constexpr unsigned kMayRun = 1;

struct OtherUsersRights {
    bool present = false;  // else the descriptor tells nothing about them
    unsigned here = 0;     // to the file or folder itself
    std::optional<unsigned>
        below;  // to what is made in the folder; where nothing, as the mask says
};

// REQUIRES: a descriptor of either form.
OtherUsersRights RightsIn(const void* descriptor);

// Gives the file or folder these rights in place of those that it grants others now. The owner's
// permissions stay; what the owner may not write or run nobody else may. 0 or an error number.
DWORD GrantToOthers(const std::string& path, const OtherUsersRights& rights);

// Makes a folder with these rights. Nobody ever sees it with others. 0 or an error number.
DWORD MakeFolderWithRights(const std::string& path, const OtherUsersRights& rights);

}  // namespace brevik::platform
