// The languages of the suite: the table between identifiers and codes, and the choice of the
// language to run in.
//
// A plain value; each use makes its own. The lookups never fail: they give 0 or the empty string.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "language/InstalledLanguage.h"
#include "platform/types.h"

class LangManager {
  public:
    static constexpr std::size_t kLanguageCount = 24;

    // Gives the installed language, 0 for none. What it throws passes through GetLang.
    using InstalledLanguage = LANGID (*)();

    LangManager();

    // The identifier of a long code such as "DEU", in either case; 0 when no row has it.
    LANGID GetLangIdFromCode(const std::string& code) const;

    // The long code and the short code of an identifier; empty when no row has it.
    std::string GetCodeFromLangId(LANGID langId) const;
    std::string GetShortCodeFromLangId(LANGID langId) const;

    // Chooses one of the languages offered, in this order: the installed language, 0, English
    // (1033), the first one. The order of the list plays no part otherwise. Writes it to `selected`
    // and gives 0; with no list, or an empty one, gives 1 and leaves `selected` as it was.
    static std::uint32_t GetLang(const LANGID* langIds, std::uint32_t count, LANGID* selected,
                                 InstalledLanguage find = &FindInstalledLanguage);

    // The same from narrow long codes; a null one counts as empty, and one that is not known stands
    // for the identifier 0.
    std::uint32_t GetLang(const char* const* codes, std::uint32_t count, LANGID* selected,
                          InstalledLanguage find = &FindInstalledLanguage) const;

    // The same from all languages of the table.
    std::uint32_t GetLang(LANGID* selected, InstalledLanguage find = &FindInstalledLanguage) const;

  private:
    // Three parallel arrays in ascending order of the identifier.
    std::array<std::string, kLanguageCount> longCodes_;
    std::array<std::string, kLanguageCount> shortCodes_;
    std::array<LANGID, kLanguageCount> langIds_;
};
