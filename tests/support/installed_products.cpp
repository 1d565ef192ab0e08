#include "support/installed_products.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "certificate_reader/certificate_file.h"
#include "support/test_machine.h"

namespace InstalledProducts {
namespace {

namespace fs = std::filesystem;

using Values = std::map<std::string, std::string>;

std::map<std::string, Values> entries;
std::string other_keys;

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char byte : text) {
        escaped += byte == '\\' || byte == '"' ? "\\" : "";
        escaped += byte;
    }
    return escaped;
}

std::string Data(const std::string& value) {
    return value.starts_with("dword:") || value.starts_with("hex") ? value
                                                                   : "\"" + Escaped(value) + "\"";
}

// Replaced as a whole, as programs do it.
void WriteRegistryFile() {
    const fs::path file = TestMachine::Folder() / "registry.reg";
    const fs::path next = TestMachine::Folder() / "registry.reg.test";
    std::ofstream text(next, std::ios::trunc);
    text << "Windows Registry Editor Version 5.00\n\n" << other_keys;
    for (const auto& [key, values] : entries) {
        text << "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\ONDREL\\Certificates13\\" << key << "]\n";
        for (const auto& [name, value] : values) {
            text << "\"" << name << "\"=" << Data(value) << "\n";
        }
    }
    text.close();
    fs::rename(next, file);
}

CertificateKeys::PrivateKey DevelopmentKey() {
    std::ifstream file(BREVIK_TEST_KEYS "/DEVELOPMENT-ONLY-private-key.txt", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    return CertificateKeys::PrivateKey::Parse(text).value();
}

}  // namespace

void RegisterReader(const fs::path& library) {
    AddToRegistry(
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\{91C11C22-4B99-439F-90A6-A0F3758E1717}\\"
        "InprocServer32]\n@=\"Z:" +
        library.string() + "\"\n");
}

fs::path HostPath(const std::string& path) {
    std::string below = path.substr(3);
    std::ranges::replace(below, '\\', '/');
    return TestMachine::Folder() / "drives/c" / below;
}

std::string SignedCertificate(const std::string& text) {
    return MakeCertificate(text, DevelopmentKey());
}

std::string ForeignCertificate(const std::string& text) {
    return MakeCertificate(text, CertificateKeys::PrivateKey::Make());
}

void PutFile(const std::string& path, const std::string& bytes) {
    const fs::path file = HostPath(path);
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
}

void PutCertificate(const std::string& path, const std::string& text) {
    PutFile(path, SignedCertificate(text));
}

void SetEntry(const std::string& key, const Values& values) {
    entries[key] = values;
    WriteRegistryFile();
}

void Register(const std::string& guid, const std::string& path) {
    SetEntry(guid, {{"Filename", path}});
}

void RemoveEntry(const std::string& key) {
    entries.erase(key);
    WriteRegistryFile();
}

void AddToRegistry(const std::string& text) {
    other_keys += text;
    WriteRegistryFile();
}

void Install(const std::string& guid, const std::string& path, const std::string& productName,
             const std::string& moreFields) {
    PutCertificate(path, "QDR_ProductName = " + productName + "\n" + moreFields);
    Register(guid, path);
}

}  // namespace InstalledProducts
