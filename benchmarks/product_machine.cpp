#include "product_machine.h"

#include <stdlib.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "bench_machine.h"
#include "certificate_reader/certificate_file.h"
#include "certificate_reader/reader.h"

namespace fs = std::filesystem;

namespace {

void Write(const fs::path& path, const std::string& bytes) {
    if (!(std::ofstream(path, std::ios::binary) << bytes)) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

CertificateKeys::PrivateKey SigningKey() {
    std::ifstream file(BENCH_PRIVATE_KEY);
    const auto key =
        CertificateKeys::PrivateKey::Parse(std::string{std::istreambuf_iterator<char>(file), {}});
    if (!key) {
        throw std::runtime_error("no private key");
    }
    return *key;
}

std::string FieldText(const std::string& number) {
    std::string text = "QDR_ProductName = Product " + number + "\nQDR_UpdateManager = 1\n";
    for (int field = 2; field < ProductMachine::kFields; ++field) {
        const std::string place = std::to_string(field);
        text += "Field " + place + " = value " + place + " of product " + number + "\n";
    }
    return text;
}

// A path of the host in the registry's spelling.
std::string EscapedHostPath(const fs::path& path) {
    std::string text = "Z:" + path.string();
    for (std::size_t i = 0; (i = text.find('/', i)) != std::string::npos; i += 2) {
        text.replace(i, 1, "\\\\");
    }
    return text;
}

}  // namespace

ProductMachine::ProductMachine(const fs::path& folder, int products) : folder_(folder) {
    PutSibling(folder);
    const CertificateKeys::PrivateKey key = SigningKey();
    std::string registry =
        "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\"
        "Classes\\CLSID\\" +
        std::string(CertificateReader::kClassText) + "\\InprocServer32]\n@=\"" +
        EscapedHostPath(BENCH_READER) + "\"\n";
    for (int product = 0; product < products; ++product) {
        const std::string number = std::to_string(product);
        const fs::path home = folder / "drives/c/Products" / ("Product " + number);
        fs::create_directories(home);
        Write(home / "Product.qzc", MakeCertificate(FieldText(number), key));
        registry += "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\ONDREL\\Certificates13\\{PRODUCT-" + number +
                    "}]\n\"Filename\"=\"C:\\\\Products\\\\Product " + number +
                    "\\\\Product.qzc\"\n\"Language\"=\"1033\"\n";
    }
    Write(folder / "registry.reg", registry);
}

void ProductMachine::Use() const {
    setenv("BREVIK_MACHINE", folder_.c_str(), 1);
}

void ProductMachine::AddServices() const {
    fs::copy_file(BENCH_STAND_IN, SiblingFolder(folder_) / "VelmarHTTPClient13.dll",
                  fs::copy_options::overwrite_existing);
    const std::string key =
        "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
    std::ofstream(folder_ / "registry.reg", std::ios::app)
        << key << "{PRODUCT-7}]\n\"UsedBy\"=\"{SUITE}\"\n\"Language\"=dword:00000409\n"
        << key << "{SUITE}]\n\"VersionMajor\"=dword:0000000d\n\"VersionMinor\"=dword:00000002\n"
        << "\"SKUID\"=\"SKU-7\"\n";
}

fs::path ProductMachine::ServiceLog(const fs::path& machine) {
    return SiblingFolder(machine) / "VelmarHTTPClient13.log";
}

void ProductMachine::DropDatabase() const {
    fs::remove_all(folder_ / "drives/c/ProgramData/Velmar");
}
