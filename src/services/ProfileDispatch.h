// The profile identifier of a user of the online service, which a dialog of the sibling library
// fetches.
#pragma once

#include <cstdint>
#include <string>

#include "platform/types.h"

namespace ProfileDispatch {

inline constexpr std::int32_t kGotProfile = 0;
inline constexpr std::int32_t kServiceAnsweredOne = 1;
inline constexpr std::int32_t kNoProfile = 2;

// Has the dialog fetch the profile of a user, in the language of `locale`, a code such as "ENU",
// or, where that is empty, the one that the suite runs in. `window` owns the dialog and may be
// null.
//
// `profileId` receives the narrow text, in a block of CoTaskMemAlloc, whatever the service's
// result; null without one. kGotProfile when the service succeeded and gave a text,
// kServiceAnsweredOne when it returned 1, else kNoProfile. Any thread. Throws std::bad_alloc alone.
std::int32_t GetKindletProfileID(const std::string& kindletUid, const std::string& locale,
                                 void* window, char** profileId);

}  // namespace ProfileDispatch
