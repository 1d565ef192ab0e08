#include "certificate.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "catalogue/SQLCertificate.h"
#include "catalogue/VerificationKey.h"
#include "certificate_argument.h"
#include "certificate_check.h"
#include "certificate_entries.h"
#include "facts.h"
#include "file_argument.h"
#include "platform/files.h"
#include "platform/locales.h"
#include "platform/posix/host_text.h"
#include "platform/posix/scoped_descriptor.h"
#include "registry_paths.h"
#include "terminal.h"
#include "text/StringConversions.h"
#include "text_argument.h"

namespace {

struct Options {
    std::string file;
    std::string key;      // a private key
    std::string present;  // a private or public key
    std::string verificationKey = kVerificationKey;
    std::string output;
    std::string beside;
    CertificateEntry entry;
    unsigned language = 0;
    bool withFile = false;
    bool replaces = false;
    bool json = false;
};

// The library reads these values into so many characters with a NUL.
constexpr std::size_t kLongestEntryText = 259;

FileSpec ExistingFile(const std::string& path) {
    const FileSpec file = FileArgument(path);
    if (!file.IsPresent()) {
        throw std::runtime_error("no file " + Quoted(path) +
                                 "\nbrevikctl file list shows what a folder holds.");
    }
    return file;
}

// ---- Keys and files ----

void Keygen(const Options& options) {
    const std::string path = HostPlaceOf(FileArgument(options.file));
    const CertificateKeys::PrivateKey key = CertificateKeys::PrivateKey::Make();
    std::vector<Fact> facts = {TextFact("publicKey", CertificateKeys::HexText(key.Public()))};
    if (!options.present.empty()) {
        facts.push_back(TextFact(
            "verificationKey",
            CertificateKeys::VerificationText({PublicKeyArgument(options.present), key.Public()})));
    }
    const ScopedDescriptor file =
        OpenDescriptor(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (!file || !WriteText(file.Get(), key.FileText())) {
        const int error = errno;
        if (file) {
            unlink(path.c_str());
        }
        if (error == EEXIST) {
            throw std::runtime_error(Quoted(options.file) +
                                     " is there already\nA private key is never overwritten: "
                                     "choose another name.");
        }
        throw std::system_error(error, std::generic_category(), Quoted(path));
    }
    std::fputs(options.json ? (ToObject(facts) + "\n").c_str() : ToLines(facts).c_str(), stdout);
}

void Sign(const Options& options) {
    const CertificateKeys::PrivateKey key = PrivateKeyArgument(options.key);
    const std::string text = FieldTextArgument(options.file);
    WriteHostBytes(HostPlaceOf(FileArgument(options.output)), MakeCertificate(text, key));
}

std::string ToJson(const std::vector<CertificateField>& fields) {
    std::string array;
    for (const CertificateField& field : fields) {
        array += (array.empty() ? "{" : ",{") + ("\"name\":" + JsonString(field.name)) +
                 ",\"value\":" + JsonString(field.value) + "}";
    }
    return "[" + array + "]";
}

void Show(const Options& options) {
    const FileSpec file = ExistingFile(options.file);
    const CertificateReport report(HostPath(file), options.verificationKey);
    if (options.json) {
        PrintLine(ToObject({TextFact("file", PlainText(file.GetPath())),
                            YesNoFact("good", report.IsGood()),
                            TextFact("state", report.State()),
                            {"fields", "", ToJson(report.fields)}}));
    } else {
        PrintLine((report.IsGood() ? "good" : "NOT GOOD: " + report.State()) + ", " +
                  std::to_string(report.fields.size()) + " values");
        for (const CertificateField& field : report.fields) {
            PrintLine(field.name + " = " + field.value);
        }
    }
    if (!report.IsGood()) {
        throw CLI::RuntimeError(1);
    }
}

// ---- Entries ----

void RequireLanguage(unsigned language) {
    WCHAR text[16];
    if (language > 0xFFFF || GetLocaleInfoW(language, LOCALE_SABBREVLANGNAME, text,
                                            static_cast<int>(std::size(text))) == 0) {
        throw std::runtime_error(std::to_string(language) +
                                 " is no language that the library knows\nA language is a number "
                                 "such as 1031 for German or 1033 for English.");
    }
}

void RequireGuid(const std::string& guid) {
    if (guid.empty()) {
        throw std::runtime_error(
            "the certificate has no Vector Location that would tell a GUID\n--guid tells it.");
    }
    if (guid.find('\\') != guid.npos) {
        throw std::runtime_error(Quoted(guid) + " is no GUID: it has a backslash");
    }
    RegistryArgument("HKLM\\" + guid);
}

void RequireEntryTexts(const CertificateEntry& entry) {
    for (const auto text : {&CertificateEntry::path, &CertificateEntry::customizationCode,
                            &CertificateEntry::version}) {
        WideArgument(entry.*text);
        if ((entry.*text).size() > kLongestEntryText) {
            throw std::runtime_error(Quoted(entry.*text) +
                                     " is longer than 259 bytes, the most "
                                     "that the library reads");
        }
    }
    if (entry.path.find('\'') != entry.path.npos) {
        throw std::runtime_error("the path " + Quoted(entry.path) +
                                 " has an apostrophe, which the record store takes in no path");
    }
}

// Throws where the library would not read the file.
CertificateReport GoodCertificate(const FileSpec& file) {
    CertificateReport report(HostPath(file), kVerificationKey);
    const std::string path = Quoted(PlainText(file.GetPath()));
    if (!report.IsGood()) {
        throw std::runtime_error(path + " cannot be installed: " + report.State() +
                                 "\nbrevikctl certificate sign makes certificate files; the "
                                 "library that this brevikctl belongs to has to know the key.");
    }
    for (const CertificateField& field : report.fields) {
        if ((field.name + field.value).find('\'') != std::string::npos) {
            throw std::runtime_error(path + " cannot be installed: " + Quoted(field.name) +
                                     " has an apostrophe, which the record store refuses");
        }
    }
    if (report.fields.empty()) {
        throw std::runtime_error(path + " cannot be installed: it has no field");
    }
    if (FirstValue(report.fields, "QDR_ProductName").empty()) {
        std::fprintf(stderr,
                     "brevikctl: warning: without QDR_ProductName the product cannot be asked for "
                     "by name\n");
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
        throw std::runtime_error(
            Quoted(PlainText(target.GetPath())) +
            " is there and another one\n--replace puts this one in its place.");
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
        std::fprintf(stderr, "brevikctl: warning: the record of %s stays in the database: %s\n",
                     Quoted(path).c_str(), SafeText(error.what()).c_str());
    }
}

void Install(const Options& options) {
    RequireLanguage(options.language);
    const FileSpec file = ExistingFile(options.file);
    const CertificateReport report = GoodCertificate(file);
    const FileSpec target =
        options.beside.empty() ? file : ProductFolder(options.beside).MakeChild(file.GetName());
    CertificateEntry entry = options.entry;
    entry.path = PlainText(target.GetPath());
    entry.language = std::to_string(options.language);
    entry.guid = entry.guid.empty() ? GuidOf(report.fields) : entry.guid;
    RequireGuid(entry.guid);
    RequireEntryTexts(entry);
    if (!options.beside.empty()) {
        CopyTo(target, report.bytes, options.replaces);
    }
    WriteCertificateEntry(entry);
    ForgetRecord(entry.path);
    std::fputs(ToLines({TextFact("guid", entry.guid), TextFact("file", entry.path)}).c_str(),
               stdout);
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
            PrintLine(ToObject({TextFact("guid", entry.guid), TextFact("language", entry.language),
                                TextFact("file", entry.path), TextFact("state", state),
                                TextFact("customizationCode", entry.customizationCode),
                                TextFact("version", entry.version)}));
        } else {
            PrintLine(entry.guid + "  " + (entry.language.empty() ? "-" : entry.language) + "  " +
                      state + "  " + (entry.path.empty() ? "-" : entry.path));
        }
    }
    if (entries.empty() && !options.json) {
        std::fprintf(stderr, "brevikctl: no certificates are installed\n");
    }
}

// Throws where another entry needs one of the files too.
void RequireUnshared(const std::vector<CertificateEntry>& entries, const CertificateEntry& entry) {
    for (const CertificateEntry& other : entries) {
        if (!IsSameGuid(other.guid, entry.guid) && !entry.path.empty() &&
            AsciiToLower(other.path) == AsciiToLower(entry.path)) {
            throw std::runtime_error(Quoted(entry.path) + " is also the certificate of " +
                                     Quoted(other.guid) +
                                     "\nRemove that first, or leave --file out.");
        }
    }
}

void Remove(const Options& options) {
    const std::vector<CertificateEntry> entries = ReadCertificateEntries();
    std::vector<CertificateEntry> removed;
    for (const CertificateEntry& entry : entries) {
        if (IsSameGuid(entry.guid, options.entry.guid)) {
            removed.push_back(entry);
        }
    }
    if (options.withFile) {
        for (const CertificateEntry& entry : removed) {
            RequireUnshared(entries, entry);
        }
    }
    if (!RemoveCertificateEntry(options.entry.guid)) {
        throw std::runtime_error("no certificate is installed for " + Quoted(options.entry.guid) +
                                 "\nbrevikctl certificate list shows those that are.");
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

void Run(void (*command)(const Options&), const Options& options) {
    try {
        command(options);
    } catch (const FileException& failure) {
        throw std::runtime_error(Explanation(failure));
    }
}

// Adds a command with options of its own.
CLI::App* AddCommand(CLI::App* parent, const char* name, const char* description,
                     void (*run)(const Options&), const std::shared_ptr<Options>& options) {
    CLI::App* command = parent->add_subcommand(name, description);
    command->callback([run, options] { Run(run, *options); });
    return command;
}

void AddKeyCommands(CLI::App* certificate) {
    const auto keygen = std::make_shared<Options>();
    CLI::App* keygenCommand = AddCommand(
        certificate, "keygen", "Make a private key, and print its public half", Keygen, keygen);
    keygenCommand->add_option("FILE", keygen->file, "File for the private key, which is new")
        ->required();
    keygenCommand->add_option(
        "--present", keygen->present,
        "Private key file or 64 digits of the key that certificates are signed with now: prints "
        "the text of 130 characters that a library is built with, the new key being the next one");
    keygenCommand->add_flag("--json", keygen->json, "One JSON object");

    const auto sign = std::make_shared<Options>();
    CLI::App* signCommand = AddCommand(certificate, "sign",
                                       "Make a certificate file from a text of fields", Sign, sign);
    signCommand->add_option("TEXT-FILE", sign->file, "Lines such as QDR_ProductName = Product")
        ->required();
    signCommand->add_option("-o,--output", sign->output, "Certificate file, replaced when there")
        ->required();
    signCommand->add_option("--key", sign->key, "Private key file")->required();

    const auto show = std::make_shared<Options>();
    CLI::App* showCommand = AddCommand(
        certificate, "show", "Show whether a certificate file is good, and its fields", Show, show);
    showCommand->footer("Exit code: 1 when the file is not good.\n");
    showCommand->add_option("FILE", show->file, "Certificate file")->required();
    showCommand->add_option("--verification-key", show->verificationKey,
                            "Text of two public keys to test it against; the library's own by "
                            "default");
    showCommand->add_flag("--json", show->json, "One JSON object");
}

void AddEntryCommands(CLI::App* certificate) {
    const auto install = std::make_shared<Options>();
    CLI::App* command = AddCommand(certificate, "install",
                                   "Make a product known by its certificate", Install, install);
    command->footer("Programs that run already keep the catalogue that they began with.\n");
    command->add_option("FILE", install->file, "Certificate file")->required();
    command
        ->add_option("--language", install->language,
                     "Language in which the product is installed, such as 1031")
        ->required();
    command->add_option("--guid", install->entry.guid,
                        "GUID of the installation; the end of Vector Location by default");
    command->add_option("--beside", install->beside,
                        "Program or folder beside which the file is copied; without it, it is "
                        "registered where it lies");
    command->add_flag("--replace", install->replaces, "Another file of the name there is replaced");
    command->add_option("--customization-code", install->entry.customizationCode,
                        "Customization code of the product");
    command->add_option("--version", install->entry.version, "Version of the product");

    const auto list = std::make_shared<Options>();
    CLI::App* listCommand = AddCommand(certificate, "list",
                                       "Show the installed certificates: "
                                       "GUID, language, state and file",
                                       List, list);
    listCommand->add_flag("--json", list->json, "One JSON object a line");

    const auto remove = std::make_shared<Options>();
    CLI::App* removeCommand =
        AddCommand(certificate, "remove", "Make a product unknown", Remove, remove);
    removeCommand->add_option("GUID", remove->entry.guid, "GUID of the installation")->required();
    removeCommand->add_flag("--file", remove->withFile, "Delete the certificate file, too");
}

}  // namespace

void AddCertificateCommands(CLI::App& app) {
    CLI::App* certificate =
        app.add_subcommand("certificate", "Keys, certificate files, and installed certificates");
    certificate->require_subcommand(1);
    certificate->footer(
        "A path is C:\\folder\\name, \\\\server\\share\\name, one relative to the current folder, "
        "or a\nhost path that begins with /. docs/certificate-file.md tells of keys and files.\n");
    AddKeyCommands(certificate);
    AddEntryCommands(certificate);
    AddCertificateCheck(certificate);
}
