// The grammar of Windows paths: roots, prefixes and names. No disk is asked.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace brevik::platform {

// A path with this prefix is taken literally: not relative, and no name loses dots or blanks. The
// longer form is that of a share.
inline constexpr std::u16string_view kLiteralPrefix = u"\\\\?\\";
inline constexpr std::u16string_view kLiteralSharePrefix = u"\\\\?\\UNC\\";

// A device, such as \\.\X: for that of a drive.
inline constexpr std::u16string_view kDevicePrefix = u"\\\\.\\";

// Whether the path begins with kLiteralSharePrefix, whose word may be written in any case.
bool BeginsWithLiteralShare(std::u16string_view path);

// The path as it is written without the literal prefix.
std::u16string WithoutLiteralPrefix(std::u16string path);

constexpr char16_t UpperLetter(char16_t unit) {
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 0x20) : unit;
}

constexpr bool IsDriveLetter(char16_t unit) {
    return UpperLetter(unit) >= u'A' && UpperLetter(unit) <= u'Z';
}

// Whether the path begins with a drive and its root, X:\.
constexpr bool BeginsWithDrive(std::u16string_view path) {
    return path.size() > 2 && path[1] == u':' && path[2] == u'\\';
}

inline constexpr auto kForbiddenSigns = [] {
    std::array<bool, 128> table = {};
    for (const char sign : std::string_view("\"*<>?|:/\\")) {
        table[static_cast<unsigned char>(sign)] = true;
    }
    return table;
}();

// Whether no name may hold the character.
constexpr bool IsForbidden(char32_t character) {
    return character < 0x20 || (character < kForbiddenSigns.size() && kForbiddenSigns[character]);
}

// Whether a name of the host can be one of a path: not empty, "." or "..", well-formed, without
// forbidden characters, and not longer than the host can hold.
PLATFORM_API bool IsValidName(std::u16string_view name);

// The full path of a path without the literal prefix: made absolute against the process's current
// folder, with "." and ".." resolved, single separators, and no dots at the end of the last name.
// Empty for an empty path, and for a relative one while there is no current folder.
PLATFORM_API std::u16string FullPath(std::u16string_view path);

// Length of the root of a full path, which ".." does not leave: X:\ or \\server\share\.
std::size_t RootLength(std::u16string_view path);

// Calls `use` with each part between separators and whether it is the last.
template <typename Use>
void ForEachPart(std::u16string_view text, Use use) {
    for (;;) {
        const std::size_t separator = text.find(u'\\');
        use(text.substr(0, separator), separator == std::u16string_view::npos);
        if (separator == std::u16string_view::npos) {
            return;
        }
        text.remove_prefix(separator + 1);
    }
}

}  // namespace brevik::platform
