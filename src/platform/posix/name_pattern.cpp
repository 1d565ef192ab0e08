#include "platform/posix/name_pattern.h"

#include <algorithm>
#include <vector>

#include "platform/text.h"

namespace brevik::platform {
namespace {

// Signs that no name can hold. A star that ends in front of the last dot, a unit that may be
// missing in front of a dot and at the end, and a dot that may be missing at the end.
constexpr char16_t kStarUpToLastDot = u'<';
constexpr char16_t kUnitOrNone = u'>';
constexpr char16_t kDotOrEnd = u'"';

// The places of a pattern that the units of a name read so far lead to.
using Places = std::vector<bool>;

}  // namespace

bool NamePattern::IsValid(std::u16string_view text) {
    constexpr std::u16string_view kForbidden = u"\"<>|:/\\";
    return std::none_of(text.begin(), text.end(), [=](char16_t unit) {
        return unit < 0x20 || kForbidden.find(unit) != kForbidden.npos;
    });
}

NamePattern::NamePattern(std::u16string_view text) : text_(text == u"*.*" ? u"*" : text) {
    for (std::size_t index = 0; index < text_.size(); ++index) {
        const char16_t next = index + 1 < text_.size() ? text_[index + 1] : u'\0';
        char16_t& unit = text_[index];
        if (unit == u'?') {
            unit = kUnitOrNone;
        } else if (unit == u'.' && (next == u'?' || next == u'*')) {
            unit = kDotOrEnd;
        } else if (unit == u'*' && next == u'.') {
            unit = kStarUpToLastDot;
        } else {
            unit = towupper(unit);
        }
    }
    // A dot at the end of a name falls off, but says what the star in front of it means.
    if (text_.ends_with(u"<.")) {
        text_.pop_back();
    }
}

bool NamePattern::MatchesFolderItself() const {
    constexpr char16_t kWild[] = {u'*', kStarUpToLastDot, u'\0'};
    return text_.find_first_not_of(kWild) == text_.npos || Matches(u".");
}

bool NamePattern::Matches(std::u16string_view name) const {
    if (MatchesEveryName()) {
        return true;
    }
    const std::size_t lastDot = name.find_last_of(u'.');
    Places places(text_.size() + 1);
    places[0] = true;
    for (std::size_t index = 0; index <= name.size(); ++index) {
        const bool atEnd = index == name.size();
        const char16_t unit = atEnd ? u'\0' : towupper(name[index]);
        Places next(text_.size() + 1);
        for (std::size_t place = 0; place < text_.size(); ++place) {
            if (!places[place]) {
                continue;
            }
            const char16_t sign = text_[place];
            const bool star = sign == u'*' || sign == kStarUpToLastDot;
            // What takes no unit.
            if (star || (sign == kUnitOrNone && (atEnd || unit == u'.')) ||
                (sign == kDotOrEnd && atEnd)) {
                places[place + 1] = true;
            }
            if (atEnd) {
                continue;
            }
            // What takes this one.
            if (sign == u'*' || (sign == kStarUpToLastDot && index != lastDot)) {
                next[place] = true;
            } else if (sign == unit || (sign == kUnitOrNone && unit != u'.') ||
                       (sign == kDotOrEnd && unit == u'.')) {
                next[place + 1] = true;
            }
        }
        if (atEnd) {
            break;
        }
        places = std::move(next);
    }
    return places[text_.size()];
}

}  // namespace brevik::platform
