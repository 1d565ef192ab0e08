#include "certificate_reader/certificate_keys.h"

#include <sodium.h>

#include <algorithm>
#include <stdexcept>

namespace CertificateKeys {
namespace {

static_assert(sizeof(PublicKey) == crypto_sign_PUBLICKEYBYTES);
static_assert(sizeof(Signature) == crypto_sign_BYTES);

constexpr std::string_view kDigits = "0123456789abcdef";
constexpr std::size_t kHexLength = 2 * sizeof(PublicKey);

void Start() {
    static const bool started = sodium_init() >= 0;
    if (!started) {
        throw std::runtime_error("libsodium cannot be started");
    }
}

const unsigned char* BytesOf(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

// The digit's value, or 16 for what is none.
unsigned ValueOf(char digit) {
    const char lower = digit >= 'A' && digit <= 'F' ? static_cast<char>(digit - 'A' + 'a') : digit;
    return static_cast<unsigned>(std::min(kDigits.find(lower), kDigits.size()));
}

// The digit that makes the sum of all, every second one of them doubled and brought back to one
// digit, a multiple of 16.
char CheckDigit(std::string_view digits) {
    unsigned sum = 0;
    bool isDoubled = true;
    for (std::size_t index = digits.size(); index-- > 0; isDoubled = !isDoubled) {
        const unsigned value = ValueOf(digits[index]) * (isDoubled ? 2 : 1);
        sum += value / 16 + value % 16;
    }
    return kDigits[(16 - sum % 16) % 16];
}

}  // namespace

std::string HexText(const PublicKey& key) {
    char text[kHexLength + 1];
    return sodium_bin2hex(text, sizeof text, key.data(), key.size());
}

std::optional<PublicKey> ParsePublicKey(std::string_view text) {
    PublicKey key;
    const bool isKey =
        text.size() == kHexLength && sodium_hex2bin(key.data(), key.size(), text.data(),
                                                    text.size(), nullptr, nullptr, nullptr) == 0;
    return isKey ? std::optional(key) : std::nullopt;
}

std::string VerificationText(const VerificationKey& key) {
    const std::string present = HexText(key.present);
    const std::string next = HexText(key.next);
    return present + '-' + next + CheckDigit(present + next);
}

std::optional<VerificationKey> ParseVerificationText(std::string_view text) {
    if (text.size() != kVerificationTextLength || text[kHexLength] != '-') {
        return std::nullopt;
    }
    const auto present = ParsePublicKey(text.substr(0, kHexLength));
    const auto next = ParsePublicKey(text.substr(kHexLength + 1, kHexLength));
    if (!present || !next) {
        return std::nullopt;
    }
    const VerificationKey key = {*present, *next};
    return ValueOf(VerificationText(key).back()) == ValueOf(text.back()) ? std::optional(key)
                                                                         : std::nullopt;
}

bool IsSigned(std::string_view message, const Signature& signature, const PublicKey& key) {
    // Not started: that ends the process where no random numbers can be had, and nothing here needs
    // them.
    return crypto_sign_verify_detached(signature.data(), BytesOf(message), message.size(),
                                       key.data()) == 0;
}

PrivateKey PrivateKey::Make() {
    Start();
    Seed seed;
    randombytes_buf(seed.data(), seed.size());
    PrivateKey key(seed);
    sodium_memzero(seed.data(), seed.size());
    return key;
}

std::optional<PrivateKey> PrivateKey::Parse(std::string_view text) {
    std::optional<PrivateKey> key;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.empty() || line.front() == '#') {
            continue;
        }
        const auto seed = ParsePublicKey(line);  // of the same form
        if (key || !seed) {
            return std::nullopt;
        }
        key = PrivateKey(*seed);
    }
    return key;
}

PrivateKey::PrivateKey(const Seed& seed) : seed_(seed) {
    Start();
    PublicKey ignored;
    crypto_sign_seed_keypair(ignored.data(), secret_.data(), seed_.data());
}

PrivateKey::~PrivateKey() {
    sodium_memzero(seed_.data(), seed_.size());
    sodium_memzero(secret_.data(), secret_.size());
}

std::string PrivateKey::FileText() const {
    return "# A private key of certificate files. Whoever has it can sign for you.\n"
           "# Public key: " +
           HexText(Public()) + "\n" + HexText(seed_) + "\n";
}

PublicKey PrivateKey::Public() const {
    PublicKey key;
    crypto_sign_ed25519_sk_to_pk(key.data(), secret_.data());
    return key;
}

Signature PrivateKey::Sign(std::string_view message) const {
    Signature signature;
    crypto_sign_detached(signature.data(), nullptr, BytesOf(message), message.size(),
                         secret_.data());
    return signature;
}

}  // namespace CertificateKeys
