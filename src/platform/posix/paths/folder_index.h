// The names of host folders, found without regard to case.
//
// Two names are the same when their UTF-16 forms are the same after upper-casing each unit; a name
// that is not well-formed UTF-8 is never found. Listings of folders are kept, within bounds, until
// the folder changes. Safe on any thread.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace brevik::platform {

// A name to look for, folded once for any number of folders.
class PLATFORM_API FoldedName {
  public:
    // `name` is well-formed UTF-8 without a slash.
    explicit FoldedName(std::string_view name);

    const std::string& Name() const { return name_; }
    const std::u16string& Folded() const { return folded_; }
    std::size_t Hash() const { return hash_; }

  private:
    std::string name_;
    std::u16string folded_;
    std::size_t hash_;
};

// What FindName found.
struct NameInFolder {
    std::optional<std::string> name;

    // Whether the answer holds for as long as the folder has the stamp of `status`.
    bool lasting = false;

    // The host's error where the folder cannot be listed, so that the name may be there in another
    // case; else 0.
    int error = 0;
};

// The name in `folder` that is `name`, or else the first in byte order that differs from it only in
// case. `status` is what stat has just reported of the folder.
PLATFORM_API NameInFolder FindName(const std::string& folder, const struct stat& status,
                                   const FoldedName& name);

}  // namespace brevik::platform
