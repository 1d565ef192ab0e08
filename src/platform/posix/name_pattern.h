// Patterns of names in a listing, as the system reads them.
//
// "?" is one unit, or none in front of a dot and at the end; "*" is any number of units; "*.*" is
// every name, also one without a dot; "*." is every name without a dot. Case does not count.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

namespace brevik::platform {

class PLATFORM_API NamePattern {
  public:
    // REQUIRES: IsValid of the text.
    explicit NamePattern(std::u16string_view text);

    static bool IsValid(std::u16string_view text);

    bool MatchesEveryName() const { return text_ == u"*"; }
    bool Matches(std::u16string_view name) const;

    // Whether it takes the folder itself and the one above it, "." and "..", which count as names
    // without a dot.
    bool MatchesFolderItself() const;

  private:
    std::u16string text_;  // upper case; with the signs of below in the place of some wildcards
};

}  // namespace brevik::platform
