// The cookie store of the user's web clients.
//
// Off Windows it is the file users/LOGIN/cookies.txt of the machine, in the Netscape form.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifndef _WIN32

namespace brevik::platform {

// All cookies that a web client would send to the URL, "a=1; b=2" in the order of their last
// storing, those marked HttpOnly left out. With a null buffer only `size` is set, to the bytes
// needed with the NUL, and the thread's next call for the same URL answers from the same state of
// the store. False with error 259 without a cookie, 122 when the buffer is too small, 87 for an
// empty URL or one without a host, 12006 for one without a scheme. `name` is not looked at.
PLATFORM_API BOOL InternetGetCookieA(const char* url, const char* name, char* buffer, DWORD* size);

// Stores every `name=body` pair ahead of the attributes (domain, path, expires, max-age, secure,
// httponly, samesite). A pair whose body has not changed keeps its own domain, path, secure mark
// and session nature. A date in the past removes. All pairs are stored or none: false with error 87
// when the domain does not cover the URL's host, 5 when a cookie is one that the URL may not
// overwrite. With a `name` that is not null, `data` is the body and attributes of this one cookie.
PLATFORM_API BOOL InternetSetCookieA(const char* url, const char* name, const char* data);

}  // namespace brevik::platform

#endif
