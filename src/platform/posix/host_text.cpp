#include "platform/posix/host_text.h"

#include "platform/posix/unicode.h"

namespace brevik::platform {

std::string Utf8FromWide(std::u16string_view text) {
    UnitCounter<char> counter;
    ConvertText(text, false, counter);
    std::string result(counter.Count(), '\0');
    UnitWriter<char> writer(result.data(), result.size());
    ConvertText(text, false, writer);
    return result;
}

std::u16string WideFromUtf8(std::string_view text) {
    // No character takes more units of UTF-16 than bytes of UTF-8.
    std::u16string result(text.size(), u'\0');
    UnitWriter<char16_t> writer(result.data(), result.size());
    ConvertText(text, false, writer);
    result.resize(writer.Count());
    return result;
}

}  // namespace brevik::platform
