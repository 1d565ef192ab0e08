// The order in which the system looks for a file by its bare name.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

namespace brevik::platform {

// Host path of the regular file that the path names; empty when there is none, and for a path that
// ends in a separator.
std::string FindRegularFile(std::u16string_view path);

// Host path of the first regular file of this name in the host's folder, C:\Windows\System32,
// C:\Windows, the current folder, and the folders of PATH, which are the host's own; of all but the
// second and third only where they may hold libraries (see programs.h), and of PATH no entry
// that is relative. Empty when there is none.
std::string FindInSystemOrder(std::u16string_view bareName);

}  // namespace brevik::platform
