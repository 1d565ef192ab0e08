// The reader of string files: any bytes become texts without a number 0, a line end or white space
// at either end.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "text/StringFile.h"

namespace {

bool IsSpace(unsigned char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    for (const auto& [id, text] : ParseStringFile(DecodeStringFile(bytes))) {
        const bool trimmed = text.empty() || (!IsSpace(text.front()) && !IsSpace(text.back()));
        if (id == 0 || !trimmed || text.find('\n') != text.npos || text.find('\r') != text.npos) {
            std::abort();
        }
    }
    return 0;
}
