// String files: translations of numbered texts, a line each.
//
// A file is UTF-8 with a byte order mark, UTF-16 big-endian with one, or else UTF-16 little-endian
// whose first two bytes are skipped. A line is a number in the first column, decimal or hexadecimal
// with "0x", white space, and the text without trailing white space. A line that begins with ";" or
// "#", or has no number but 0, is skipped. Of two lines with the same number the later wins.
#pragma once

#include <map>
#include <string>

#include "text/StringConversions.h"

// The text of a file's bytes. A file of fewer than 2 bytes holds none.
Utf8String DecodeStringFile(const std::string& bytes);

// The translations by number; a number without a text has an empty one.
std::map<long, Utf8String> ParseStringFile(const Utf8String& text);
