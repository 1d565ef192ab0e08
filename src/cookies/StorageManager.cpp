#include "cookies/StorageManager.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/component_model.h"
#include "platform/cookie_store.h"
#include "platform/never_destroyed.h"
#include "text/CriticalSection.h"
#include "trace/UTrace.h"

namespace {

constexpr std::int32_t kNotStored = 1;

// The domain that was set last. It reaches no cookie until one is set.
struct ProcessDomain {
    VelmarCriticalSection lock;
    std::string name = "unset.invalid";
};

ProcessDomain& TheProcessDomain() {
    static NeverDestroyed<ProcessDomain> domain;
    return *domain;
}

bool HasSign(const Utf8String& text, std::string_view signs) {
    return std::ranges::any_of(text, [signs](unsigned char byte) {
        return byte < 0x20 || byte == 0x7F || signs.find(static_cast<char>(byte)) != signs.npos;
    });
}

// Web clients would take a cookie of such a name for an attribute of another one.
bool IsAttributeName(Utf8String name) {
    constexpr const char* kNames[] = {"domain",   "path",     "expires",  "max-age",    "secure",
                                      "httponly", "samesite", "priority", "partitioned"};
    name.erase(name.find_last_not_of(' ') + 1);
    return std::ranges::any_of(
        kNames, [&name](const char* attribute) { return EqualNoCase(name, attribute); });
}

const char* Bytes(const Utf8String& text) {
    return reinterpret_cast<const char*>(text.c_str());
}

// The lock of the cookie store.
class StoreLock {
  public:
    StoreLock() : isHeld_(LockCookieStore() != FALSE) {}
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;
    ~StoreLock() {
        if (isHeld_) {
            UnlockCookieStore();
        }
    }

    bool IsHeld() const { return isHeld_; }

  private:
    bool isHeld_;
};

std::string StoreError(const char* doing, std::int64_t error) {
    return std::string(doing) + " the cookie store gives error " + std::to_string(error);
}

}  // namespace

StorageManager::StorageManager() : StorageManager(std::make_shared<StorageParser>()) {}

StorageManager::StorageManager(std::shared_ptr<StorageParser> parser) : parser_(std::move(parser)) {
    ProcessDomain& processDomain = TheProcessDomain();
    const VelmarAutoCriticalSection hold(&processDomain.lock);
    TakeDomain(processDomain.name);
}

std::int32_t StorageManager::SetDomain(const Utf8String& domain) {
    ProcessDomain& processDomain = TheProcessDomain();
    const VelmarAutoCriticalSection hold(&processDomain.lock);
    processDomain.name = Utf8ToNarrow(domain);
    TakeDomain(processDomain.name);
    return 0;
}

// REQUIRES: the lock of the process's domain.
void StorageManager::TakeDomain(const std::string& domain) {
    url_ = NarrowToUtf8("http://" + domain);
    domain_ = NarrowToUtf8(domain);
}

std::int32_t StorageManager::ReadCookie(const std::string& url, const std::string&) {
    constexpr std::size_t kUsualSize = 4096;
    parser_->Clear();
    std::vector<char> buffer(kUsualSize);
    auto size = static_cast<DWORD>(buffer.size());
    // Again while the store grows.
    while (!InternetGetCookieA(url.c_str(), nullptr, buffer.data(), &size)) {
        const DWORD error = GetLastError();
        if (error == ERROR_NO_MORE_ITEMS) {
            return 0;
        }
        if (error != ERROR_INSUFFICIENT_BUFFER) {
            return static_cast<std::int32_t>(error);
        }
        buffer.resize(std::max<std::size_t>(size, 2 * buffer.size()));
        size = static_cast<DWORD>(buffer.size());
    }
    const Utf8String received(reinterpret_cast<const unsigned char*>(buffer.data()));
    parser_->Parse(Utf8ToWide(received).c_str(), size);
    return 0;
}

std::int32_t StorageManager::GetValue(const Utf8String& name, const Utf8String& key,
                                      Utf8String& value) {
    try {
        const std::int32_t error = ReadCookie(Utf8ToNarrow(url_), Utf8ToNarrow(name));
        if (error != 0) {
            UTrace::Error("cookie value not read: %s", StoreError("reading", error).c_str());
        }
        parser_->FindValue(Utf8ToNarrow(name), Utf8ToNarrow(key), value);
        if (key.empty()) {
            // The body may hold an item "=value" all the same.
            value = NarrowToUtf8("-1");
        }
    } catch (const _com_error& error) {
        return error.Error();
    }
    return 0;
}

std::int32_t StorageManager::SetValue(const Utf8String& name, const Utf8String& key,
                                      const Utf8String& value) {
    try {
        std::string reason = ReasonToRefuse(name, key, value);
        if (reason.empty()) {
            reason = Store(name, key, value);
        }
        if (!reason.empty()) {
            UTrace::Error("cookie value not stored: %s", reason.c_str());
            return kNotStored;
        }
    } catch (const _com_error& error) {
        return error.Error();
    }
    return 0;
}

// Empty for a value whose parts are fit for the store.
std::string StorageManager::ReasonToRefuse(const Utf8String& name, const Utf8String& key,
                                           const Utf8String& value) const {
    constexpr std::string_view kSigns = "&;";
    if (key.empty() || value.empty()) {
        return "the key or the value is empty";
    }
    if (name.empty()) {
        return "the cookie has no name";
    }
    if (HasSign(name, kSigns) || HasSign(key, kSigns) || HasSign(value, kSigns)) {
        return "name, key or value hold '&', ';' or a control character";
    }
    if (HasSign(domain_, "&; ")) {
        return "the domain holds '&', ';', a blank or a control character";
    }
    return {};
}

// Empty once the value is in the store, else why it is not.
std::string StorageManager::Store(const Utf8String& name, const Utf8String& key,
                                  const Utf8String& value) {
    const std::string url = Utf8ToNarrow(url_);
    const StoreLock lock;
    if (!lock.IsHeld()) {
        return StoreError("locking", GetLastError());
    }
    if (const std::int32_t error = ReadCookie(url, Utf8ToNarrow(name)); error != 0) {
        return StoreError("reading", error);
    }
    if (parser_->EndedEarly()) {
        return "a cookie of the domain is too long to read on";
    }
    const Utf8String section = parser_->SectionOfWrite(name);
    if (IsAttributeName(section)) {
        return "the cookie bears the name of an attribute";
    }
    parser_->StoreValue(name, key, value);
    // Stores keep the first cookie of a text alone, and the others are not ours to write.
    parser_->KeepOnly(section);
    if (!parser_->ReadsBack(section, key, value)) {
        return "it would not read back as it was given";
    }
    const Utf8String text = parser_->Format(domain_);
    if (!InternetSetCookieA(url.c_str(), nullptr, Bytes(text))) {
        return StoreError("writing", GetLastError());
    }
    return {};
}
