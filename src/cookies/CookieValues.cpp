#include "cookies/CookieValues.h"

#include <algorithm>

#include "cookies/StorageManager.h"
#include "platform/component_model.h"
#include "text/StringConversions.h"
#include "trace/UTrace.h"

namespace CookieValues {
namespace {

constexpr std::int32_t kFailed = 1;

std::int32_t Read(const Utf8String& domain, const Utf8String& cookie, const WideString& key,
                  WCHAR** value) {
    if (value == nullptr) {
        return kFailed;
    }
    Utf8String found;
    StorageManager manager;
    manager.SetDomain(domain);
    const std::int32_t result = manager.GetValue(cookie, WideToUtf8(key), found);
    if (result == kFailed) {
        return kFailed;
    }
    const WideString text = Utf8ToWide(found);
    auto* block = static_cast<WCHAR*>(CoTaskMemAlloc(2 * found.size() + 2));
    if (block == nullptr) {
        return kFailed;
    }
    std::copy_n(text.c_str(), text.size() + 1, block);
    *value = block;
    return result;
}

// Whether the text is the same after its way to the store and back. One with half a surrogate pair
// is not.
bool Survives(const WideString& text) {
    return Utf8ToWide(WideToUtf8(text)) == text;
}

std::int32_t Write(const WideString& domain, const WideString& cookie, const WideString& key,
                   const WideString& value) {
    if (!Survives(domain) || !Survives(cookie) || !Survives(key) || !Survives(value)) {
        UTrace::Error(
            "cookie value not stored: domain, name, key or value are no whole Unicode text");
        return kFailed;
    }
    StorageManager manager;
    manager.SetDomain(WideToUtf8(domain));
    return manager.SetValue(WideToUtf8(cookie), WideToUtf8(key), WideToUtf8(value));
}

}  // namespace

std::int32_t ReadOndrelValue(const WideString& key, WCHAR** value) {
    return Read(NarrowToUtf8(kSuiteDomain), NarrowToUtf8(kSuiteCookie), key, value);
}

std::int32_t ReadValue(const WideString& domain, const WideString& cookie, const WideString& key,
                       WCHAR** value) {
    return Read(WideToUtf8(domain), WideToUtf8(cookie), key, value);
}

std::int32_t WriteOndrelValue(const WideString& key, const WideString& value) {
    return Write(NarrowToWide(kSuiteDomain), NarrowToWide(kSuiteCookie), key, value);
}

std::int32_t WriteValue(const WideString& domain, const WideString& cookie, const WideString& key,
                        const WideString& value) {
    return Write(domain, cookie, key, value);
}

}  // namespace CookieValues
