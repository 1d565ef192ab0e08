// Facts about a language.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifndef _WIN32

namespace brevik::platform {

using LCTYPE = DWORD;

inline constexpr LCTYPE LOCALE_SABBREVLANGNAME = 3;

// The abbreviation of a language, such as "DEU"; a language without its country is that of its main
// country, and the neutral one is English. The units written with the NUL. 0 with
// ERROR_INVALID_PARAMETER for an unknown language, ERROR_INVALID_FLAGS for another item,
// ERROR_INSUFFICIENT_BUFFER when the buffer is too small.
PLATFORM_API int GetLocaleInfoW(LCID locale, LCTYPE item, WCHAR* buffer, int size);

}  // namespace brevik::platform

#endif
