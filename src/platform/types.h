// Basic types of the operating system, under its own names.
//
// On Windows they are the system's. Elsewhere they live in brevik::platform, which every seam
// header opens, so that no symbol of ours can meet one of the same plain name in the host.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
// clang-format off
#include <windows.h>
#include <ole2.h>
// clang-format on

// The system's headers rename these to a wide or narrow form; the library uses the plain words.
#undef CopyFile
#undef CreateDirectory
#undef CreateFile
#undef DeleteFile
#undef FindFirstFile
#undef FindNextFile
#undef GetFreeSpace
#undef GetMessage
#undef MoveFile
#undef RemoveDirectory
#undef Yield

#define WIDE(text) L##text
#define PLATFORM_API

#else

#define WIDE(text) u##text
#define PLATFORM_API __attribute__((visibility("default")))
#define STDMETHODCALLTYPE
#define WINAPI

namespace brevik::platform {

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using BOOL = int;
using INT = int;
using UINT = unsigned int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;

// One unit of UTF-16.
using WCHAR = char16_t;

using HRESULT = LONG;
using LANGID = WORD;
using LCID = DWORD;

using HANDLE = void*;
using HMODULE = struct ModuleHandle*;
using HWND = struct WindowHandle*;
using HLOCAL = void*;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;

union LARGE_INTEGER {
    LONGLONG QuadPart;
};

inline constexpr DWORD MAX_PATH = 260;

inline constexpr WORD LANG_NEUTRAL = 0x00;
inline constexpr WORD LANG_ENGLISH = 0x09;
inline constexpr WORD SUBLANG_DEFAULT = 0x01;

// A LANGID holds the primary language in its low 10 bits and the sublanguage in its high 6 bits.
constexpr LANGID MAKELANGID(WORD primary, WORD sublanguage) {
    return static_cast<LANGID>((static_cast<unsigned>(sublanguage) << 10) | primary);
}
constexpr WORD PRIMARYLANGID(LANGID id) {
    return static_cast<WORD>(id & 0x03FF);
}

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];

    friend constexpr bool operator==(const GUID&, const GUID&) = default;
};
using IID = GUID;
using CLSID = GUID;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

}  // namespace brevik::platform

using namespace brevik::platform;

#endif

// UTF-16 text, the kind that every wide operation of the platform takes.
using WideString = std::basic_string<WCHAR>;

// Has the compiler check a printf-like function: the places of the format argument and of the first
// argument after it, from 1, `this` counted.
#if defined(__MINGW32__) && !defined(__clang__)
#define PRINTF_CHECKED(format_place, first_place) \
    __attribute__((__format__(__gnu_printf__, format_place, first_place)))
#elif defined(__GNUC__)
#define PRINTF_CHECKED(format_place, first_place) \
    __attribute__((__format__(__printf__, format_place, first_place)))
#else
#define PRINTF_CHECKED(format_place, first_place)
#endif

// For a function that calls objects of other libraries: these know their interfaces by names of
// their own, while the undefined behaviour sanitizer looks for ours.
#if defined(__GNUC__)
#define CALLS_FOREIGN_OBJECTS __attribute__((no_sanitize("vptr")))
#else
#define CALLS_FOREIGN_OBJECTS
#endif
