// The rungs of a language selection: seven candidates, and which of them the caller's list holds.
//
// The operating system is never asked for a language: the candidates that would come from it are 0,
// and the installed language is the one that counts.
#pragma once

#include "platform/types.h"

class LanguageLadder {
  public:
    static constexpr LANGID kEnglish = MAKELANGID(LANG_ENGLISH, SUBLANG_DEFAULT);

    // `installed` is the language of the suite, 0 when none is known.
    explicit LanguageLadder(LANGID installed) : userDefaultLang_(installed) {}

    // Takes note of one language that the caller offers.
    void Look(LANGID entry);

    // The candidate of the first rung that was found in the list; on the last rung the list's first
    // entry.
    LANGID Climb(LANGID firstEntry) const;

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
