// The cookies of a URL as a map of maps, and both directions of their text form.
//
// A cookie `name=body` is the section `name`. Its body holds items separated by "&": `key=value`,
// or a bare value, whose key is the section's own name. So `theme=dark` is the section `theme` with
// the value `dark` of the key `theme`, and `s=x=1&y=2` the section `s` with two keys.
// The whole form: docs/cookie-text.md.
//
// A parser belongs to one thread at a time.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "platform/types.h"
#include "text/StringConversions.h"

class StorageParser {
  public:
    virtual ~StorageParser() = default;

    // Adds the cookies of a text "first=...; second=..." to the map; a cookie replaces an earlier
    // one of its name. `size` is what the store reported; the text ends at its NUL. A cookie of
    // more than 32,766 bytes ends the parse.
    virtual void Parse(const WCHAR* text, std::uint32_t size);

    // Turns a section into its sealed form: its pairs, and the key "1" with the stamp of an expiry
    // half a year ahead. Always true.
    virtual bool SealSection(Utf8String name, Utf8String domain);

    // Does nothing, and says so: false.
    virtual bool UnsealSection(Utf8String name, Utf8String domain);

    // The value, or "-1" where it is empty or missing. A missing section is made, with no keys.
    void FindValue(const std::string& name, const std::string& key, Utf8String& value);

    // Puts a value into the section that a write to `name` goes to.
    void StoreValue(const Utf8String& name, const Utf8String& key, const Utf8String& value);

    // The name of the section that a write to `name` goes to: the first whose name contains it,
    // else `name` itself.
    Utf8String SectionOfWrite(const Utf8String& name) const;

    // Empties the map but for one section.
    void KeepOnly(const Utf8String& name);

    // The text of all sections with the closing attributes.
    Utf8String Format(const Utf8String& domain) const;

    // The text of all sections.
    Utf8String FormatSections() const;

    // Whether a later read of FormatSections finds the value. A missing one is never found.
    bool ReadsBack(const Utf8String& name, const Utf8String& key, const Utf8String& value) const;

    // Whether a cookie was too long, so that some are missing from the map.
    bool EndedEarly() const { return endedEarly_; }

    // Empties the map.
    void Clear();

  private:
    using Section = std::map<Utf8String, Utf8String>;

    void ParseCookie(std::basic_string_view<unsigned char> cookie);
    static Utf8String FormatSection(const Utf8String& name, const Section& section);

    std::map<Utf8String, Section> sections_;
    bool endedEarly_ = false;
};
