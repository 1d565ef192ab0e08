#include "brevikctl/certificates/certificate_argument.h"

#include <algorithm>
#include <system_error>

#include "brevikctl/files/file_argument.h"
#include "brevikctl/files/host_bytes.h"
#include "brevikctl/output/terminal.h"
#include "brevikctl/output/trouble.h"
#include "platform/locales.h"
#include "platform/posix/text/host_text.h"
#include "text/StringConversions.h"

namespace {

constexpr const char* kProductName = "QDR_ProductName";
constexpr const char* kVectorLocation = "Vector Location";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string ReadArgument(const std::string& path, std::size_t limit) {
    return ReadHostBytes(HostPath(ExistingFile(path)), limit);
}

std::size_t LineOf(const std::string& text, std::size_t place) {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(place);
    return static_cast<std::size_t>(std::count(text.begin(), end, '\n')) + 1;
}

// What keeps a text from being a certificate's, with the line where it stands; empty when nothing
// does.
std::string Problem(const std::string& text) {
    const auto at = [&](std::size_t place, const char* problem) {
        return "line " + std::to_string(LineOf(text, place)) + ": " + problem;
    };
    if (text.size() > kLargestCertificateFile - kCertificateFrameSize) {
        return "it is larger than 16 MiB, the most that a certificate takes";
    }
    if (Utf8FromWide(WideFromUtf8(text)) != text) {
        return "it is no UTF-8 text\niconv turns texts of other encodings into UTF-8.";
    }
    if (const std::size_t place = text.find('\0'); place != text.npos) {
        return at(place, "a NUL character");
    }
    if (const std::size_t place = text.find('\''); place != text.npos) {
        return at(place, "an apostrophe, which the record store takes in no name and no value");
    }
    if (std::count(text.begin(), text.end(), '"') % 2 != 0) {
        return at(text.rfind('"'), "a double quote without its partner");
    }
    return ParseCertificateText(text).empty()
               ? "it has no field\nA field is a line such as QDR_ProductName = Product"
               : "";
}

}  // namespace

CertificateReport::CertificateReport(const std::string& hostPath,
                                     const std::string& verificationKey) {
    try {
        bytes = ReadHostBytes(hostPath, kLargestCertificateFile);
    } catch (const std::system_error& error) {
        systemError = error.code().message();
        return;
    }
    std::string text;
    fault = ReadUnverified(bytes, &text);
    fields = ParseCertificateText(text);
    const auto key = CertificateKeys::ParseVerificationText(verificationKey);
    if (!key) {
        fault = CertificateFault::kBadKey;
    } else if (fault == CertificateFault::kNone) {
        fault = ReadCertificate(bytes, *key, &text);
    }
}

std::string CertificateReport::State() const {
    return systemError.empty() ? Explain(fault) : "it cannot be read: " + systemError;
}

CertificateKeys::PrivateKey PrivateKeyArgument(const std::string& path) {
    constexpr std::size_t kLargestKeyFile = 65536;
    const auto key = CertificateKeys::PrivateKey::Parse(ReadArgument(path, kLargestKeyFile));
    if (!key) {
        Fail(Quoted(path) + " is no private key", "brevikctl certificate keygen makes one.");
    }
    return *key;
}

CertificateKeys::PublicKey PublicKeyArgument(const std::string& text) {
    const auto key = CertificateKeys::ParsePublicKey(text);
    return key ? *key : PrivateKeyArgument(text).Public();
}

std::string FieldTextArgument(const std::string& path) {
    std::string text = ReadArgument(path, kLargestCertificateFile);
    if (text.starts_with(kByteOrderMark)) {
        text.erase(0, kByteOrderMark.size());
    }
    if (const std::string problem = Problem(text); !problem.empty()) {
        Fail(Quoted(path) + " cannot be a certificate: " + problem);
    }
    const std::vector<CertificateField> fields = ParseCertificateText(text);
    if (FirstValue(fields, kProductName).empty()) {
        Say(SafeText(path) +
            ": warning: without QDR_ProductName the product cannot be asked for by name");
    }
    if (GuidOf(fields).empty()) {
        Say(SafeText(path) +
            ": warning: without Vector Location it has to be installed with --guid");
    }
    return text;
}

std::string FirstValue(const std::vector<CertificateField>& fields, const std::string& name) {
    const auto field = std::ranges::find_if(fields, [&](const CertificateField& candidate) {
        return EqualNoCase(candidate.name, name);
    });
    return field != fields.end() ? field->value : std::string();
}

std::string GuidOf(const std::vector<CertificateField>& fields) {
    const std::string location = FirstValue(fields, kVectorLocation);
    return location.substr(location.rfind('\\') + 1);
}

const CertificateField* FieldWithApostrophe(const std::vector<CertificateField>& fields) {
    const auto field = std::ranges::find_if(fields, [](const CertificateField& candidate) {
        return (candidate.name + candidate.value).find('\'') != std::string::npos;
    });
    return field != fields.end() ? &*field : nullptr;
}

bool IsLanguage(unsigned language) {
    WCHAR code[16];
    return language <= 0xFFFF && GetLocaleInfoW(language, LOCALE_SABBREVLANGNAME, code,
                                                static_cast<int>(std::size(code))) != 0;
}
