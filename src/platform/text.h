// Code pages, and case of wide text.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifdef _WIN32

#include <cwctype>

#else

namespace brevik::platform {

// The narrow code page; off Windows UTF-8.
inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_THREAD_ACP = 3;
inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 0x8;
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x80;

// Both give the number of units written, or, with a size of 0, the number needed; a negative length
// takes the source up to and with its NUL. Ill-formed input comes out as U+FFFD, one for each
// maximal ill-formed part, or, with the flag, fails with error 1113. 0 with error 122 when the
// target is too small, with error 1004 for other flags, with error 87 for other arguments or a code
// page that are not known; UTF-8 knows no default character, so the last two of WideCharToMultiByte
// have to be null.
PLATFORM_API int MultiByteToWideChar(UINT codePage, DWORD flags, const char* source, int length,
                                     WCHAR* target, int size);
PLATFORM_API int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* source, int length,
                                     char* target, int size, const char* defaultCharacter,
                                     BOOL* usedDefault);

// Case in place, one unit to one unit: the simple case pairs of Unicode. Nothing outside ASCII
// turns into an ASCII letter or the other way round. Result: the number of units processed.
PLATFORM_API DWORD CharLowerBuffW(WCHAR* text, DWORD length);
PLATFORM_API DWORD CharUpperBuffW(WCHAR* text, DWORD length);

// The same on narrow text. A letter whose other case has another length stays as it is.
PLATFORM_API DWORD CharLowerBuffA(char* text, DWORD length);
PLATFORM_API DWORD CharUpperBuffA(char* text, DWORD length);

// Case of one unit, by the same pairs.
PLATFORM_API WCHAR towlower(WCHAR unit);
PLATFORM_API WCHAR towupper(WCHAR unit);

// Version of the system; the top bit marks the Windows 9x family.
PLATFORM_API DWORD GetVersion();

struct OSVERSIONINFOW {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    WCHAR szCSDVersion[128];
};

struct OSVERSIONINFOEXW {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    WCHAR szCSDVersion[128];
    WORD wServicePackMajor;
    WORD wServicePackMinor;
    WORD wSuiteMask;
    BYTE wProductType;
    BYTE wReserved;
};

// The same in more words, into either structure by its dwOSVersionInfoSize. False with error 122
// for another size.
PLATFORM_API BOOL GetVersionExW(OSVERSIONINFOW* information);

}  // namespace brevik::platform

#endif
