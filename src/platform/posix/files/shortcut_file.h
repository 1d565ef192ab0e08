// Where a shortcut file (.lnk) leads.
//
// The bytes may come from anywhere: every length and place in them is checked. The list of shell
// items and the blocks after the texts are skipped.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace brevik::platform {

// Texts hold no NUL, and are empty where the file has none.
struct Shortcut {
    std::u16string localPath;
    std::u16string sharePath;      // the same target by the share that it is on
    std::u16string relativePath;   // from the folder of the shortcut
    std::u16string workingFolder;  // where the target is started
};

// Nothing for bytes that are no shortcut or a broken one.
PLATFORM_API std::optional<Shortcut> ParseShortcut(std::string_view bytes);

}  // namespace brevik::platform
