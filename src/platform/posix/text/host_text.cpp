#include "platform/posix/text/host_text.h"

#include "platform/posix/text/unicode.h"
#include "platform/text.h"

namespace brevik::platform {

std::string Utf8FromWide(std::u16string_view text) {
    UnitWriter<char> counter;
    ConvertText(text, counter);
    std::string result(counter.Count(), '\0');
    UnitWriter<char> writer(result.data(), result.size());
    ConvertText(text, writer);
    return result;
}

std::u16string WideFromUtf8(std::string_view text) {
    // No character takes more units of UTF-16 than bytes of UTF-8.
    std::u16string result(text.size(), u'\0');
    UnitWriter<char16_t> writer(result.data(), result.size());
    ConvertText(text, writer);
    result.resize(writer.Count());
    return result;
}

std::string BytesOfUtf16(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size() * sizeof(char16_t));
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

std::u16string Utf16OfBytes(std::string_view bytes) {
    std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
    for (std::size_t index = 0; index < text.size(); ++index) {
        text[index] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * index]) |
                                            static_cast<unsigned char>(bytes[2 * index + 1]) << 8);
    }
    return text;
}

std::u16string UpperCase(std::u16string_view text) {
    std::u16string upper(text);
    CharUpperBuffW(upper.data(), static_cast<DWORD>(upper.size()));
    return upper;
}

std::uint32_t NumberOfBytes(std::string_view bytes) {
    std::uint32_t number = 0;
    for (std::size_t index = bytes.size(); index > 0; --index) {
        number = number << 8 | static_cast<unsigned char>(bytes[index - 1]);
    }
    return number;
}

}  // namespace brevik::platform
