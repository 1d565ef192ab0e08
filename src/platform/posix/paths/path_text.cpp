#include "platform/posix/paths/path_text.h"

#include <limits.h>

#include <algorithm>
#include <utility>

#include "platform/folders.h"
#include "platform/posix/base/last_error.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/text_buffer.h"
#include "platform/posix/text/unicode.h"

namespace brevik::platform {
namespace {

// Completes a relative path with the current folder, or with the part of it that the path leaves
// out. Empty when there is no current folder.
std::u16string Complete(std::u16string text) {
    if (text.starts_with(u"\\\\") || BeginsWithDrive(text)) {
        return text;
    }
    std::u16string base = CurrentFolder();
    if (text.size() > 1 && text[1] == u':') {
        // Drives other than the current one are at their root.
        if (base.size() < 2 || base[1] != u':' || UpperLetter(base[0]) != UpperLetter(text[0])) {
            base = text.substr(0, 2);
        }
        text.erase(0, 2);
    }
    if (base.empty()) {
        return {};
    }
    if (text.starts_with(u'\\')) {
        base.resize(std::min(base.size(), RootLength(base)));
    }
    if (!base.ends_with(u'\\') && !text.starts_with(u'\\')) {
        base += u'\\';
    }
    return base + text;
}

void RemoveLastName(std::u16string& path, std::size_t root) {
    while (path.size() > root && path.back() != u'\\') {
        path.pop_back();
    }
    if (path.size() > root) {
        path.pop_back();
    }
}

// The name as it enters a full path: the last name loses all dots at its end, any other name a
// single one.
std::u16string_view WithoutDots(std::u16string_view name, bool isLast) {
    if (isLast) {
        return name.substr(0, name.find_last_not_of(u'.') + 1);
    }
    if (name.size() > 1 && name.back() == u'.' && name[name.size() - 2] != u'.') {
        name.remove_suffix(1);
    }
    return name;
}

// Whether the path is certain to be its own full path: one on a drive, with plain names between
// single separators. No name that ends in a dot is plain.
bool IsPlain(std::u16string_view path) {
    if (path.size() < 4 || !BeginsWithDrive(path)) {
        return false;
    }
    char16_t last = u'\\';
    for (const char16_t unit : path.substr(3)) {
        if (unit == u'/' || (unit == u'\\' && (last == u'\\' || last == u'.'))) {
            return false;
        }
        last = unit;
    }
    return last != u'\\' && last != u'.';
}

}  // namespace

bool BeginsWithLiteralShare(std::u16string_view path) {
    return path.size() >= kLiteralSharePrefix.size() &&
           std::equal(kLiteralSharePrefix.begin(), kLiteralSharePrefix.end(), path.begin(),
                      [](char16_t left, char16_t right) { return left == UpperLetter(right); });
}

std::u16string WithoutLiteralPrefix(std::u16string path) {
    if (BeginsWithLiteralShare(path)) {
        path.erase(2, kLiteralSharePrefix.size() - 2);
    } else if (path.starts_with(kLiteralPrefix)) {
        path.erase(0, kLiteralPrefix.size());
    }
    return path;
}

bool IsValidName(std::u16string_view name) {
    if (name.empty() || name == u"." || name == u"..") {
        return false;
    }
    std::size_t bytes = 0;
    while (!name.empty()) {
        const DecodedCharacter character = DecodeCharacter(name);
        if (!character.wellFormed || IsForbidden(character.value)) {
            return false;
        }
        std::array<char, 4> units;
        bytes += EncodeCharacter(character.value, units);
        name.remove_prefix(character.length);
    }
    return bytes <= NAME_MAX;
}

std::u16string FullPath(std::u16string_view path) {
    if (path.empty()) {
        return {};
    }
    std::u16string text(path);
    std::replace(text.begin(), text.end(), u'/', u'\\');
    text = Complete(std::move(text));
    const std::size_t root = std::min(RootLength(text), text.size());
    std::u16string full = text.substr(0, root);
    if (root == text.size()) {
        return full;
    }
    ForEachPart(std::u16string_view(text).substr(root), [&](std::u16string_view part, bool isLast) {
        if (part == u"..") {
            RemoveLastName(full, root);
            return;
        }
        if (part == u"." || (part.empty() && !isLast)) {
            return;
        }
        const std::u16string_view name = WithoutDots(part, isLast);
        if (full.size() > root) {
            full += u'\\';
        }
        full += name;
    });
    return full;
}

std::size_t RootLength(std::u16string_view path) {
    if (!path.starts_with(u"\\\\")) {
        return 3;
    }
    const std::size_t server = path.find(u'\\', 2);
    const std::size_t share = server == path.npos ? server : path.find(u'\\', server + 1);
    return share == path.npos ? path.size() : share + 1;
}

DWORD GetFullPathNameW(const WCHAR* path, DWORD size, WCHAR* buffer, WCHAR**) {
    if (*path == u'\0') {
        return 0;
    }
    if (IsPlain(path)) {
        return CopyOrAskForRoom(path, buffer, size);
    }
    const std::u16string full = FullPath(path);
    return full.empty() ? Fail<DWORD>(ERROR_PATH_NOT_FOUND) : CopyOrAskForRoom(full, buffer, size);
}

}  // namespace brevik::platform
