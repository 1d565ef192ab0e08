#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

#include "brevikctl/certificates/certificate_argument.h"
#include "brevikctl/certificates/certificate_check.h"
#include "brevikctl/certificates/certificate_entries.h"
#include "brevikctl/commands/command.h"
#include "brevikctl/commands/commands.h"
#include "brevikctl/files/file_argument.h"
#include "brevikctl/files/host_bytes.h"
#include "brevikctl/output/facts.h"
#include "brevikctl/output/terminal.h"
#include "brevikctl/output/trouble.h"
#include "brevikctl/registry/registry_paths.h"
#include "catalogue/VerificationKey.h"
#include "catalogue/records/SQLCertificate.h"
#include "platform/files.h"
#include "text/StringConversions.h"

namespace {

// The entry is that of the installation.
struct Options : CertificateEntry {
    std::string file;
    std::string key;         // a private key
    std::string presentKey;  // a private or public key
    std::string verificationKey = kVerificationKey;
    std::string output;
    std::string beside;
    unsigned languageNumber = 0;
    bool withFile = false;
    bool replaces = false;
    bool json = false;
};

// The library reads these values into so many characters with a NUL.
constexpr std::size_t kLongestEntryText = 259;

// ---- Keys and files ----

void Keygen(const Options& options) {
    const std::string path = HostPlaceOf(FileArgument(options.file));
    const CertificateKeys::PrivateKey key = CertificateKeys::PrivateKey::Make();
    Facts facts = {{"publicKey", CertificateKeys::HexText(key.Public())}};
    if (!options.presentKey.empty()) {
        facts.emplace_back("verificationKey",
                           CertificateKeys::VerificationText(
                               {PublicKeyArgument(options.presentKey), key.Public()}));
    }
    try {
        MakePrivateFile(path, key.FileText());
    } catch (const std::system_error& error) {
        if (error.code() != std::errc::file_exists) {
            throw;
        }
        Fail(Quoted(options.file) + " is there already",
             "A private key is never overwritten: choose another name.");
    }
    PrintFacts(facts, options.json);
}

void Sign(const Options& options) {
    const CertificateKeys::PrivateKey key = PrivateKeyArgument(options.key);
    const std::string text = FieldTextArgument(options.file);
    WriteHostBytes(HostPlaceOf(FileArgument(options.output)), MakeCertificate(text, key));
}

std::string ToJson(const CertificateField& field) {
    return ToObject({{"name", field.name}, {"value", field.value}});
}

void Show(const Options& options) {
    const FileSpec file = ExistingFile(options.file);
    const CertificateReport report(HostPath(file), options.verificationKey);
    if (options.json) {
        PrintFacts({{"file", PlainText(file.GetPath())},
                    {"good", report.IsGood()},
                    {"state", report.State()},
                    Fact::OfJson("fields", ToArray(report.fields, ToJson))},
                   true);
    } else {
        PrintLine((report.IsGood() ? "good" : "NOT GOOD: " + report.State()) + ", " +
                  std::to_string(report.fields.size()) + " values");
        for (const CertificateField& field : report.fields) {
            PrintLine(field.name + " = " + field.value);
        }
    }
    if (!report.IsGood()) {
        throw AllSaid();
    }
}

// ---- Entries ----

void RequireLanguage(unsigned language) {
    if (!IsLanguage(language)) {
        Fail(std::to_string(language) + " is no language that the library knows",
             "A language is a number such as 1031 for German or 1033 for English.");
    }
}

void RequireGuid(const std::string& guid) {
    if (guid.empty()) {
        Fail("the certificate has no Vector Location that would give a GUID", "--guid gives it.");
    }
    if (guid.find('\\') != guid.npos) {
        Fail(Quoted(guid) + " is no GUID: it has a backslash");
    }
    RegistryArgument("HKLM\\" + guid);
}

void RequireEntryTexts(const CertificateEntry& entry) {
    for (const auto text : {&CertificateEntry::path, &CertificateEntry::customizationCode,
                            &CertificateEntry::version}) {
        WideArgument(entry.*text);
        if ((entry.*text).size() > kLongestEntryText) {
            Fail(Quoted(entry.*text) +
                 " is longer than 259 bytes, the most that the library reads");
        }
    }
    if (entry.path.find('\'') != entry.path.npos) {
        Fail("the path " + Quoted(entry.path) +
             " has an apostrophe, which the record store takes in no path");
    }
}

// Fails where the library would not read the file.
CertificateReport GoodCertificate(const FileSpec& file) {
    CertificateReport report(HostPath(file), kVerificationKey);
    const std::string refusal = Quoted(PlainText(file.GetPath())) + " cannot be installed: ";
    if (!report.IsGood()) {
        Fail(refusal + report.State(),
             "brevikctl certificate sign makes certificate files; the library that this brevikctl "
             "belongs to has to know the key.");
    }
    if (const CertificateField* field = FieldWithApostrophe(report.fields)) {
        Fail(refusal + Quoted(field->name) + " has an apostrophe, which the record store refuses");
    }
    if (report.fields.empty()) {
        Fail(refusal + "it has no field");
    }
    if (FirstValue(report.fields, "QDR_ProductName").empty()) {
        Warn("without QDR_ProductName the product cannot be asked for by name");
    }
    return report;
}

// The folder of the product: the one named, or that of the program named.
FileSpec ProductFolder(const std::string& path) {
    const FileSpec product = ExistingFile(path);
    return product.IsFolder() ? product : product.MakeParent();
}

void CopyTo(const FileSpec& target, const std::string& bytes, bool replaces) {
    const std::string place = HostPlaceOf(target);
    if (target.IsPresent() && !replaces && ReadHostBytes(place, kLargestCertificateFile) != bytes) {
        Fail(Quoted(PlainText(target.GetPath())) + " is there and another one",
             "--replace puts this one in its place.");
    }
    WriteHostBytes(place, bytes);
}

// Has the next program that asks read the file anew, or forget it. A database that is not there
// remembers nothing.
void ForgetRecord(const std::string& path) {
    try {
        const std::string database = SQLCertificate::SqlDatabasePath();
        if (PathFileExistsW(NarrowToWide(database).c_str())) {
            SQLCertificate().DeleteRecord(AsciiToLower(path).c_str());
        }
    } catch (const std::exception& error) {
        Warn("the record of " + Quoted(path) + " stays in the database: " + SafeText(error.what()));
    }
}

void Install(const Options& options) {
    RequireLanguage(options.languageNumber);
    const FileSpec file = ExistingFile(options.file);
    const CertificateReport report = GoodCertificate(file);
    const FileSpec target =
        options.beside.empty() ? file : ProductFolder(options.beside).MakeChild(file.GetName());
    CertificateEntry entry = options;
    entry.path = PlainText(target.GetPath());
    entry.language = std::to_string(options.languageNumber);
    entry.guid = entry.guid.empty() ? GuidOf(report.fields) : entry.guid;
    RequireGuid(entry.guid);
    RequireEntryTexts(entry);
    if (!options.beside.empty()) {
        CopyTo(target, report.bytes, options.replaces);
    }
    WriteCertificateEntry(entry);
    ForgetRecord(entry.path);
    PrintFacts({{"guid", entry.guid}, {"file", entry.path}});
}

std::string StateOf(const std::string& path) {
    if (path.empty()) {
        return "the entry has no Filename";
    }
    const FileSpec file = FileArgument(path);
    if (!file.IsPresent()) {
        return "the file is missing";
    }
    const CertificateReport report(HostPath(file), kVerificationKey);
    return report.IsGood() ? "good" : report.State();
}

void List(const Options& options) {
    const std::vector<CertificateEntry> entries = ReadCertificateEntries();
    for (const CertificateEntry& entry : entries) {
        std::string state;
        try {
            state = StateOf(entry.path);
        } catch (const std::exception& error) {
            state = error.what();
        }
        if (options.json) {
            PrintFacts({{"guid", entry.guid},
                        {"language", entry.language},
                        {"file", entry.path},
                        {"state", state},
                        {"customizationCode", entry.customizationCode},
                        {"version", entry.version}},
                       true);
        } else {
            PrintLine(entry.guid + "  " + (entry.language.empty() ? "-" : entry.language) + "  " +
                      state + "  " + (entry.path.empty() ? "-" : entry.path));
        }
    }
    if (entries.empty() && !options.json) {
        Say("no certificates are installed");
    }
}

// Fails where another entry needs one of the files too.
void RequireUnshared(const std::vector<CertificateEntry>& entries, const CertificateEntry& entry) {
    for (const CertificateEntry& other : entries) {
        if (!IsSameGuid(other.guid, entry.guid) && !entry.path.empty() &&
            AsciiToLower(other.path) == AsciiToLower(entry.path)) {
            Fail(Quoted(entry.path) + " is also the certificate of " + Quoted(other.guid),
                 "Remove that first, or leave --file out.");
        }
    }
}

void Remove(const Options& options) {
    const std::vector<CertificateEntry> entries = ReadCertificateEntries();
    std::vector<CertificateEntry> removed;
    for (const CertificateEntry& entry : entries) {
        if (IsSameGuid(entry.guid, options.guid)) {
            removed.push_back(entry);
        }
    }
    if (options.withFile) {
        for (const CertificateEntry& entry : removed) {
            RequireUnshared(entries, entry);
        }
    }
    if (!RemoveCertificateEntry(options.guid)) {
        Fail("no certificate is installed for " + Quoted(options.guid),
             "brevikctl certificate list shows those that are.");
    }
    for (const CertificateEntry& entry : removed) {
        if (entry.path.empty()) {
            continue;
        }
        ForgetRecord(entry.path);
        const FileSpec file = options.withFile ? FileArgument(entry.path) : FileSpec();
        if (options.withFile && file.IsPresent()) {
            file.Delete();
        }
    }
}

// Says why a certificate is or is not in the catalogue; here `file` is a path or a GUID.
void Check(const Options& options) {
    bool isInCatalogue = true;
    for (const Verdict& verdict : JudgeCertificates(options.file)) {
        isInCatalogue = isInCatalogue && verdict.isInCatalogue;
        verdict.Print(options.json);
    }
    if (!isInCatalogue) {
        throw AllSaid();
    }
}

void AddKeyCommands(CLI::App& certificate) {
    Command(certificate, "keygen", "Make a private key, and print its public half", Keygen)
        .Required("FILE", &Options::file, "File for the private key, which is new")
        .Option("--present", &Options::presentKey,
                "Private key file or 64 digits of the key that certificates are signed with now: "
                "prints the text of 130 characters that a library is built with, the new key "
                "being the next one")
        .Json();
    Command(certificate, "sign", "Make a certificate file from a text of fields", Sign)
        .Required("TEXT-FILE", &Options::file, "Lines such as QDR_ProductName = Product")
        .Required("-o,--output", &Options::output, "Certificate file, replaced when there")
        .Required("--key", &Options::key, "Private key file");
    Command(certificate, "show", "Show whether a certificate file is good, and its fields", Show)
        .Required("FILE", &Options::file, "Certificate file")
        .Option("--verification-key", &Options::verificationKey,
                "Text of two public keys to test it against; the library's own by default")
        .Json()
        .Footer("Exit code: 1 when the file is not good.\n");
}

void AddEntryCommands(CLI::App& certificate) {
    Command(certificate, "install", "Make a product known by its certificate", Install)
        .Required("FILE", &Options::file, "Certificate file")
        .Required("--language", &Options::languageNumber,
                  "Language in which the product is installed, such as 1031")
        .Option("--guid", &Options::guid,
                "GUID of the installation; the end of Vector Location by default")
        .Option("--beside", &Options::beside,
                "Program or folder beside which the file is copied; without it, it is registered "
                "where it lies")
        .Flag("--replace", &Options::replaces, "Another file of the name there is replaced")
        .Option("--customization-code", &Options::customizationCode,
                "Customization code of the product")
        .Option("--version", &Options::version, "Version of the product")
        .Footer("Programs that run already keep the catalogue that they began with.\n");
    Command(certificate, "list", "Show the installed certificates: GUID, language, state and file",
            List)
        .Json("One JSON object a line");
    Command(certificate, "remove", "Make a product unknown", Remove)
        .Required("GUID", &Options::guid, "GUID of the installation")
        .Flag("--file", &Options::withFile, "Delete the certificate file, too");
    Command(certificate, "check", "Say why a certificate is not in the catalogue", Check)
        .Required("PATH-OR-GUID", &Options::file, "The certificate file, or its GUID")
        .Json("One JSON object a certificate")
        .Footer("Exit code 0 when the certificate is in the catalogue, 1 when it is not.\n");
}

}  // namespace

void AddCertificateCommands(CLI::App& app) {
    CLI::App& certificate =
        AddGroup(app, "certificate", "Keys, certificate files, and installed certificates");
    certificate.footer(kPathForms +
                       std::string(" docs/certificate-file.md describes keys and files.\n"));
    AddKeyCommands(certificate);
    AddEntryCommands(certificate);
}
