#include "platform/cookie_store.h"

#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <utility>

#include "platform/posix/base/last_error.h"
#include "platform/posix/base/shared_text_file.h"
#include "platform/posix/cookies/cookie_file.h"

namespace brevik::platform {
namespace {

// Of the thread that called LockCookieStore, until it unlocks.
thread_local LockedTextFile* lockedStore = nullptr;

// Calls `use` with the store that this thread has locked, or with one that it has not.
template <typename Use>
DWORD UseStore(Use use) {
    return lockedStore != nullptr ? use(*lockedStore) : use(SharedTextFile(CookieFilePath()));
}

// NO_ERROR, or ERROR_NO_MORE_ITEMS without a cookie.
DWORD FindCookies(const char* url, std::string* cookies) {
    CookieUrl parts;
    if (const DWORD error = ParseCookieUrl(url, &parts); error != NO_ERROR) {
        return error;
    }
    std::string text;
    if (const DWORD error = UseStore([&](const auto& store) { return store.Read(&text); });
        error != NO_ERROR) {
        return error;
    }
    *cookies = CookieFile(text).CookiesFor(parts, std::time(nullptr));
    return cookies->empty() ? ERROR_NO_MORE_ITEMS : NO_ERROR;
}

}  // namespace

BOOL InternetGetCookieA(const char* url, const char*, char* buffer, DWORD* size) {
    if (url == nullptr || size == nullptr) {
        return Answer(ERROR_INVALID_PARAMETER);
    }
    std::string cookies;
    if (const DWORD error = FindCookies(url, &cookies); error != NO_ERROR) {
        return Answer(error);
    }
    const std::size_t needed = cookies.size() + 1;
    const bool fits = needed <= *size;
    *size = static_cast<DWORD>(needed);
    if (buffer != nullptr && fits) {
        std::memcpy(buffer, cookies.c_str(), needed);
    }
    return Answer(buffer == nullptr || fits ? NO_ERROR : ERROR_INSUFFICIENT_BUFFER);
}

BOOL InternetSetCookieA(const char* url, const char* name, const char* data) {
    if (url == nullptr || name != nullptr || data == nullptr) {
        return Answer(ERROR_INVALID_PARAMETER);
    }
    CookieUrl parts;
    CookieSetText order;
    DWORD error = ParseCookieUrl(url, &parts);
    error = error == NO_ERROR ? ParseCookieSetText(data, &order) : error;
    if (error != NO_ERROR) {
        return Fail(error);
    }
    const auto change = [&](std::string* text) {
        CookieFile file(*text);
        const DWORD stored = file.Store(parts, order, std::time(nullptr));
        *text = file.Text();
        return stored;
    };
    return Answer(UseStore([&](const auto& store) { return store.Update(change); }));
}

BOOL LockCookieStore() {
    auto locked = std::make_unique<LockedTextFile>();
    const DWORD error = locked->Lock(SharedTextFile(CookieFilePath()));
    if (error != NO_ERROR) {
        return Answer(error);
    }
    lockedStore = locked.release();
    return TRUE;
}

void UnlockCookieStore() {
    delete std::exchange(lockedStore, nullptr);
}

}  // namespace brevik::platform
