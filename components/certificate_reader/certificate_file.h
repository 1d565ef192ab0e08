// The form of a certificate file, see docs/certificate-file.md.
//
//     "BREVIK CERTIFICATE\n"   magic line
//     1                        version, one byte
//     size                     of the text in bytes, 4 bytes, the lowest first
//     text                     the fields, in UTF-8
//     signature                64 bytes, Ed25519, of everything before it
//
// One text and one key give one file, byte for byte.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "certificate_reader/certificate_keys.h"

inline constexpr std::size_t kLargestCertificateFile = std::size_t{16} << 20;  // bytes

// What stands in a certificate file beside its text.
inline constexpr std::size_t kCertificateFrameSize = 19 + 1 + 4 + 64;

enum class CertificateFault {
    kNone,
    kTooLarge,
    kForeign,         // it does not begin as a certificate does
    kUnknownVersion,  // it comes from a later one of these
    kCut,             // it ends early, or something follows it
    kBadSignature,    // it was changed, or signed with another key
    kBadKey,          // the text of the keys is none
};

// The fault in words that end a sentence on the file, such as "it is cut short".
const char* Explain(CertificateFault fault);

// REQUIRES: text and frame are not larger than kLargestCertificateFile.
std::string MakeCertificate(std::string_view text, const CertificateKeys::PrivateKey& key);

// Gives the text of a file that one of the two keys has signed. With a fault `text` is empty.
CertificateFault ReadCertificate(std::string_view file, const CertificateKeys::VerificationKey& key,
                                 std::string* text);

// The text of a file, whatever key signed it, for showing what is wrong with it. Never
// kBadSignature.
CertificateFault ReadUnverified(std::string_view file, std::string* text);
