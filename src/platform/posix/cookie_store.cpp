#include "platform/cookie_store.h"

#include <cstring>
#include <ctime>
#include <limits>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>

#include "platform/posix/cookie_file.h"
#include "platform/posix/cookie_set_text.h"
#include "platform/posix/cookie_url.h"
#include "platform/posix/shared_text_file.h"

namespace brevik::platform {
namespace {

// What passes between the calls of a thread.
struct Conversation {
    std::string url;  // of the last read; empty when there is none
    std::string cookies;

    // Whether the thread was told the size alone so far. The call in which it brings the buffer
    // then answers from here: both see the store at one moment, and it is read once.
    bool awaitsBuffer = false;
    std::optional<std::string> writtenCookie;
};

// Made at a thread's first call. A call behind the end of the thread's own objects, such as one at
// the end of the process, makes another.
thread_local Conversation* conversation = nullptr;

struct ConversationEnd {
    ~ConversationEnd() { delete std::exchange(conversation, nullptr); }
};

Conversation& ThisConversation() {
    static thread_local ConversationEnd end;
    if (conversation == nullptr) {
        conversation = new Conversation;
    }
    return *conversation;
}

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

// The pairs of "a=1; b=2". No cookie that is told holds a ";".
std::unordered_set<std::string_view> SplitPairs(std::string_view cookies) {
    constexpr std::string_view kSeparator = "; ";
    std::unordered_set<std::string_view> pairs;
    while (!cookies.empty()) {
        const std::size_t end = std::min(cookies.find(';'), cookies.size());
        pairs.insert(cookies.substr(0, end));
        cookies.remove_prefix(std::min(end + kSeparator.size(), cookies.size()));
    }
    return pairs;
}

// Parts the pairs that the caller writes from those that it gives back as it was told them.
void MarkUses(const Conversation& told, CookieSetText* order) {
    const std::unordered_set<std::string_view> toldPairs = SplitPairs(told.cookies);
    bool hasWritten = false;
    for (CookiePair& pair : order->pairs) {
        const bool isPassedOn =
            pair.name != told.writtenCookie && toldPairs.contains(pair.name + '=' + pair.body);
        pair.use = isPassedOn ? CookiePairUse::kPassedOn : CookiePairUse::kWritten;
        hasWritten = hasWritten || !isPassedOn;
    }
    if (hasWritten) {
        return;
    }
    for (CookiePair& pair : order->pairs) {
        pair.use = CookiePairUse::kRepeated;
    }
}

}  // namespace

BOOL InternetGetCookieA(const char* url, const char*, char* buffer, DWORD* size) {
    if (url == nullptr || size == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    Conversation& told = ThisConversation();
    if (buffer == nullptr || !told.awaitsBuffer || told.url != url) {
        told = {};
        if (const DWORD error = FindCookies(url, &told.cookies); error != NO_ERROR) {
            return Fail(error);
        }
        told.url = url;
    }
    const std::size_t needed = told.cookies.size() + 1;
    if (needed > std::numeric_limits<DWORD>::max()) {
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    const bool fits = needed <= *size;
    *size = static_cast<DWORD>(needed);
    told.awaitsBuffer = buffer == nullptr || !fits;
    if (buffer != nullptr && fits) {
        std::memcpy(buffer, told.cookies.c_str(), needed);
    }
    return buffer == nullptr || fits ? TRUE : Fail(ERROR_INSUFFICIENT_BUFFER);
}

BOOL InternetSetCookieA(const char* url, const char* name, const char* data) {
    Conversation told = std::exchange(ThisConversation(), {});
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
    if (told.url == url && !told.awaitsBuffer) {
        MarkUses(told, &order);
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

void NameWrittenCookie(const char* name) {
    ThisConversation().writtenCookie = name;
}

}  // namespace brevik::platform
