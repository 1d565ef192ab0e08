#include "cookies/CookieValues.h"

#include "cookies/StorageManager.h"
#include "modules/ScopedText.h"
#include "text/StringConversions.h"
#include "trace/UTrace.h"

namespace CookieValues {
namespace {

constexpr std::int32_t kFailed = 1;

// Whether the text is the same after its way to the store and back. One with half a surrogate pair
// is not.
bool Survives(const WideString& text) {
    return Utf8ToWide(WideToUtf8(text)) == text;
}

}  // namespace

std::int32_t ReadOndrelValue(const WideString& key, WCHAR** value) {
    return ReadValue(NarrowToWide(kSuiteDomain), NarrowToWide(kSuiteCookie), key, value);
}

std::int32_t ReadValue(const WideString& domain, const WideString& cookie, const WideString& key,
                       WCHAR** value) {
    if (value == nullptr) {
        return kFailed;
    }
    Utf8String found;
    StorageManager manager;
    manager.SetDomain(WideToUtf8(domain));
    const std::int32_t result = manager.GetValue(WideToUtf8(cookie), WideToUtf8(key), found);
    WideString text = Utf8ToWide(found);
    text.resize(found.size());  // callers may count on a unit of the block for each byte
    WCHAR* const block = result != kFailed ? CLibraryUtils::MakeBlock(text) : nullptr;
    if (block == nullptr) {
        return kFailed;
    }
    *value = block;
    return result;
}

std::int32_t WriteOndrelValue(const WideString& key, const WideString& value) {
    return WriteValue(NarrowToWide(kSuiteDomain), NarrowToWide(kSuiteCookie), key, value);
}

std::int32_t WriteValue(const WideString& domain, const WideString& cookie, const WideString& key,
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

}  // namespace CookieValues
