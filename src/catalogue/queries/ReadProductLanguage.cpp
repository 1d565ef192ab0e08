#include "catalogue/queries/ReadProductLanguage.h"

#include <limits>

#include "catalogue/manager/CertificateSources.h"
#include "platform/locales.h"
#include "platform/text.h"
#include "registry/ScopedRegistryKey.h"

namespace {

// A number that is too great for its type counts as the greatest there is.
std::uint32_t LeadingNumber(const WideString& text) {
    std::uint64_t number = 0;
    const std::size_t blanks = text.find_first_not_of(WIDE(" \t\n\v\f\r"));
    for (std::size_t i = blanks; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        number = 10 * number + static_cast<std::uint64_t>(text[i] - '0');
        if (number > std::numeric_limits<std::uint32_t>::max()) {
            return std::numeric_limits<std::uint32_t>::max();
        }
    }
    return static_cast<std::uint32_t>(number);
}

// Empty for a language that the system does not know.
Utf8String CodeOf(std::uint32_t languageId) {
    constexpr int kCapacity = 260;
    WCHAR code[kCapacity] = {};
    GetLocaleInfoW(languageId, LOCALE_SABBREVLANGNAME, code, kCapacity);
    CharLowerBuffW(code, kCapacity);
    return WideToUtf8(code);
}

}  // namespace

bool ReadProductLanguage(const Utf8String& guid, Utf8String* languageCode,
                         std::uint32_t* languageId) {
    const ScopedRegistryKey key(HKEY_LOCAL_MACHINE, CertificateSources::RegistryKeyOf(guid).c_str(),
                                KEY_QUERY_VALUE);
    if (!key.IsOpen()) {
        return false;
    }
    const std::optional<WideString> language = key.ReadText(WIDE("Language"));
    if (!language) {
        return false;
    }
    *languageId = LeadingNumber(*language);
    *languageCode = CodeOf(*languageId);
    return true;
}
