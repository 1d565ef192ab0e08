#include "filesystem/FilePath.h"

#include <algorithm>
#include <string_view>

#include "filesystem/FileException.h"

namespace {

constexpr unsigned char kSeparators[] = "/\\";

using Bytes = std::basic_string_view<unsigned char>;

// Goes back to the last "*" alone: what an earlier one could take, the last one can take too, so
// the time stays within the product of the two lengths.
bool Matches(Bytes name, Bytes pattern) {
    std::size_t n = 0;
    std::size_t p = 0;
    std::size_t afterStar = Bytes::npos;
    std::size_t starTook = 0;
    while (n < name.size()) {
        const bool patternEnds = p == pattern.size();
        if (!patternEnds && pattern[p] == '*') {
            if (p + 1 == pattern.size()) {
                return true;
            }
            afterStar = ++p;
            starTook = n;
        } else if (!patternEnds && (pattern[p] == '?' ? name[n] != '.' : name[n] == pattern[p])) {
            ++n;
            ++p;
        } else if (afterStar != Bytes::npos) {
            n = ++starTook;
            p = afterStar;
        } else {
            return false;
        }
    }
    return p == pattern.size();
}

}  // namespace

FilePath FilePath::GetName() const {
    const size_type separator = find_last_of(kSeparators);
    return separator == npos ? *this : FilePath(substr(separator + 1));
}

FilePath FilePath::GetBaseName() const {
    return GetName().RemoveExtension();
}

FilePath FilePath::RemoveExtension() const {
    return FilePath(substr(0, find_last_of('.')));
}

FilePath FilePath::GetExtension() const {
    const size_type dot = find_last_of('.');
    return dot == npos ? FilePath() : FilePath(substr(dot + 1));
}

FilePath FilePath::AddExtension(const FilePath& extension) const {
    FilePath path = *this;
    if (!extension.IsEmpty()) {
        if (extension.front() != '.') {
            path += '.';
        }
        path += extension;
    }
    return path;
}

FilePath FilePath::GetLowerCase() const {
    if (std::all_of(begin(), end(), [](unsigned char byte) { return byte < 0x80; })) {
        return FilePath(AsciiToLower(*this));
    }
    return FilePath(WideToUtf8(StringToLower(Utf8ToWide(*this))));
}

FilePath FilePath::GetCanonical(bool isCaseSensitive) const {
    FilePath path = isCaseSensitive ? *this : GetLowerCase();
    std::replace(path.begin(), path.end(), static_cast<unsigned char>('\\'),
                 static_cast<unsigned char>('/'));
    return path;
}

bool FilePath::IsEqual(const FilePath& other, bool isCaseSensitive) const {
    return GetCanonical(isCaseSensitive) == other.GetCanonical(isCaseSensitive);
}

bool FilePath::IsMatch(const FilePath& pattern, bool isCaseSensitive) const {
    if (pattern.find_first_of(kSeparators) != npos) {
        ThrowInternalFileError(".\\Private\\FilePath", 112, pattern);
    }
    const FilePath name = GetName();
    return isCaseSensitive ? Matches(name, pattern)
                           : Matches(name.GetLowerCase(), pattern.GetLowerCase());
}
