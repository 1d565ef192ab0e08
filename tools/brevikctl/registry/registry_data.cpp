#include "brevikctl/registry/registry_data.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <optional>
#include <string_view>

#include "brevikctl/output/facts.h"
#include "brevikctl/output/terminal.h"
#include "brevikctl/output/trouble.h"
#include "platform/posix/text/host_text.h"
#include "platform/registry.h"

namespace {

struct TypeRow {
    DWORD type;
    std::string_view name;
    bool isWritable;
};

constexpr TypeRow kTypes[] = {
    {REG_SZ, "sz", true},          {REG_DWORD, "dword", true},
    {REG_MULTI_SZ, "multi", true}, {REG_EXPAND_SZ, "expand", true},
    {REG_BINARY, "binary", true},  {REG_QWORD, "qword", false},
    {REG_NONE, "none", false},
};

std::uint64_t Number(const std::string& bytes) {
    std::uint64_t number = 0;
    for (std::size_t index = bytes.size(); index-- > 0;) {
        number = number << 8 | static_cast<unsigned char>(bytes[index]);
    }
    return number;
}

std::string HexText(const std::string& bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        text += text.empty() ? "" : " ";
        text += kDigits[static_cast<unsigned char>(byte) >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

bool IsText(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ;
}

std::optional<std::uint64_t> NumberOf(const RegistryValue& value) {
    const bool isNumber = (value.type == REG_DWORD && value.data.size() == 4) ||
                          (value.type == REG_QWORD && value.data.size() == 8);
    return isNumber ? std::optional(Number(value.data)) : std::nullopt;
}

// The texts of a multi value, up to the first empty one.
std::vector<std::string> Texts(const RegistryValue& value) {
    std::vector<std::string> texts;
    const std::u16string units = Utf16OfBytes(value.data) + u'\0';
    for (std::size_t start = 0; start < units.size() && units[start] != u'\0';) {
        const std::size_t end = units.find(u'\0', start);
        texts.push_back(Utf8FromWide(std::u16string_view(units).substr(start, end - start)));
        start = end + 1;
    }
    return texts;
}

std::string ParseDword(const std::string& text) {
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    const char* const begin = text.data() + (isHex ? 2 : 0);
    const char* const end = text.data() + text.size();
    std::uint32_t number = 0;
    const auto [stop, error] = std::from_chars(begin, end, number, isHex ? 16 : 10);
    if (error != std::errc() || stop != end) {
        Fail(Quoted(text) + " is no number from 0 to 4294967295 (0xffffffff)");
    }
    std::string bytes;
    for (int index = 0; index < 4; ++index) {
        bytes += static_cast<char>(number >> 8 * index & 0xFF);
    }
    return bytes;
}

std::string ParseBytes(std::string text) {
    std::erase_if(text, [](char letter) { return letter == ' ' || letter == ','; });
    std::string bytes;
    for (std::size_t index = 0; index < text.size(); index += 2) {
        unsigned char byte = 0;
        const char* const end = text.data() + std::min(index + 2, text.size());
        const auto [stop, error] = std::from_chars(text.data() + index, end, byte, 16);
        if (error != std::errc() || stop != end || index + 2 > text.size()) {
            Fail(Quoted(text) + " is no row of bytes such as 00ff1a");
        }
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

std::string ParseTexts(const std::vector<std::string>& texts) {
    std::u16string units;
    for (const std::string& text : texts) {
        if (text.empty()) {
            Fail("an empty text would end the list of texts before its end");
        }
        units += WideArgument(text) + u'\0';
    }
    return BytesOfUtf16(units + u'\0');
}

}  // namespace

std::string TextOf(const RegistryValue& value) {
    const std::u16string units = Utf16OfBytes(value.data);
    return IsText(value.type) ? Utf8FromWide(units.substr(0, units.find(u'\0'))) : std::string();
}

RegistryValue TextValue(std::u16string_view name, const std::string& text) {
    return {std::u16string(name), REG_SZ, BytesOfUtf16(WideFromUtf8(text) + u'\0')};
}

std::string TypeName(DWORD type) {
    const auto* const row = std::ranges::find(kTypes, type, &TypeRow::type);
    if (row != std::end(kTypes)) {
        return std::string(row->name);
    }
    char name[16];
    std::snprintf(name, sizeof name, "hex(%x)", type);
    return name;
}

std::vector<std::string> WritableTypes() {
    std::vector<std::string> names;
    for (const TypeRow& row : kTypes) {
        if (row.isWritable) {
            names.emplace_back(row.name);
        }
    }
    return names;
}

std::vector<std::string> DataLines(const RegistryValue& value) {
    if (IsText(value.type)) {
        return {TextOf(value)};
    }
    if (value.type == REG_MULTI_SZ) {
        return Texts(value);
    }
    const auto number = NumberOf(value);
    return {number ? std::to_string(*number) : HexText(value.data)};
}

std::string DataJson(const RegistryValue& value) {
    const std::vector<std::string> lines = DataLines(value);
    if (value.type != REG_MULTI_SZ) {
        return NumberOf(value) ? lines.front() : JsonString(lines.front());
    }
    return ToArray(lines, JsonString);
}

RegistryValue MakeValue(std::u16string_view name, const std::string& type,
                        const std::vector<std::string>& data) {
    const auto* const row = std::ranges::find(kTypes, std::string_view(type), &TypeRow::name);
    RegistryValue value = {std::u16string(name), row->type, {}};
    if (row->type == REG_MULTI_SZ) {
        value.data = ParseTexts(data);
        return value;
    }
    if (data.size() != 1) {
        Fail("a value of type " + type + " takes one DATA, not " + std::to_string(data.size()));
    }
    value.data = row->type == REG_DWORD    ? ParseDword(data.front())
                 : row->type == REG_BINARY ? ParseBytes(data.front())
                                           : BytesOfUtf16(WideArgument(data.front()) + u'\0');
    return value;
}
