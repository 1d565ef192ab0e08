#include "language/LangManager.h"

#include <algorithm>
#include <vector>

#include "language/LanguageLadder.h"
#include "text/StringConversions.h"
#include "trace/UTrace.h"

namespace {

struct Language {
    const char* longCode;
    const char* shortCode;
    LANGID langId;
};

constexpr std::array<Language, LangManager::kLanguageCount> kLanguages = {{
    {"ARA", "ar", 1025}, {"CHT", "cht", 1028},  {"CSY", "cz", 1029}, {"DAN", "da", 1030},
    {"DEU", "de", 1031}, {"ELL", "el", 1032},   {"ENU", "en", 1033}, {"FIN", "fi", 1035},
    {"FRA", "fr", 1036}, {"HEB", "he", 1037},   {"HUN", "hu", 1038}, {"ITA", "it", 1040},
    {"JPN", "ja", 1041}, {"KOR", "ko", 1042},   {"NLD", "nl", 1043}, {"NOR", "no", 1044},
    {"PLK", "pl", 1045}, {"PTB", "ptbr", 1046}, {"RUS", "ru", 1049}, {"SVE", "sv", 1053},
    {"TRK", "tr", 1055}, {"CHS", "chs", 2052},  {"PTG", "pt", 2070}, {"ESN", "es", 3082},
}};

}  // namespace

LangManager::LangManager() {
    for (std::size_t row = 0; row < kLanguageCount; ++row) {
        longCodes_[row] = kLanguages[row].longCode;
        shortCodes_[row] = kLanguages[row].shortCode;
        langIds_[row] = kLanguages[row].langId;
    }
}

LANGID LangManager::GetLangIdFromCode(const std::string& code) const {
    for (std::size_t row = 0; row < kLanguageCount; ++row) {
        if (CompareNoCase(code, longCodes_[row]) == 0) {
            return langIds_[row];
        }
    }
    return 0;
}

std::string LangManager::GetCodeFromLangId(LANGID langId) const {
    const auto row = std::find(langIds_.begin(), langIds_.end(), langId);
    return row != langIds_.end() ? longCodes_[static_cast<std::size_t>(row - langIds_.begin())]
                                 : std::string();
}

std::string LangManager::GetShortCodeFromLangId(LANGID langId) const {
    const auto row = std::find(langIds_.begin(), langIds_.end(), langId);
    return row != langIds_.end() ? shortCodes_[static_cast<std::size_t>(row - langIds_.begin())]
                                 : std::string();
}

std::uint32_t LangManager::GetLang(const LANGID* langIds, std::uint32_t count, LANGID* selected,
                                   InstalledLanguage find) {
    if (langIds == nullptr || count == 0) {
        UTrace::Info("No languages passed to LangManager::GetLang. Returning false.");
        return 1;
    }
    UTrace::Info("englishLang = MAKELANGID(LANG_ENGLISH, SUBLANG_DEFAULT) returned (%d).",
                 LanguageLadder::kEnglish);
    const LANGID installed = find();
    if (installed == 0) {
        UTrace::Error("MUI is disabled. But the installed lang can't be found!");
    }
    LanguageLadder ladder(installed);
    for (std::uint32_t i = 0; i < count; ++i) {
        UTrace::Info("LangIdList [%d]: %d", static_cast<int>(i), langIds[i]);
        ladder.Look(langIds[i]);
    }
    *selected = ladder.Climb(langIds[0]);
    UTrace::Info("Selected Lang = %d", *selected);
    return 0;
}

std::uint32_t LangManager::GetLang(const char* const* codes, std::uint32_t count, LANGID* selected,
                                   InstalledLanguage find) const {
    if (codes == nullptr || count == 0) {
        return 1;
    }
    std::vector<LANGID> langIds(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::string code = codes[i] != nullptr ? codes[i] : "";
        langIds[i] = GetLangIdFromCode(StringToUpper(code));
    }
    return GetLang(langIds.data(), count, selected, find);
}

std::uint32_t LangManager::GetLang(LANGID* selected, InstalledLanguage find) const {
    return GetLang(langIds_.data(), kLanguageCount, selected, find);
}
