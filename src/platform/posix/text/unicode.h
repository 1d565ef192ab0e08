// Conversion between UTF-8 and UTF-16 where the input may be ill-formed.
//
// Conversion writes to a sink, so that one piece of code both measures and writes. ASCII, which is
// nearly all the text there is, is copied in blocks.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace brevik::platform {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

// The character at the start of a text, and how many units it takes. An ill-formed part takes the
// units that one replacement character stands for.
struct DecodedCharacter {
    char32_t value;
    std::size_t length;
    bool wellFormed;
};

// Whether a continuation byte may follow this lead byte. Some would spell a character that has a
// shorter form, a surrogate, or a number beyond Unicode.
constexpr bool IsSecondByte(unsigned lead, unsigned byte) {
    switch (lead) {
        case 0xE0:
            return byte >= 0xA0;
        case 0xED:
            return byte < 0xA0;
        case 0xF0:
            return byte >= 0x90;
        case 0xF4:
            return byte < 0x90;
        default:
            return true;
    }
}

// REQUIRES: the text is not empty. A continuation byte that the lead byte does not allow belongs to
// the same ill-formed part as the lead byte; each byte after it is a part of its own.
constexpr DecodedCharacter DecodeCharacter(std::string_view text) {
    const auto byte = [text](std::size_t index) {
        return static_cast<unsigned>(static_cast<unsigned char>(text[index]));
    };
    const unsigned lead = byte(0);
    if (lead < 0x80) {
        return {lead, 1, true};
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return {kReplacementCharacter, 1, false};
    }
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    char32_t value = lead & (0x7Fu >> length);
    for (std::size_t index = 1; index < length; ++index) {
        if (index == text.size() || (byte(index) & 0xC0) != 0x80) {
            return {kReplacementCharacter, index, false};
        }
        if (index == 1 && !IsSecondByte(lead, byte(index))) {
            return {kReplacementCharacter, 2, false};
        }
        value = value << 6 | (byte(index) & 0x3F);
    }
    return {value, length, true};
}

constexpr bool IsHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool IsLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

// REQUIRES: the text is not empty.
constexpr DecodedCharacter DecodeCharacter(std::u16string_view text) {
    const char16_t first = text[0];
    if (IsHighSurrogate(first) && text.size() > 1 && IsLowSurrogate(text[1])) {
        return {0x10000 + ((first - 0xD800u) << 10) + (text[1] - 0xDC00u), 2, true};
    }
    if (IsHighSurrogate(first) || IsLowSurrogate(first)) {
        return {kReplacementCharacter, 1, false};
    }
    return {first, 1, true};
}

// Both return the number of units written.
constexpr std::size_t EncodeCharacter(char32_t value, std::array<char, 4>& units) {
    if (value < 0x80) {
        units[0] = static_cast<char>(value);
        return 1;
    }
    const std::size_t length = value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
    for (std::size_t index = length - 1; index > 0; --index) {
        units[index] = static_cast<char>(0x80 | (value & 0x3F));
        value >>= 6;
    }
    units[0] = static_cast<char>((0xF00u >> length & 0xFF) | value);
    return length;
}

constexpr std::size_t EncodeCharacter(char32_t value, std::array<char16_t, 4>& units) {
    if (value < 0x10000) {
        units[0] = static_cast<char16_t>(value);
        return 1;
    }
    units[0] = static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10));
    units[1] = static_cast<char16_t>(0xDC00 + (value & 0x3FF));
    return 2;
}

// Where converted units go: into a buffer of `size` units, or, without a buffer, only into the
// count.
template <typename Unit>
class UnitWriter {
  public:
    using UnitType = Unit;

    UnitWriter() = default;
    UnitWriter(Unit* buffer, std::size_t size) : buffer_(buffer), size_(size) {}

    // False, with nothing appended, when the buffer has no room.
    template <typename From>
    bool Append(const From* units, std::size_t length) {
        if (buffer_ != nullptr) {
            if (length > size_ - count_) {
                return false;
            }
            Unit* target = buffer_ + count_;
            for (std::size_t index = 0; index < length; ++index) {
                target[index] = static_cast<Unit>(units[index]);
            }
        }
        count_ += length;
        return true;
    }
    std::size_t Count() const { return count_; }

  private:
    Unit* buffer_ = nullptr;
    std::size_t size_ = 0;
    std::size_t count_ = 0;
};

// Moves the ASCII at the start of `text` to the sink. False when the sink has no room.
template <typename Unit, typename Sink>
bool AppendAscii(std::basic_string_view<Unit>& text, Sink& sink) {
    constexpr std::size_t kBlock = 16 / sizeof(Unit);
    constexpr std::uint64_t kOutside = sizeof(Unit) == 1 ? 0x8080808080808080 : 0xFF80FF80FF80FF80;
    while (text.size() >= kBlock) {
        std::uint64_t words[2];
        std::memcpy(words, text.data(), sizeof words);
        if (((words[0] | words[1]) & kOutside) != 0) {
            break;
        }
        // The copy on the stack lets the compiler see that block and target do not overlap, and
        // copy the block with a few wide instructions.
        Unit block[kBlock];
        std::memcpy(block, words, sizeof block);
        if (!sink.Append(block, kBlock)) {
            return false;
        }
        text.remove_prefix(kBlock);
    }
    const auto isOutside = [](Unit unit) { return std::make_unsigned_t<Unit>(unit) >= 0x80; };
    const auto end = std::find_if(text.begin(), text.end(), isOutside);
    const auto run = static_cast<std::size_t>(end - text.begin());
    if (!sink.Append(text.data(), run)) {
        return false;
    }
    text.remove_prefix(run);
    return true;
}

// Converts `text` from one form to the other; each ill-formed part becomes a replacement character.
// False when the sink has no room.
template <typename Unit, typename Sink>
bool ConvertText(std::basic_string_view<Unit> text, Sink& sink) {
    for (;;) {
        if (!AppendAscii(text, sink)) {
            return false;
        }
        if (text.empty()) {
            return true;
        }
        const DecodedCharacter character = DecodeCharacter(text);
        std::array<typename Sink::UnitType, 4> units;
        const std::size_t length = EncodeCharacter(character.value, units);
        if (!sink.Append(units.data(), length)) {
            return false;
        }
        text.remove_prefix(character.length);
    }
}

// Where the first ill-formed part of a text begins; npos for a well-formed text.
template <typename Unit>
std::size_t FindIllFormed(const std::basic_string_view<Unit> text) {
    std::basic_string_view<Unit> rest = text;
    UnitWriter<Unit> skipped;
    while (AppendAscii(rest, skipped) && !rest.empty()) {
        const DecodedCharacter character = DecodeCharacter(rest);
        if (!character.wellFormed) {
            return text.size() - rest.size();
        }
        rest.remove_prefix(character.length);
    }
    return text.npos;
}

}  // namespace brevik::platform
