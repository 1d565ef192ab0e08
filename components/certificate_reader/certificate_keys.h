// The keys of certificate files: Ed25519 pairs, and the text that carries the public ones.
//
// A program that reads certificates knows two public keys, the present one and the next, so that
// signing can go over from one to the other while programs with either text are in use. Objects
// hold values; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace CertificateKeys {

inline constexpr std::size_t kVerificationTextLength = 130;

using PublicKey = std::array<unsigned char, 32>;
using Signature = std::array<unsigned char, 64>;

struct VerificationKey {
    PublicKey present;
    PublicKey next;
};

// 64 hexadecimal digits.
std::string HexText(const PublicKey& key);
std::optional<PublicKey> ParsePublicKey(std::string_view text);

// The two keys as 64 hexadecimal digits each with a minus sign between, and a check digit that
// detects one wrong digit, and two that changed places. Read in either case of letters.
std::string VerificationText(const VerificationKey& key);
std::optional<VerificationKey> ParseVerificationText(std::string_view text);

bool IsSigned(std::string_view message, const Signature& signature, const PublicKey& key);

// The secret half of a pair; its memory is wiped at the end.
class PrivateKey {
  public:
    // A new random one.
    static PrivateKey Make();

    // Reads a text as FileText gives it: lines that begin with '#', and one of 64 hexadecimal
    // digits. Nothing for any other text.
    static std::optional<PrivateKey> Parse(std::string_view text);

    PrivateKey(const PrivateKey&) = default;
    PrivateKey& operator=(const PrivateKey&) = default;
    ~PrivateKey();

    std::string FileText() const;
    PublicKey Public() const;
    Signature Sign(std::string_view message) const;

  private:
    using Seed = std::array<unsigned char, 32>;

    explicit PrivateKey(const Seed& seed);

    Seed seed_;
    std::array<unsigned char, 64> secret_;
};

}  // namespace CertificateKeys
