// Facts about a language.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifndef _WIN32

namespace brevik::platform {

using LCTYPE = DWORD;

inline constexpr LCTYPE LOCALE_SABBREVLANGNAME = 3;
inline constexpr WORD SORT_DEFAULT = 0;

constexpr LCID MAKELCID(WORD language, WORD sort) {
    return LCID{sort} << 16 | language;
}

// An item about the language of a locale; the one item known is the abbreviation, such as "DEU".
// Result: the units written with the NUL, or, with a size of 0, the size needed. 0 with error 87
// for an unknown language, 1004 for another item, 122 when the buffer is too small.
PLATFORM_API int GetLocaleInfoW(LCID locale, LCTYPE item, WCHAR* buffer, int size);

}  // namespace brevik::platform

#endif
