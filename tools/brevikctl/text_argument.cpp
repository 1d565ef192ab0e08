#include "text_argument.h"

#include <stdexcept>

#include "platform/posix/host_text.h"
#include "terminal.h"

std::u16string WideArgument(const std::string& text) {
    std::u16string wide = WideFromUtf8(text);
    if (Utf8FromWide(wide) != text) {
        throw std::runtime_error(Quoted(text) + " is no UTF-8 text");
    }
    return wide;
}
