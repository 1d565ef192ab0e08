// Windows of other programs: finding one by its class, and sending it a block of data.
//
// Off Windows a window class is a socket of this user and this machine, which only this user can
// open; the trace viewer of brevikctl is its receiving end.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifndef _WIN32

namespace brevik::platform {

inline constexpr UINT WM_COPYDATA = 74;
inline constexpr UINT SMTO_BLOCK = 0x1;
inline constexpr UINT SMTO_ABORTIFHUNG = 0x2;

// What a WM_COPYDATA message points at.
struct COPYDATASTRUCT {
    ULONG_PTR dwData;
    DWORD cbData;
    void* lpData;
};

// The window of a class, or null. REQUIRES: a null title.
PLATFORM_API HWND FindWindowW(const WCHAR* windowClass, const WCHAR* title);

// Delivers a WM_COPYDATA message with a block, waiting at most `milliseconds` for a receiver that
// is busy. 0 with ERROR_INVALID_WINDOW_HANDLE when the window is gone, with ERROR_TIMEOUT when
// the time ran out, the window then being there still.
PLATFORM_API LRESULT SendMessageTimeoutW(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                         UINT flags, UINT milliseconds, DWORD_PTR* result);

}  // namespace brevik::platform

#endif
