#include "catalogue/queries/RegistryQueries.h"

#include <limits>
#include <string_view>
#include <utility>

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

const std::pair<std::string_view, HKEY> kRoots[] = {
    {"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
    {"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
    {"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
    {"HKEY_USERS", HKEY_USERS},
    {"HKEY_PERFORMANCE_DATA", HKEY_PERFORMANCE_DATA},
    {"HKEY_PERFORMANCE_TEXT", HKEY_PERFORMANCE_TEXT},
    {"HKEY_PERFORMANCE_NLSTEXT", HKEY_PERFORMANCE_NLSTEXT},
    {"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
    {"HKEY_DYN_DATA", HKEY_DYN_DATA},
};

}  // namespace

bool ReadProductLanguage(const Utf8String& guid, Utf8String* languageCode,
                         std::uint32_t* languageId) {
    const ScopedRegistryKey key(HKEY_LOCAL_MACHINE, CertificateSources::RegistryKeyOf(guid).c_str(),
                                KEY_QUERY_VALUE);
    const std::optional<WideString> language =
        key.IsOpen() ? key.ReadText(WIDE("Language")) : std::nullopt;
    if (!language) {
        return false;
    }
    *languageId = LeadingNumber(*language);
    *languageCode = CodeOf(*languageId);
    return true;
}

std::uint8_t SplitRegistryPath(const Utf8String& text, HKEY* root, Utf8String* subKey) {
    const std::size_t end = text.find('\\');
    *subKey = end == Utf8String::npos ? text : text.substr(end + 1);
    for (const auto& [name, handle] : kRoots) {
        if (BytesOf(text).substr(0, end) == name) {
            *root = handle;
            return 1;
        }
    }
    return 0;
}
