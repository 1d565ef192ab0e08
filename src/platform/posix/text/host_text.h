// Text for the host's own interfaces, which take UTF-8. Ill-formed parts become U+FFFD.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace brevik::platform {

PLATFORM_API std::string Utf8FromWide(std::u16string_view text);
PLATFORM_API std::u16string WideFromUtf8(std::string_view text);

// Between UTF-16 and its little-endian bytes, which is how registry values and files hold it. Half
// a unit at the end of the bytes is dropped.
PLATFORM_API std::string BytesOfUtf16(std::u16string_view text);
PLATFORM_API std::u16string Utf16OfBytes(std::string_view bytes);

// Each unit in upper case, as CharUpperBuffW has it.
PLATFORM_API std::u16string UpperCase(std::u16string_view text);

// The number in up to four bytes, little-endian.
std::uint32_t NumberOfBytes(std::string_view bytes);

}  // namespace brevik::platform
