// The public form of a path: UTF-8 text, with the operations that need the text alone.
//
// No operation asks a file system, and none but IsMatch raises. Both "/" and "\" separate
// components. The empty text is the null path. Any thread.
#pragma once

#include <string>

#include "platform/types.h"
#include "text/StringConversions.h"

class FilePath : public Utf8String {
  public:
    FilePath() = default;
    FilePath(const Utf8String& text) : Utf8String(text) {}
    FilePath(Utf8String&& text) noexcept : Utf8String(std::move(text)) {}

    // Narrow text in the system's code page, wide text in UTF-16; each up to its first NUL.
    FilePath(const std::string& text) : Utf8String(NarrowToUtf8(text)) {}
    FilePath(const char* text) : Utf8String(NarrowToUtf8(text)) {}
    FilePath(const WideString& text) : Utf8String(WideToUtf8(text)) {}
    FilePath(const WCHAR* text) : Utf8String(WideToUtf8(text)) {}

    WideString ToWide() const { return Utf8ToWide(*this); }

    bool IsEmpty() const { return empty(); }

    // The text after the last separator; empty when the text ends in one.
    FilePath GetName() const;

    // The name without its extension; empty for a name such as ".profile".
    FilePath GetBaseName() const;

    // The text before the last "." of the whole text; without one, the whole text.
    FilePath RemoveExtension() const;

    // The text after the last "." of the whole text, whatever separators follow it; without one,
    // empty.
    FilePath GetExtension() const;

    // The text followed by an extension; the "." between them is added where `extension` has
    // none. An empty extension adds nothing.
    FilePath AddExtension(const FilePath& extension) const;

    // Lower case of the whole alphabet, not of ASCII alone.
    FilePath GetLowerCase() const;

    // The form in which equal paths are equal texts: "/" for "\", in lower case unless
    // `isCaseSensitive`.
    FilePath GetCanonical(bool isCaseSensitive) const;

    // Whether the canonical forms are equal.
    bool IsEqual(const FilePath& other, bool isCaseSensitive) const;

    // Whether the name matches a pattern, in which "*" stands for any bytes and "?" for any one
    // byte but ".". A "*" at the end stands for at least one byte. A pattern with a separator in it
    // raises a FileException that carries the pattern.
    bool IsMatch(const FilePath& pattern, bool isCaseSensitive) const;
};
