#include "language/SelectedLocale.h"

#include "language/LangManager.h"

std::string LocaleOrSelected(const std::string& locale) {
    if (!locale.empty()) {
        return locale;
    }
    const LangManager languages;
    LANGID selected = 0;
    languages.GetLang(&selected, &FindInstalledLanguageOrNone);
    return languages.GetCodeFromLangId(selected);
}
