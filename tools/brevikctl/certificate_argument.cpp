#include "certificate_argument.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "file_argument.h"
#include "platform/posix/host_text.h"
#include "platform/posix/interrupted.h"
#include "platform/posix/scoped_descriptor.h"
#include "terminal.h"
#include "text/StringConversions.h"

namespace {

constexpr const char* kProductName = "QDR_ProductName";
constexpr const char* kVectorLocation = "Vector Location";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string ReadArgument(const std::string& path, std::size_t limit) {
    const std::string host = HostPath(FileArgument(path));
    if (host.empty()) {
        throw std::runtime_error("no file " + Quoted(path) +
                                 "\nbrevikctl file list shows what a folder holds.");
    }
    return ReadHostBytes(host, limit);
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

void Warn(const std::string& path, const std::string& warning) {
    std::fprintf(stderr, "brevikctl: %s: warning: %s\n", SafeText(path).c_str(), warning.c_str());
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
        throw std::runtime_error(Quoted(path) +
                                 " is no private key\nbrevikctl certificate keygen makes one.");
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
        throw std::runtime_error(Quoted(path) + " cannot be a certificate: " + problem);
    }
    const std::vector<CertificateField> fields = ParseCertificateText(text);
    if (FirstValue(fields, kProductName).empty()) {
        Warn(path, "without QDR_ProductName the product cannot be asked for by name");
    }
    if (GuidOf(fields).empty()) {
        Warn(path, "without Vector Location it has to be installed with --guid");
    }
    return text;
}

std::string FirstValue(const std::vector<CertificateField>& fields, const std::string& name) {
    const auto field = std::find_if(fields.begin(), fields.end(), [&](const auto& candidate) {
        return EqualNoCase(candidate.name, name);
    });
    return field != fields.end() ? field->value : std::string();
}

std::string GuidOf(const std::vector<CertificateField>& fields) {
    const std::string location = FirstValue(fields, kVectorLocation);
    return location.substr(location.rfind('\\') + 1);
}

std::string ReadHostBytes(const std::string& hostPath, std::size_t limit) {
    const auto fail = [&](int error) {
        throw std::system_error(error, std::generic_category(), Quoted(hostPath));
    };
    const ScopedDescriptor file = OpenDescriptor(hostPath, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    struct stat status;
    if (!file || fstat(file.Get(), &status) != 0) {
        fail(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        fail(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    std::string bytes;
    char block[65536];
    while (bytes.size() <= limit) {
        const ssize_t count = Uninterrupted([&] { return read(file.Get(), block, sizeof block); });
        if (count < 0) {
            fail(errno);
        }
        if (count == 0) {
            break;
        }
        bytes.append(block, static_cast<std::size_t>(count));
    }
    return bytes;
}

void WriteHostBytes(const std::string& hostPath, const std::string& bytes) {
    std::string scratch = hostPath + ".XXXXXX";
    const ScopedDescriptor file(mkostemp(scratch.data(), O_CLOEXEC));
    if (!file || !WriteText(file.Get(), bytes) || fchmod(file.Get(), 0644) != 0 ||
        std::rename(scratch.c_str(), hostPath.c_str()) != 0) {
        const int error = errno;
        if (file) {
            unlink(scratch.c_str());
        }
        throw std::system_error(error, std::generic_category(), Quoted(hostPath));
    }
}
