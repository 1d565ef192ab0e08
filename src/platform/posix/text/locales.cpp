#include "platform/locales.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "platform/posix/base/last_error.h"

namespace brevik::platform {
namespace {

struct Language {
    LANGID id;
    std::u16string_view abbreviation;
};

constexpr Language kLanguages[] = {
    {1025, u"ARA"}, {1026, u"BGR"}, {1027, u"CAT"}, {1028, u"CHT"}, {1029, u"CSY"}, {1030, u"DAN"},
    {1031, u"DEU"}, {1032, u"ELL"}, {1033, u"ENU"}, {1034, u"ESP"}, {1035, u"FIN"}, {1036, u"FRA"},
    {1037, u"HEB"}, {1038, u"HUN"}, {1039, u"ISL"}, {1040, u"ITA"}, {1041, u"JPN"}, {1042, u"KOR"},
    {1043, u"NLD"}, {1044, u"NOR"}, {1045, u"PLK"}, {1046, u"PTB"}, {1047, u"RMC"}, {1048, u"ROM"},
    {1049, u"RUS"}, {1050, u"HRV"}, {1051, u"SKY"}, {1052, u"SQI"}, {1053, u"SVE"}, {1054, u"THA"},
    {1055, u"TRK"}, {1057, u"IND"}, {1058, u"UKR"}, {1060, u"SLV"}, {1061, u"ETI"}, {1062, u"LVI"},
    {1063, u"LTH"}, {1066, u"VIT"}, {1069, u"EUQ"}, {1110, u"GLC"}, {2052, u"CHS"}, {2055, u"DES"},
    {2057, u"ENG"}, {2058, u"ESM"}, {2060, u"FRB"}, {2064, u"ITS"}, {2067, u"NLB"}, {2068, u"NON"},
    {2070, u"PTG"}, {2077, u"SVF"}, {3076, u"ZHH"}, {3079, u"DEA"}, {3081, u"ENA"}, {3082, u"ESN"},
    {3084, u"FRC"}, {4100, u"ZHI"}, {4105, u"ENC"}, {4108, u"FRS"},
};

// The language of a host that names none.
constexpr LANGID kEnglish = MAKELANGID(LANG_ENGLISH, SUBLANG_DEFAULT);

const Language* FindLanguage(LCID locale) {
    LANGID id = static_cast<LANGID>(locale);
    const bool isDefault = locale <= 0xFFFF && PRIMARYLANGID(id) == LANG_NEUTRAL;
    if (isDefault) {
        id = kEnglish;
    } else if (id == PRIMARYLANGID(id)) {
        id = MAKELANGID(id, SUBLANG_DEFAULT);
    }
    const auto found = std::find_if(std::begin(kLanguages), std::end(kLanguages),
                                    [=](const Language& language) { return language.id == id; });
    return found == std::end(kLanguages) ? nullptr : found;
}

}  // namespace

int GetLocaleInfoW(LCID locale, LCTYPE item, WCHAR* buffer, int size) {
    if (item != LOCALE_SABBREVLANGNAME) {
        return Fail(ERROR_INVALID_FLAGS);
    }
    const Language* language = FindLanguage(locale);
    if (language == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const int needed = static_cast<int>(language->abbreviation.size()) + 1;
    if (size < needed) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    *std::copy(language->abbreviation.begin(), language->abbreviation.end(), buffer) = u'\0';
    return needed;
}

}  // namespace brevik::platform
