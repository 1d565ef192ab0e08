// What each exported function answers when it fails as a whole: a null out argument, or an
// exception that reached the call frame.
#pragma once

#include <cstdint>

namespace BrevikConfig {

inline constexpr std::uint8_t kQueryFailure = 0;
inline constexpr std::int32_t kLocalGuidsFailure = 0;
inline constexpr std::int32_t kLanguageFailure = 1;
inline constexpr std::int32_t kCookieFailure = 1;
inline constexpr std::int32_t kUpdateFailure = 2;
inline constexpr std::uint8_t kAvailabilityFailure = 0;
inline constexpr std::int32_t kProfileFailure = 2;

}  // namespace BrevikConfig
