// The text of a certificate: whatever it is, each field has a name and a value that stand in the
// text as they are, and its parts written out as a text of their own read back the same.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "catalogue/certificates/CertificateText.h"

namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

bool IsPlain(const std::string& text) {
    return text.find_first_of("\r\n,=\"") == std::string::npos && text.front() != ' ' &&
           text.back() != ' ';
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::vector<CertificateField> fields = ParseCertificateText(text);
    std::vector<CertificateField> plain;
    std::string written;
    for (const CertificateField& field : fields) {
        Require(!field.name.empty() && text.find(field.name) != std::string::npos);
        Require(!field.value.empty() && text.find(field.value) != std::string::npos);
        if (IsPlain(field.name) && IsPlain(field.value)) {
            plain.push_back(field);
            written += " " + field.name + " = " + field.value + " \r\n";
        }
    }
    Require(ParseCertificateText(written) == plain);
    return 0;
}
