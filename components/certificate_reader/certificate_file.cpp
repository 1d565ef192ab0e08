#include "certificate_reader/certificate_file.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr std::string_view kMagic = "BREVIK CERTIFICATE\n";
constexpr char kVersion = 1;
constexpr std::size_t kSizeLength = 4;
constexpr std::size_t kHeadSize = kMagic.size() + sizeof kVersion + kSizeLength;
constexpr std::size_t kSignatureSize = sizeof(CertificateKeys::Signature);

static_assert(kHeadSize + kSignatureSize == kCertificateFrameSize);

struct Parts {
    std::string_view text;
    std::string_view signedPart;
    std::string_view signature;
};

std::size_t ReadSize(std::string_view bytes) {
    std::size_t size = 0;
    for (std::size_t index = kSizeLength; index-- > 0;) {
        size = size << 8 | static_cast<unsigned char>(bytes[index]);
    }
    return size;
}

CertificateFault Split(std::string_view file, Parts* parts) {
    if (file.size() > kLargestCertificateFile) {
        return CertificateFault::kTooLarge;
    }
    if (file.substr(0, kMagic.size()) != kMagic.substr(0, file.size())) {
        return CertificateFault::kForeign;
    }
    if (file.size() > kMagic.size() && file[kMagic.size()] != kVersion) {
        return CertificateFault::kUnknownVersion;
    }
    if (file.size() < kCertificateFrameSize ||
        ReadSize(file.substr(kHeadSize - kSizeLength)) != file.size() - kCertificateFrameSize) {
        return CertificateFault::kCut;
    }
    const std::size_t end = file.size() - kSignatureSize;
    *parts = {file.substr(kHeadSize, end - kHeadSize), file.substr(0, end), file.substr(end)};
    return CertificateFault::kNone;
}

}  // namespace

const char* Explain(CertificateFault fault) {
    switch (fault) {
        case CertificateFault::kNone:
            return "it is good";
        case CertificateFault::kTooLarge:
            return "it is larger than 16 MiB";
        case CertificateFault::kForeign:
            return "it is no certificate file";
        case CertificateFault::kUnknownVersion:
            return "it is a certificate file of a version that is not known here";
        case CertificateFault::kCut:
            return "it is cut short, or has something after its end";
        case CertificateFault::kBadSignature:
            return "it was changed, or signed with another key";
        case CertificateFault::kBadKey:
            return "the verification key that it was to be tested against is malformed";
    }
    return "it is unreadable";
}

std::string MakeCertificate(std::string_view text, const CertificateKeys::PrivateKey& key) {
    std::string file(kMagic);
    file += kVersion;
    for (std::size_t index = 0; index < kSizeLength; ++index) {
        file += static_cast<char>(text.size() >> 8 * index & 0xFF);
    }
    file += text;
    const CertificateKeys::Signature signature = key.Sign(file);
    return file.append(signature.begin(), signature.end());
}

CertificateFault ReadCertificate(std::string_view file, const CertificateKeys::VerificationKey& key,
                                 std::string* text) {
    text->clear();
    Parts parts;
    if (const CertificateFault fault = Split(file, &parts); fault != CertificateFault::kNone) {
        return fault;
    }
    CertificateKeys::Signature signature;
    std::copy(parts.signature.begin(), parts.signature.end(), signature.begin());
    if (!CertificateKeys::IsSigned(parts.signedPart, signature, key.present) &&
        !CertificateKeys::IsSigned(parts.signedPart, signature, key.next)) {
        return CertificateFault::kBadSignature;
    }
    *text = parts.text;
    return CertificateFault::kNone;
}

CertificateFault ReadUnverified(std::string_view file, std::string* text) {
    Parts parts;
    const CertificateFault fault = Split(file, &parts);
    *text = parts.text;
    return fault;
}
