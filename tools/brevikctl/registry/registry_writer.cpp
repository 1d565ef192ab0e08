#include "brevikctl/registry/registry_writer.h"

#include <array>
#include <charconv>

#include "platform/posix/text/host_text.h"
#include "platform/posix/text/unicode.h"
#include "platform/registry.h"

namespace {

constexpr std::string_view kHead = "Windows Registry Editor Version 5.00\n";
constexpr std::size_t kColumns = 80;

// Two hexadecimal digits, and what follows them.
void AppendByte(char byte, std::string_view after, std::string* text) {
    constexpr char kDigits[] = "0123456789abcdef";
    const unsigned number = static_cast<unsigned char>(byte);
    const char digits[] = {kDigits[number >> 4], kDigits[number & 0xF]};
    text->append(digits, sizeof digits).append(after);
}

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char byte : text) {
        if (byte == '\\' || byte == '"') {
            quoted += '\\';
        }
        quoted += byte;
    }
    return quoted + '"';
}

// The text of a value that can be written in quotes: one NUL, at its end, nothing that ends a line,
// and well-formed.
bool QuotableText(const RegistryValue& value, std::string* text) {
    if (value.type != REG_SZ || value.data.size() < 2 || value.data.size() % 2 != 0) {
        return false;
    }
    std::u16string units = Utf16OfBytes(value.data);
    if (units.find_first_of(std::u16string_view(u"\0\r\n", 3)) != units.size() - 1 ||
        units.back() != u'\0') {
        return false;
    }
    units.pop_back();
    if (FindIllFormed(std::u16string_view(units)) != units.npos) {
        return false;
    }
    *text = Utf8FromWide(units);
    return true;
}

// Bytes with commas between, in lines of kColumns. A line that continues ends in a
// backslash.
void AppendBytes(std::string_view bytes, std::size_t column, std::string* text) {
    constexpr std::string_view kLineBreak = "\\\n  ";
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        const bool isLast = index + 1 == bytes.size();
        // The byte, its comma, and the backslash.
        if (column + 4 - (isLast ? 2 : 0) > kColumns && index > 0) {
            *text += kLineBreak;
            column = 2;
        }
        AppendByte(bytes[index], isLast ? "" : ",", text);
        column += 3;
    }
}

std::string HexPrefix(DWORD type) {
    if (type == REG_BINARY) {
        return "hex:";
    }
    std::array<char, 8> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), type, 16).ptr;
    return "hex(" + std::string(digits.data(), end) + "):";
}

void AppendValue(const RegistryValue& value, std::string* text) {
    const std::size_t lineStart = text->size();
    *text += value.name.empty() ? "@" : Quoted(Utf8FromWide(value.name));
    *text += '=';
    std::string quotable;
    if (QuotableText(value, &quotable)) {
        *text += Quoted(quotable);
    } else if (value.type == REG_DWORD && value.data.size() == 4) {
        *text += "dword:";
        for (std::size_t index = 4; index-- > 0;) {
            AppendByte(value.data[index], "", text);
        }
    } else {
        *text += HexPrefix(value.type);
        AppendBytes(value.data, text->size() - lineStart, text);
    }
    *text += '\n';
}

std::string Write(RegistryTree::Keys::const_iterator key, RegistryTree::Keys::const_iterator last,
                  const std::vector<std::string>& comments) {
    std::string text(kHead);
    text += comments.empty() ? "" : "\n";
    for (const std::string& comment : comments) {
        text += comment + '\n';
    }
    for (; key != last; ++key) {
        const auto& [path, values, subKeys] = key->second;
        const bool isRoot = path.find(u'\\') == path.npos;
        if (!isRoot || !values.empty()) {
            text += "\n[" + Utf8FromWide(path) + "]\n";
        }
        for (const auto& [folded, value] : values) {
            AppendValue(value, &text);
        }
    }
    return text;
}

}  // namespace

std::string WriteRegistryText(const RegistryTree& tree) {
    return Write(tree.AllKeys().begin(), tree.AllKeys().end(), tree.headComments);
}

std::string WriteRegistryText(const RegistryTree& tree, std::u16string_view path) {
    const auto [first, last] = tree.KeysFrom(path);
    return first != last ? Write(first, last, {}) : std::string();
}
