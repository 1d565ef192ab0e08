// A file that gives a text is the one that its signer made of this text. Any bytes can be signed,
// and their file gives no text any more once it is changed or cut where the input says. Keys that
// are read are written in a form that reads as the same.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "certificate_reader/certificate_file.h"

namespace {

using namespace CertificateKeys;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

// The key of the files in the corpus.
const PrivateKey& Signer() {
    static const PrivateKey key = *PrivateKey::Parse(std::string(64, '5'));
    return key;
}

CertificateFault Read(std::string_view file, std::string* text) {
    static const VerificationKey key = {PublicKey{}, Signer().Public()};
    const CertificateFault fault = ReadCertificate(file, key, text);
    Require(fault == CertificateFault::kNone || text->empty());
    return fault;
}

void RequireSignable(std::string_view text, std::size_t place) {
    std::string file = MakeCertificate(text, Signer());
    std::string read;
    Require(Read(file, &read) == CertificateFault::kNone && read == text);
    Require(Read(file.substr(0, place % file.size()), &read) != CertificateFault::kNone);
    char& byte = file[place % file.size()];
    byte = static_cast<char>(byte ^ 1 << place % 8);
    Require(Read(file, &read) != CertificateFault::kNone);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    std::string text;
    if (Read(input, &text) == CertificateFault::kNone) {
        Require(MakeCertificate(text, Signer()) == input);
    }
    std::string unverified;
    if (ReadUnverified(input, &unverified) == CertificateFault::kNone) {
        Require(unverified.size() + kCertificateFrameSize == size);
    }
    if (size > 0) {
        RequireSignable(input.substr(1), data[0] * size);
    }
    if (const auto key = ParseVerificationText(input)) {
        const auto again = ParseVerificationText(VerificationText(*key));
        Require(again && again->present == key->present && again->next == key->next);
    }
    if (const auto key = PrivateKey::Parse(input)) {
        Require(PrivateKey::Parse(key->FileText())->Public() == key->Public());
    }
    return 0;
}
