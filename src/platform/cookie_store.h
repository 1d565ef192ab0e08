// The cookie store of the user's web clients, and the lock of those who change it.
//
// Off Windows it is the file users/LOGIN/cookies.txt of the machine, in the Netscape form.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifdef _WIN32

// One for the user's session. A process that ended while it held the mutex left a whole store.
inline HANDLE CookieStoreMutex() {
    static const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Local\\brevikconfig cookie store");
    return mutex;
}

inline BOOL LockCookieStore() {
    constexpr DWORD kPatience = 60000;
    const DWORD answer = WaitForSingleObject(CookieStoreMutex(), kPatience);
    if (answer == WAIT_TIMEOUT) {
        SetLastError(ERROR_SHARING_VIOLATION);
    }
    return answer == WAIT_OBJECT_0 || answer == WAIT_ABANDONED;
}

inline void UnlockCookieStore() {
    ReleaseMutex(CookieStoreMutex());
}

#else

namespace brevik::platform {

// All cookies that a web client would send to the URL, "a=1; b=2" in the order of their last
// storing, those marked HttpOnly or secure left out: the URL has to begin with "http://". `size` is
// set to the bytes needed with the NUL; with a null buffer that is all. False with
// ERROR_NO_MORE_ITEMS without a cookie, ERROR_INSUFFICIENT_BUFFER when the buffer is too small,
// ERROR_INVALID_PARAMETER for an empty URL or one without a host,
// ERROR_INTERNET_UNRECOGNIZED_SCHEME for one with another scheme, and others where the store cannot
// be read. `name` is not looked at.
PLATFORM_API BOOL InternetGetCookieA(const char* url, const char* name, char* buffer, DWORD* size);

// Stores the cookie `name=body`, which the attributes domain and expires may follow, in place of
// the one with its name and domain. A date in the past removes that one. False, with nothing
// stored, with ERROR_INVALID_PARAMETER when the domain does not cover the URL's host,
// ERROR_ACCESS_DENIED when the cookie there is marked HttpOnly or secure, ERROR_SHARING_VIOLATION
// when other writers hold the store, and others where it cannot be written. REQUIRES: a null
// `name`.
PLATFORM_API BOOL InternetSetCookieA(const char* url, const char* name, const char* data);

// Keeps all other writers of the user's cookies who ask for this lock waiting, threads and
// processes, until UnlockCookieStore: what the thread reads in between is what it changes. False
// with ERROR_SHARING_VIOLATION when one of them stands still, and with others where the store
// cannot be written. REQUIRES: the thread does not hold it.
PLATFORM_API BOOL LockCookieStore();
PLATFORM_API void UnlockCookieStore();

}  // namespace brevik::platform

#endif
