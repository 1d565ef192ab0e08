// The languages of the suite: the table between identifiers and codes, and the choice of the
// language to run in.
//
// A plain value; each use makes its own. The lookups never fail: they give 0 or the empty string.
#pragma once

#include <cstdint>
#include <string>

#include "platform/types.h"

class LangManager {
  public:
    // The identifier of a long code such as "DEU", in either case; 0 when no row has it.
    LANGID GetLangIdFromCode(const std::string& code) const;

    // The long code and the short code of an identifier; empty when no row has it.
    std::string GetCodeFromLangId(LANGID langId) const;
    std::string GetShortCodeFromLangId(LANGID langId) const;

    // Chooses one of the languages offered, in this order: the installed language, 0, English
    // (1033), the first one. The order of the list plays no part otherwise. Writes it to `selected`
    // and gives 0; with no list, or an empty one, gives 1 and leaves `selected` as it was.
    //
    // The operating system is never asked for a language. Throws std::bad_alloc alone.
    static std::uint32_t GetLang(const LANGID* langIds, std::uint32_t count, LANGID* selected);

    // The same from narrow long codes; a null one counts as empty, and one that is not known stands
    // for the identifier 0.
    std::uint32_t GetLang(const char* const* codes, std::uint32_t count, LANGID* selected) const;

    // The same from all languages of the table.
    std::uint32_t GetLang(LANGID* selected) const;
};

// The locale given, or, where it is empty, the code of the language chosen from all of the table.
// Any thread; throws std::bad_alloc alone.
std::string LocaleOrSelected(const std::string& locale);
