// The products of the test's machine: their certificate files and their entries in the registry.
#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace InstalledProducts {

// Registers the certificate reader component. The first step of every test with certificates.
void RegisterReader(const std::filesystem::path& library);

// The bytes of a certificate file, signed with the development key, or with one that nobody knows.
std::string SignedCertificate(const std::string& text);
std::string ForeignCertificate(const std::string& text);

// The host's path of a path on drive C:.
std::filesystem::path HostPath(const std::string& path);

// Puts a certificate file at a path on drive C:. It does not tell the registry.
void PutCertificate(const std::string& path, const std::string& text);

// Puts a file of any bytes there.
void PutFile(const std::string& path, const std::string& bytes);

// Writes values of a key below the registry key of the certificates, such as "{G}" or "{G}\\more",
// in place of those it had. A text that begins with "dword:" or "hex" stands for what it says.
void SetEntry(const std::string& key, const std::map<std::string, std::string>& values);

// The same for the one value Filename.
void Register(const std::string& guid, const std::string& path);
void RemoveEntry(const std::string& key);

// Adds text to the registry file as it stands.
void AddToRegistry(const std::string& text);

// Puts a certificate with a product name and registers it.
void Install(const std::string& guid, const std::string& path, const std::string& productName,
             const std::string& moreFields = {});

}  // namespace InstalledProducts
