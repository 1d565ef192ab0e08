#include "cookies/StorageParser.h"

#include <algorithm>
#include <utility>

#include "cookies/CookieEncryptor.h"

namespace {

using Utf8View = std::basic_string_view<unsigned char>;

// Steps through the text were always held in 16 bits.
constexpr std::size_t kLongestStep = 32767;

constexpr bool IsSpace(unsigned char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

Utf8View WithoutLeadingSpace(Utf8View text) {
    return Utf8View(std::find_if_not(text.begin(), text.end(), IsSpace), text.end());
}

// Cuts the first cookie from a text, its ";" included.
Utf8View CutCookie(Utf8View* text) {
    const std::size_t end = std::min(text->find(';'), text->size() - 1);
    const Utf8View cookie = text->substr(0, end + 1);
    text->remove_prefix(cookie.size());
    return cookie;
}

// Cuts the first item and its separator from the rest of a cookie.
Utf8View CutItem(Utf8View* rest) {
    static constexpr unsigned char kSigns[] = {'&', ';'};
    const std::size_t end = std::min(rest->find_first_of(kSigns, 0, 2), rest->size());
    const Utf8View item = rest->substr(0, end);
    rest->remove_prefix(std::min(end + 1, rest->size()));
    return item;
}

}  // namespace

void StorageParser::Parse(const WCHAR* text, [[maybe_unused]] std::uint32_t size) {
    const Utf8String bytes = text == nullptr ? Utf8String() : WideToUtf8(text);
    for (Utf8View rest = bytes; !rest.empty();) {
        const Utf8View cookie = CutCookie(&rest);
        const std::size_t step = cookie.ends_with(';') ? cookie.size() : cookie.size() + 1;
        if (step > kLongestStep) {
            endedEarly_ = true;
            return;
        }
        ParseCookie(cookie);
    }
}

void StorageParser::ParseCookie(Utf8View cookie) {
    const std::size_t equals = cookie.find('=');
    if (equals == cookie.npos) {
        sections_[Utf8String(cookie)];
        return;
    }
    const Utf8String name(WithoutLeadingSpace(cookie.substr(0, equals)));
    Section section;
    for (Utf8View rest = cookie.substr(equals + 1); !rest.empty();) {
        const Utf8View item = CutItem(&rest);
        const std::size_t split = item.find('=');
        if (split == item.npos) {
            section[name] = item;
        } else {
            section[Utf8String(item.substr(0, split))] = item.substr(split + 1);
        }
    }
    sections_[name] = std::move(section);
}

void StorageParser::FindValue(const std::string& name, const std::string& key, Utf8String& value) {
    const Section section = sections_[NarrowToUtf8(name)];
    const auto found = section.find(NarrowToUtf8(key));
    const bool isEmpty = found == section.end() || found->second.empty();
    value = isEmpty ? NarrowToUtf8("-1") : found->second;
}

Utf8String StorageParser::SectionOfWrite(const Utf8String& name) const {
    const auto found = std::ranges::find_if(sections_, [&name](const auto& section) {
        return section.first.find(name) != Utf8String::npos;
    });
    return found == sections_.end() ? name : found->first;
}

void StorageParser::StoreValue(const Utf8String& name, const Utf8String& key,
                               const Utf8String& value) {
    sections_[SectionOfWrite(name)][key] = value;
}

void StorageParser::KeepOnly(const Utf8String& name) {
    std::erase_if(sections_, [&name](const auto& section) { return section.first != name; });
}

Utf8String StorageParser::Format(const Utf8String& domain) const {
    Utf8String text = FormatSections();
    CookieEncryptor(Utf8ToNarrow(domain)).AppendAttributes(text);
    return text;
}

Utf8String StorageParser::FormatSections() const {
    static constexpr unsigned char kSeparator[] = {';', ' ', '\0'};
    Utf8String text;
    for (auto section = sections_.begin(); section != sections_.end(); ++section) {
        const Utf8String cookie = FormatSection(section->first, section->second);
        text += cookie;
        if (!cookie.empty() && std::next(section) != sections_.end()) {
            text += kSeparator;
        }
    }
    return text;
}

Utf8String StorageParser::FormatSection(const Utf8String& name, const Section& section) {
    if (section.empty()) {
        return {};
    }
    // A lone item of the section's own key needs no prefix, since a bare value reads as just that.
    // Beside others, or with an "=" in its value, its key would be taken for the cookie's name.
    const auto& [firstKey, firstValue] = *section.begin();
    const bool isPlain =
        section.size() == 1 && firstKey == name && firstValue.find('=') == Utf8String::npos;
    Utf8String text = isPlain ? Utf8String() : name + Utf8String{'='};
    for (const auto& [key, value] : section) {
        text += &key == &firstKey ? Utf8String() : Utf8String{'&'};
        text += key + Utf8String{'='} + value;
    }
    return text;
}

bool StorageParser::ReadsBack(const Utf8String& name, const Utf8String& key,
                              const Utf8String& value) const {
    const WideString text = Utf8ToWide(FormatSections());
    StorageParser later;
    later.Parse(text.c_str(), static_cast<std::uint32_t>(text.size()));
    // A read takes its name and key through the narrow code page.
    const auto found = later.sections_.find(NarrowToUtf8(Utf8ToNarrow(name)));
    if (later.EndedEarly() || found == later.sections_.end()) {
        return false;
    }
    const auto item = found->second.find(NarrowToUtf8(Utf8ToNarrow(key)));
    return item != found->second.end() && item->second == value;
}

bool StorageParser::SealSection(Utf8String name, Utf8String domain) {
    CookieEncryptor encryptor(Utf8ToNarrow(domain));
    for (const auto& [key, value] : sections_[name]) {
        encryptor.AddPair(Utf8ToNarrow(key), Utf8ToNarrow(value));
    }
    Utf8String sealed;
    encryptor.FormatSealed(sealed, false);
    ParseCookie(name + Utf8String{'='} + sealed);
    return true;
}

bool StorageParser::UnsealSection(Utf8String, Utf8String) {
    return false;
}

void StorageParser::Clear() {
    sections_.clear();
    endedEarly_ = false;
}
