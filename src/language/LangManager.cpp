#include "language/LangManager.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "language/InstalledLanguage.h"
#include "text/StringConversions.h"
#include "trace/UTrace.h"

namespace {

struct Language {
    const char* longCode;
    const char* shortCode;
    LANGID langId;
};

constexpr Language kLanguages[] = {
    {"ARA", "ar", 1025}, {"CHT", "cht", 1028},  {"CSY", "cz", 1029}, {"DAN", "da", 1030},
    {"DEU", "de", 1031}, {"ELL", "el", 1032},   {"ENU", "en", 1033}, {"FIN", "fi", 1035},
    {"FRA", "fr", 1036}, {"HEB", "he", 1037},   {"HUN", "hu", 1038}, {"ITA", "it", 1040},
    {"JPN", "ja", 1041}, {"KOR", "ko", 1042},   {"NLD", "nl", 1043}, {"NOR", "no", 1044},
    {"PLK", "pl", 1045}, {"PTB", "ptbr", 1046}, {"RUS", "ru", 1049}, {"SVE", "sv", 1053},
    {"TRK", "tr", 1055}, {"CHS", "chs", 2052},  {"PTG", "pt", 2070}, {"ESN", "es", 3082},
};

const Language* FindLanguage(LANGID langId) {
    const auto* const row = std::ranges::find(kLanguages, langId, &Language::langId);
    return row != std::end(kLanguages) ? row : nullptr;
}

constexpr LANGID kEnglish = MAKELANGID(LANG_ENGLISH, SUBLANG_DEFAULT);

// Whether an entry is of the same primary language as the neutral candidate. The default
// sublanguage sets a bit that the candidate lacks, so none ever is: a language that merely shares
// its primary language with the installed one is not taken in its place.
bool IsSiblingOfNeutral(LANGID entry) {
    return MAKELANGID(PRIMARYLANGID(entry), SUBLANG_DEFAULT) == 0;
}

// The rungs of a selection: seven candidates, and which of them the list that is offered holds.
class LanguageLadder {
  public:
    // `installed` is the language of the suite, 0 when none is known.
    explicit LanguageLadder(LANGID installed) : userDefaultLang_(installed) {}

    void Look(LANGID entry) {
        if (entry == userDefaultLang_) {
            userDefaultFound_ = true;
            UTrace::Info("Found userDefaultLang installed (%d).", entry);
        }
        if (entry == kNeutralLang) {
            userNeutralFound_ = true;
            UTrace::Info("Found userNeutralLang installed (%d).", entry);
        }
        if (!userSiblingFound_ && IsSiblingOfNeutral(entry)) {
            userSiblingLang_ = entry;
            userSiblingFound_ = true;
            UTrace::Info("Found userSiblingLang installed (%d).", entry);
        }
        if (entry == kNeutralLang) {
            systemDefaultFound_ = true;
            UTrace::Info("Found systemDefaultLang installed (%d).", entry);
            systemNeutralFound_ = true;
            UTrace::Info("Found systemNeutralLang installed (%d).", entry);
        }
        if (!systemSiblingFound_ && IsSiblingOfNeutral(entry)) {
            systemSiblingLang_ = entry;
            systemSiblingFound_ = true;
            UTrace::Info("Found systemSiblingLang installed (%d).", entry);
        }
        if (entry == kEnglish) {
            englishFound_ = true;
            UTrace::Info("Found English installed (%d).", entry);
        }
    }

    // The candidate of the first rung that was found; on the last rung the list's first entry.
    LANGID Climb(LANGID firstEntry) const {
        const struct {
            bool found;
            LANGID language;
        } rungs[] = {
            {userDefaultFound_, userDefaultLang_}, {userNeutralFound_, kNeutralLang},
            {userSiblingFound_, userSiblingLang_}, {systemDefaultFound_, kNeutralLang},
            {systemNeutralFound_, kNeutralLang},   {systemSiblingFound_, systemSiblingLang_},
        };
        for (const auto& rung : rungs) {
            if (rung.found) {
                return rung.language;
            }
        }
        if (englishFound_) {
            UTrace::Info("Unable to find a suitable language installed. Defaulting to ENU (%d).",
                         kEnglish);
            return kEnglish;
        }
        UTrace::Info(
            "Unable to find a suitable language or English installed. Defaulting to first language "
            "found (%d).",
            firstEntry);
        return firstEntry;
    }

  private:
    static constexpr LANGID kNeutralLang = 0;  // user and system neutral, and system default

    LANGID userDefaultLang_;
    LANGID userSiblingLang_ = 0;
    LANGID systemSiblingLang_ = 0;
    bool userDefaultFound_ = false;
    bool userNeutralFound_ = false;
    bool userSiblingFound_ = false;
    bool systemDefaultFound_ = false;
    bool systemNeutralFound_ = false;
    bool systemSiblingFound_ = false;
    bool englishFound_ = false;
};

}  // namespace

LANGID LangManager::GetLangIdFromCode(const std::string& code) const {
    const auto* const row = std::ranges::find_if(
        kLanguages, [&](const Language& language) { return EqualNoCase(code, language.longCode); });
    return row != std::end(kLanguages) ? row->langId : LANGID{0};
}

std::string LangManager::GetCodeFromLangId(LANGID langId) const {
    const Language* const row = FindLanguage(langId);
    return row != nullptr ? row->longCode : "";
}

std::string LangManager::GetShortCodeFromLangId(LANGID langId) const {
    const Language* const row = FindLanguage(langId);
    return row != nullptr ? row->shortCode : "";
}

std::uint32_t LangManager::GetLang(const LANGID* langIds, std::uint32_t count, LANGID* selected) {
    if (langIds == nullptr || count == 0) {
        UTrace::Info("No languages passed to LangManager::GetLang. Returning false.");
        return 1;
    }
    UTrace::Info("englishLang = MAKELANGID(LANG_ENGLISH, SUBLANG_DEFAULT) returned (%d).",
                 kEnglish);
    const LANGID installed = FindInstalledLanguageOrNone();
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

std::uint32_t LangManager::GetLang(const char* const* codes, std::uint32_t count,
                                   LANGID* selected) const {
    if (codes == nullptr || count == 0) {
        return 1;
    }
    std::vector<LANGID> langIds(count);
    std::transform(codes, codes + count, langIds.begin(), [this](const char* code) {
        return GetLangIdFromCode(StringToUpper(std::string(code != nullptr ? code : "")));
    });
    return GetLang(langIds.data(), count, selected);
}

std::uint32_t LangManager::GetLang(LANGID* selected) const {
    LANGID langIds[std::size(kLanguages)];
    std::ranges::transform(kLanguages, langIds, &Language::langId);
    return GetLang(langIds, static_cast<std::uint32_t>(std::size(langIds)), selected);
}

std::string LocaleOrSelected(const std::string& locale) {
    if (!locale.empty()) {
        return locale;
    }
    const LangManager languages;
    LANGID selected = 0;
    languages.GetLang(&selected);
    return languages.GetCodeFromLangId(selected);
}
