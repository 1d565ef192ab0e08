// What a security descriptor means on the host.
//
// An entry for Everyone becomes the permissions of group and others. For a folder it also becomes
// the default access list, which is what new files get whatever the mask of the process that makes
// them, bounded by the mode that the process asks for. A file system without access lists keeps the
// permissions alone.
#pragma once

#include <string>

#include "platform/errors.h"

namespace brevik::platform {

// Gives every user all rights to a file or folder. The owner's permissions stay, and no
// other may write or run a file that its owner may not. NO_ERROR or an error number.
DWORD OpenToOthers(const std::string& path);

// Makes a folder that has these rights from its first moment. NO_ERROR or an error number.
DWORD MakeOpenFolder(const std::string& path);

}  // namespace brevik::platform
