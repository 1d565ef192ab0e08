// Values in web cookies for the library's callers: wide text outside, UTF-8 inside.
//
// A value is named by the domain (a host name without a scheme), the cookie, and the key inside the
// cookie. Any thread; nothing is kept between calls. With a result of 1 nothing was handed out or
// stored; another one that is not 0 is the HRESULT of a component-model failure.
#pragma once

#include <cstdint>

#include "platform/types.h"

namespace CookieValues {

// The web domain of the suite, and the cookie there that holds its own values.
inline constexpr const char* kSuiteDomain = "www.ondrel.example";
inline constexpr const char* kSuiteCookie = "qdr_cookie";

// Hands out the value, or "-1" where there is none, in a block that the caller frees with
// CoTaskMemFree. With a result of 1 `value` is as it was.
std::int32_t ReadOndrelValue(const WideString& key, WCHAR** value);
std::int32_t ReadValue(const WideString& domain, const WideString& cookie, const WideString& key,
                       WCHAR** value);

// Stores a value and moves the expiry of its cookie half a year ahead. A text that would not read
// back as it was given is refused with 1.
std::int32_t WriteOndrelValue(const WideString& key, const WideString& value);
std::int32_t WriteValue(const WideString& domain, const WideString& cookie, const WideString& key,
                        const WideString& value);

}  // namespace CookieValues
