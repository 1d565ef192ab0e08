// The cookie text: whatever the store gives, a value that passes the check before a write is found
// by a later read. The input is the text, and, after NULs, the name, key and value of a write.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "cookies/StorageParser.h"

namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void Parse(StorageParser& parser, const Utf8String& text) {
    const WideString wide = Utf8ToWide(text);
    parser.Parse(wide.c_str(), static_cast<std::uint32_t>(text.size()));
}

std::array<Utf8String, 4> Split(const std::uint8_t* data, std::size_t size) {
    std::array<Utf8String, 4> parts;
    const std::uint8_t* const end = data + size;
    for (Utf8String& part : parts) {
        const std::uint8_t* const partEnd = std::find(data, end, 0);
        part.assign(data, partEnd);
        data = std::min(partEnd + 1, end);
    }
    return parts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [text, name, key, value] = Split(data, size);
    StorageParser parser;
    Parse(parser, text);
    const Utf8String section = parser.SectionOfWrite(name);
    parser.StoreValue(name, key, value);
    parser.KeepOnly(section);
    if (!value.empty() && parser.ReadsBack(section, key, value)) {
        StorageParser later;
        Parse(later, parser.FormatSections());
        Utf8String found;
        later.FindValue(Utf8ToNarrow(section), Utf8ToNarrow(key), found);
        Require(found == value);
    }
    parser.SealSection(name, key);
    parser.Format(key);
    return 0;
}
