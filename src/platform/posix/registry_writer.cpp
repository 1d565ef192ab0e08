#include <array>
#include <charconv>
#include <string>

#include "platform/posix/host_text.h"
#include "platform/posix/registry_text.h"
#include "platform/posix/unicode.h"
#include "platform/registry.h"

namespace brevik::platform {
namespace {

constexpr std::string_view kHead = "Windows Registry Editor Version 5.00\n";
constexpr std::size_t kColumns = 80;

// Two hexadecimal digits, with what stands behind them.
void AppendByte(char byte, std::string_view behind, std::string* text) {
    constexpr char kDigits[] = "0123456789abcdef";
    const unsigned number = static_cast<unsigned char>(byte);
    const char digits[] = {kDigits[number >> 4], kDigits[number & 0xF]};
    text->append(digits, sizeof digits).append(behind);
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

// The text of a value that can be told between quotes: one NUL, at its end, nothing that ends a
// line, and well-formed.
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

// Bytes with commas between, in lines of so many columns. A line that goes on ends in a backslash.
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

void AppendKey(const RegistryKey& key, const std::string& path, bool isRoot, std::string* text) {
    if (!isRoot || !key.AllValues().empty()) {
        *text += "\n[" + path + "]\n";
    }
    for (const auto& [folded, value] : key.AllValues()) {
        AppendValue(value, text);
    }
    for (const auto& [folded, child] : key.AllChildren()) {
        AppendKey(*child, path + '\\' + Utf8FromWide(child->Name()), false, text);
    }
}

std::string NameOf(RegistryRoot root) {
    for (const RegistryRootName& row : kRegistryRoots) {
        if (row.root == root) {
            return Utf8FromWide(row.name);
        }
    }
    return {};
}

// The path with the case that its keys have.
std::string PathAsMade(const RegistryTree& tree, const RegistryPath& path) {
    std::string text = NameOf(path.root);
    const std::u16string folded = FoldRegistryName(path.keys);
    for (std::size_t end = 0; !folded.empty() && end != folded.npos;) {
        end = folded.find(u'\\', end == 0 ? 0 : end + 1);
        text += '\\' + Utf8FromWide(tree.Root(path.root).FindBelow(folded.substr(0, end))->Name());
    }
    return text;
}

}  // namespace

std::string WriteRegistryText(const RegistryTree& tree) {
    std::string text(kHead);
    text += tree.HeadComments().empty() ? "" : "\n";
    for (const std::string& comment : tree.HeadComments()) {
        text += comment + '\n';
    }
    for (const RegistryRootName& row : kRegistryRoots) {
        AppendKey(tree.Root(row.root), Utf8FromWide(row.name), true, &text);
    }
    return text;
}

std::string WriteRegistryText(const RegistryTree& tree, const RegistryPath& path) {
    const RegistryKey* key = tree.Find(path);
    if (key == nullptr) {
        return {};
    }
    std::string text(kHead);
    AppendKey(*key, PathAsMade(tree, path), path.keys.empty(), &text);
    return text;
}

}  // namespace brevik::platform
