// Certificate files and keys on the command line. What cannot be used fails with what can be done
// about it.
#pragma once

#include <string>
#include <vector>

#include "catalogue/certificates/CertificateText.h"
#include "certificate_reader/certificate_file.h"

// A certificate file as it was found.
struct CertificateReport {
    // Reads a file by its host path, and tests it against the text of two public keys.
    CertificateReport(const std::string& hostPath, const std::string& verificationKey);

    // In words that end a sentence on the file.
    std::string State() const;
    bool IsGood() const { return systemError.empty() && fault == CertificateFault::kNone; }

    std::string systemError;  // why the file could not be read, or empty
    CertificateFault fault = CertificateFault::kNone;
    std::string bytes;
    std::vector<CertificateField> fields;  // also those of a file that is not good, as far as read
};

// The private key in a file.
CertificateKeys::PrivateKey PrivateKeyArgument(const std::string& path);

// A public key: 64 hexadecimal digits, or the public half of the private key in a file.
CertificateKeys::PublicKey PublicKeyArgument(const std::string& text);

// The field text in a file, as it can be signed: in UTF-8, with fields, and with nothing that the
// record store or the reader of the fields refuses. Warns of what is unusual.
std::string FieldTextArgument(const std::string& path);

// The first value of a field, its name in any case; or empty.
std::string FirstValue(const std::vector<CertificateField>& fields, const std::string& name);

// The GUID at the end of the certificate's Vector Location, or empty.
std::string GuidOf(const std::vector<CertificateField>& fields);

// The first field with an apostrophe, which the record store takes in no name and no value; or
// null.
const CertificateField* FieldWithApostrophe(const std::vector<CertificateField>& fields);

// Whether the library knows a language of this number.
bool IsLanguage(unsigned language);
