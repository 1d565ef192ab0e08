#include "platform/cookie_store.h"

#include <cstring>
#include <ctime>
#include <limits>
#include <optional>
#include <string>

#include "platform/posix/cookie_file.h"
#include "platform/posix/cookie_set_text.h"
#include "platform/posix/cookie_url.h"
#include "platform/posix/shared_text_file.h"

namespace brevik::platform {
namespace {

// What a thread was told the size of, for the call in which it brings the buffer: both see the
// store at one moment, and it is read once.
struct PendingAnswer {
    std::string url;
    std::string cookies;
};
thread_local std::optional<PendingAnswer> pendingAnswer;

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

// NO_ERROR, or 259 without a cookie.
DWORD FindCookies(const char* url, std::string* cookies) {
    CookieUrl parts;
    if (const DWORD error = ParseCookieUrl(url, &parts); error != NO_ERROR) {
        return error;
    }
    const std::string path = CookieFilePath();
    if (path.empty()) {
        return ERROR_PATH_NOT_FOUND;
    }
    std::string text;
    if (const DWORD error = SharedTextFile(path).Read(&text); error != NO_ERROR) {
        return error;
    }
    *cookies = CookieFile(text).CookiesFor(parts, std::time(nullptr));
    return cookies->empty() ? ERROR_NO_MORE_ITEMS : NO_ERROR;
}

}  // namespace

BOOL InternetGetCookieA(const char* url, const char*, char* buffer, DWORD* size) {
    if (url == nullptr || size == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (buffer == nullptr || (pendingAnswer && pendingAnswer->url != url)) {
        pendingAnswer.reset();
    }
    PendingAnswer answer;
    if (pendingAnswer) {
        answer = *std::move(pendingAnswer);
        pendingAnswer.reset();
    } else if (const DWORD error = FindCookies(url, &answer.cookies); error != NO_ERROR) {
        return Fail(error);
    } else {
        answer.url = url;
    }
    const std::size_t needed = answer.cookies.size() + 1;
    if (needed > std::numeric_limits<DWORD>::max()) {
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    const bool fits = needed <= *size;
    *size = static_cast<DWORD>(needed);
    if (buffer != nullptr && fits) {
        std::memcpy(buffer, answer.cookies.c_str(), needed);
        return TRUE;
    }
    pendingAnswer = std::move(answer);
    return buffer == nullptr ? TRUE : Fail(ERROR_INSUFFICIENT_BUFFER);
}

BOOL InternetSetCookieA(const char* url, const char* name, const char* data) {
    pendingAnswer.reset();
    if (url == nullptr || data == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const std::int64_t now = std::time(nullptr);
    CookieUrl parts;
    if (const DWORD error = ParseCookieUrl(url, &parts); error != NO_ERROR) {
        return Fail(error);
    }
    CookieSetText order;
    if (const DWORD error = ParseCookieSetText(name, data, now, &order); error != NO_ERROR) {
        return Fail(error);
    }
    const std::string path = CookieFilePath();
    if (path.empty()) {
        return Fail(ERROR_PATH_NOT_FOUND);
    }
    const DWORD error = SharedTextFile(path).Update([&](std::string* text) {
        CookieFile file(*text);
        const DWORD result = file.Store(parts, order, now);
        *text = file.Text();
        return result;
    });
    return error == NO_ERROR ? TRUE : Fail(error);
}

}  // namespace brevik::platform
