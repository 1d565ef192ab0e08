// Code pages, case of wide text, and whole texts between a code page and UTF-16.
#pragma once

#include <string>
#include <string_view>

#include "platform/errors.h"
#include "platform/types.h"

#ifdef _WIN32

#include <cwctype>

#else

namespace brevik::platform {

// The system's code page, the thread's, and UTF-8. Off Windows each of them is UTF-8.
inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_THREAD_ACP = 3;
inline constexpr UINT CP_UTF8 = 65001;

// Both return the number of units written, or, with a size of 0, the number needed; a negative
// length takes the source up to and including its NUL. Each maximal ill-formed part of the source
// becomes U+FFFD. 0 with ERROR_INSUFFICIENT_BUFFER when the target is too small.
//
// REQUIRES: no flags; no default character, since UTF-8 has room for every character.
PLATFORM_API int MultiByteToWideChar(UINT codePage, DWORD flags, const char* source, int length,
                                     WCHAR* target, int size);
PLATFORM_API int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* source, int length,
                                     char* target, int size, const char* defaultCharacter,
                                     BOOL* usedDefault);

// Case in place, one unit to one unit: the simple case pairs of Unicode. Nothing outside ASCII
// turns into an ASCII letter or the other way round. The number of units processed.
PLATFORM_API DWORD CharLowerBuffW(WCHAR* text, DWORD length);
PLATFORM_API DWORD CharUpperBuffW(WCHAR* text, DWORD length);

// The same on narrow text. Called on the Windows 9x family alone; off Windows ASCII letters change.
PLATFORM_API DWORD CharLowerBuffA(char* text, DWORD length);
PLATFORM_API DWORD CharUpperBuffA(char* text, DWORD length);

// Case of one ASCII letter; any other unit stays, as in the run-time library's own locale.
PLATFORM_API WCHAR towlower(WCHAR unit);
PLATFORM_API WCHAR towupper(WCHAR unit);

// Version of the system; the top bit marks the Windows 9x family.
PLATFORM_API DWORD GetVersion();

struct OSVERSIONINFOW;

struct OSVERSIONINFOEXW {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    WORD wServicePackMajor;
};

// The same with its service pack. REQUIRES: the structure is an OSVERSIONINFOEXW.
PLATFORM_API BOOL GetVersionExW(OSVERSIONINFOW* information);

}  // namespace brevik::platform

#endif

// NULs inside a text are part of it.
inline WideString WideFromCodePage(UINT codePage, std::string_view text) {
    if (text.empty()) {
        return {};  // the platform refuses a length of 0
    }
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(codePage, 0, text.data(), length, nullptr, 0);
    WideString wide(static_cast<std::size_t>(size), WCHAR{});
    MultiByteToWideChar(codePage, 0, text.data(), length, wide.data(), size);
    return wide;
}

// `Text` is a string of bytes of any type.
template <typename Text = std::string>
Text CodePageFromWide(UINT codePage, std::basic_string_view<WCHAR> wide) {
    if (wide.empty()) {
        return {};
    }
    const int length = static_cast<int>(wide.size());
    const int size =
        WideCharToMultiByte(codePage, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    Text text(static_cast<std::size_t>(size), typename Text::value_type{});
    WideCharToMultiByte(codePage, 0, wide.data(), length, reinterpret_cast<char*>(text.data()),
                        size, nullptr, nullptr);
    return text;
}
