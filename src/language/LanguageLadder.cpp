#include "language/LanguageLadder.h"

#include "trace/UTrace.h"

namespace {

// Whether an entry is of the same primary language as the neutral candidate. The default
// sublanguage sets a bit that the candidate lacks, so none ever is: a language that merely shares
// its primary language with the installed one is not taken in its place.
bool IsSiblingOfNeutral(LANGID entry) {
    return MAKELANGID(PRIMARYLANGID(entry), SUBLANG_DEFAULT) == 0;
}

}  // namespace

void LanguageLadder::Look(LANGID entry) {
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

LANGID LanguageLadder::Climb(LANGID firstEntry) const {
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
