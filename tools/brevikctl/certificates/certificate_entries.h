// The entries of certificates in the registry, where the library finds installed products.
#pragma once

#include <string>
#include <vector>

struct CertificateEntry {
    std::string guid;
    std::string path;  // Windows path of the certificate file
    std::string language;
    std::string customizationCode;
    std::string version;
};

// All entries in the order in which the library meets them. An entry may have more of them below
// it, which take its GUID.
std::vector<CertificateEntry> ReadCertificateEntries();

// Makes the entry of its GUID, or gives it these values; empty optional ones are removed.
void WriteCertificateEntry(const CertificateEntry& entry);

// Removes the entry of a GUID, in any case of letters, with those below it. False when there is
// none.
bool RemoveCertificateEntry(const std::string& guid);

// Whether the two name one key.
bool IsSameGuid(const std::string& a, const std::string& b);
