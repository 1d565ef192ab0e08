#include "cookies/StorageManager.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/component_model.h"
#include "platform/cookie_store.h"
#include "text/CriticalSection.h"
#include "trace/UTrace.h"

namespace {

constexpr std::int32_t kNotStored = 1;

// The domain that was set last by anybody. It reaches no cookie until somebody sets one.
struct ProcessDomain {
    VelmarCriticalSection lock;
    std::string name = "unset.invalid";
};

ProcessDomain& TheProcessDomain() {
    static ProcessDomain& domain = *new ProcessDomain;  // a host may call while the process ends
    return domain;
}

bool HasSign(const Utf8String& text, std::string_view signs) {
    return std::ranges::any_of(text, [signs](unsigned char byte) {
        return byte < 0x20 || byte == 0x7F || signs.find(static_cast<char>(byte)) != signs.npos;
    });
}

const char* Bytes(const Utf8String& text) {
    return reinterpret_cast<const char*>(text.c_str());
}

}  // namespace

StorageManager::StorageManager() : StorageManager(std::make_shared<StorageParser>()) {}

StorageManager::StorageManager(std::shared_ptr<StorageParser> parser) : parser_(std::move(parser)) {
    ProcessDomain& processDomain = TheProcessDomain();
    const VelmarAutoCriticalSection hold(&processDomain.lock);
    TakeDomain(processDomain.name);
}

StorageManager::~StorageManager() = default;

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
    parser_->Clear();
    DWORD size = 0;
    if (!InternetGetCookieA(url.c_str(), nullptr, nullptr, &size) || size == 0) {
        return 0;
    }
    std::vector<char> buffer(std::size_t{size} + 1);
    // Should it fail, the buffer is the empty text.
    InternetGetCookieA(url.c_str(), nullptr, buffer.data(), &size);
    const Utf8String received(reinterpret_cast<const unsigned char*>(buffer.data()));
    const WideString text = Utf8ToWide(received);
    parser_->Parse(text.c_str(), size);
    if (WideToUtf8(text) != received) {
        parser_->LeaveOutIllFormed(received);
    }
    return 0;
}

std::int32_t StorageManager::GetValue(const Utf8String& name, const Utf8String& key,
                                      Utf8String& value) {
    try {
        ReadCookie(Utf8ToNarrow(url_), Utf8ToNarrow(name));
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
        const std::string url = Utf8ToNarrow(url_);
        ReadCookie(url, Utf8ToNarrow(name));
        const Utf8String section = parser_->SectionOfWrite(name);
        const char* reason = ReasonToRefuse(name, key, value);
        if (reason == nullptr) {
            parser_->StoreValue(name, key, value);
            if (!parser_->ReadsBack(section, key, value)) {
                reason = "it would not read back as it was given";
            }
        }
        if (reason != nullptr) {
            UTrace::Error("cookie value not stored: %s", reason);
            return kNotStored;
        }
        const Utf8String text = parser_->Format(domain_);
        NameWrittenCookie(Bytes(section));
        if (!InternetSetCookieA(url.c_str(), nullptr, Bytes(text))) {
            UTrace::Error("cookie value not stored: the store answers error %u",
                          static_cast<unsigned>(GetLastError()));
            return kNotStored;
        }
    } catch (const _com_error& error) {
        return error.Error();
    }
    return 0;
}

// Null for a value that may go to the store, as far as its parts tell.
const char* StorageManager::ReasonToRefuse(const Utf8String& name, const Utf8String& key,
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
    if (IsCookieAttributeName(Bytes(parser_->SectionOfWrite(name)))) {
        return "the cookie bears the name of an attribute";
    }
    if (parser_->EndedEarly()) {
        return "a cookie of the domain is too long to read on";
    }
    return nullptr;
}
