#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "brevikctl/certificates/catalogue_access.h"
#include "brevikctl/certificates/certificate_argument.h"
#include "brevikctl/certificates/certificate_entries.h"
#include "brevikctl/certificates/database_files.h"
#include "brevikctl/certificates/reader_component.h"
#include "brevikctl/commands/command.h"
#include "brevikctl/commands/commands.h"
#include "brevikctl/files/file_argument.h"
#include "brevikctl/output/facts.h"
#include "brevikctl/output/terminal.h"
#include "brevikctl/output/trouble.h"
#include "brevikctl/registry/registry_file.h"
#include "catalogue/SQLite3Wrapper/SqliteLibrary.h"
#include "modules/CLibraryUtilsImpl.h"
#include "modules/ModuleFolders.h"
#include "platform/database_library.h"
#include "platform/posix/base/shared_text_file.h"
#include "platform/posix/cookies/cookie_file.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/registry/registry_snapshot.h"
#include "platform/posix/text/host_text.h"
#include "services/ServiceCall.h"
#include "text/StringConversions.h"

namespace {

namespace fs = std::filesystem;

using Troubles = std::vector<Trouble>;

struct Options {
    bool json = false;
};

// ---- The machine folder ----

struct MachineFolder {
    const char* name;
    bool isWritten;  // by every program that uses the library
};

constexpr MachineFolder kMachineFolders[] = {
    {"drives/c", false},
    {"drives/c/ProgramData", true},
    {"drives/c/Program Files/Common Files", false},
    {"drives/z", false},
    {"locks", true},
};

void CheckMachine(Troubles* troubles) {
    const Machine& machine = Machine::Current();
    if (!machine.Exists()) {
        troubles->push_back({"the machine folder " + Quoted(machine.Folder()) + " cannot be made",
                             "Let yourself write there, or name another folder in "
                             "BREVIK_MACHINE."});
        return;
    }
    for (const MachineFolder& row : kMachineFolders) {
        const std::string path = machine.Folder() + "/" + row.name;
        std::error_code error;
        if (!fs::is_directory(path, error)) {
            troubles->push_back({"the folder " + Quoted(path) + " is missing",
                                 "Make it, or put the drive back that it belongs to."});
        } else if (row.isWritten && access(path.c_str(), W_OK) != 0) {
            troubles->push_back({"the folder " + Quoted(path) + " may not be written to by you",
                                 "Every user of the machine has to be able to: chmod 1777 on it."});
        }
    }
}

// ---- The registry and the reader ----

void CheckRegistry(Troubles* troubles) {
    RegistryTree tree;
    RegistryFault fault;
    const DWORD error = ReadRegistry(&tree, &fault);
    if (error == ERROR_INVALID_DATA) {
        troubles->push_back({"the registry is malformed: " + SafeText(fault.Text()),
                             "Mend that line in an editor; until then no program sees what is "
                             "installed."});
    } else if (error != NO_ERROR) {
        troubles->push_back({"the registry " + Quoted(RegistryFilePath()) +
                                 " cannot be read: error " + std::to_string(error),
                             "It has to be a plain file that every user may read."});
    }
}

void CheckReader(Troubles* troubles) {
    const HRESULT result = TryReader();
    if (result == REGDB_E_CLASSNOTREG) {
        troubles->push_back({"no certificate reader component is registered",
                             "brevikctl machine create registers it."});
    } else if (FAILED(result)) {
        troubles->push_back(
            {"the certificate reader component cannot be loaded (" + CodeText(result) + ")",
             "brevikctl machine create registers the one that belongs to this brevikctl."});
    }
}

// ---- The catalogue ----

void CheckDatabase(Troubles* troubles) {
    try {
        SqliteLibrary::Get();
    } catch (const std::exception& failure) {
        troubles->push_back(
            {SafeText(failure.what()), "Install it; on Debian it is the package libsqlcipher0."});
        return;
    }
    CheckDatabaseFiles(troubles);
    if (troubles->empty()) {
        ReadRecords();
    }
}

bool IsLanguageText(const std::string& text) {
    const bool isNumber = !text.empty() && text.size() <= 5 &&
                          text.find_first_not_of("0123456789") == std::string::npos;
    return isNumber && IsLanguage(static_cast<unsigned>(std::stoul(text)));
}

void CheckEntry(const CertificateEntry& entry, const std::vector<CertificateRecord>& records,
                Troubles* troubles) {
    const std::string who = "the certificate of " + Quoted(entry.guid) + ": ";
    if (entry.path.empty()) {
        troubles->push_back({who + "its registry key names no file",
                             "brevikctl certificate install writes it, brevikctl certificate "
                             "remove takes the key away."});
        return;
    }
    if (!IsLanguageText(entry.language)) {
        troubles->push_back({who + "its language " + Quoted(entry.language) + " is none",
                             "brevikctl certificate install with --language writes a good one."});
    }
    if (const auto odd = TroubleOfPath(entry.path)) {
        troubles->push_back({who + odd->reason, odd->hint});
    }
    const CertificateContent content = ReadContent(entry.path);
    if (content.trouble) {
        troubles->push_back({who + content.trouble->reason, content.trouble->hint});
        return;
    }
    for (const CertificateRecord& record : records) {
        if (record.path == AsciiToLower(entry.path) && record.rows != content.fields) {
            troubles->push_back({who + "the database says something else than the file",
                                 "brevikctl database rebuild reads it anew."});
        }
    }
}

// The check of the database reports one that cannot be read.
std::vector<CertificateRecord> RecordsIfGood() {
    try {
        return ReadRecords();
    } catch (const std::exception&) {
        return {};
    }
}

void CheckCertificates(Troubles* troubles) {
    const std::vector<CertificateRecord> records = RecordsIfGood();
    std::set<std::string> named;
    for (const CertificateEntry& entry : ReadCertificateEntries()) {
        CheckEntry(entry, records, troubles);
        named.insert(AsciiToLower(entry.path));
    }
    for (const CertificateRecord& record : records) {
        if (named.contains(record.path)) {
            continue;
        }
        if (const auto odd = TroubleOfPath(record.path)) {
            troubles->push_back({"a certificate that no entry names: " + odd->reason, odd->hint});
        }
        const CertificateContent content = ReadContent(record.path);
        if (content.trouble) {
            troubles->push_back({"the database still answers for " + Quoted(record.path) +
                                     ", but " + content.trouble->reason,
                                 "brevikctl database rebuild drops it."});
        }
    }
}

// ---- What the library loads and writes beside the catalogue ----

// Every folder with a sibling library: the one that this program would take, and those of the
// installed products.
std::set<std::u16string> SiblingFolders() {
    std::set<std::u16string> folders = {FindSpelledLibraryFolder(kServiceLibrary)};
    for (const CertificateEntry& entry : ReadCertificateEntries()) {
        const std::string folder = entry.path.substr(0, entry.path.find_last_of('\\') + 1);
        try {
            if (!folder.empty() &&
                FileArgument(folder + Utf8FromWide(kServiceLibrary)).IsPresent()) {
                folders.insert(WideFromUtf8(folder.substr(0, folder.size() - 1)));
            }
        } catch (const std::exception&) {
            continue;  // the path is none, which the check of the certificates reports
        }
    }
    folders.erase(u"");
    return folders;
}

void CheckSibling(Troubles* troubles) {
    const std::set<std::u16string> folders = SiblingFolders();
    const std::string name = Utf8FromWide(kServiceLibrary);
    if (folders.empty()) {
        troubles->push_back(
            {name + " is neither beside a product nor in the shared folder, so that requests for "
                    "updates and profiles fail",
             "Put it into C:\\Program Files\\Common Files\\Ondrel Shared\\DllShared."});
    }
    for (const std::u16string& folder : folders) {
        const std::u16string path = folder + u"\\" + kServiceLibrary;
        const CLibraryUtils::ScopedLibrary library(
            LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
        if (!library) {
            troubles->push_back({Quoted(Utf8FromWide(path)) + " cannot be loaded: error " +
                                     std::to_string(GetLastError()),
                                 "Put the library back as it was delivered."});
        } else if (library.Find<FARPROC>("DllGetClassObject") == nullptr) {
            troubles->push_back({Quoted(Utf8FromWide(path)) + " makes no objects",
                                 "It is another library of that name; put the right one there."});
        }
    }
}

void CheckCookies(Troubles* troubles) {
    const std::string path = CookieFilePath();
    if (path.empty()) {
        troubles->push_back(
            {"the machine has no place for your cookies: its folder users/LOGIN cannot be made",
             "Let yourself write to the folder " + Quoted(Machine::Current().Folder()) + "."});
        return;
    }
    if (!path.starts_with(Machine::Current().Folder() + "/")) {
        troubles->push_back(
            {"your folder in the machine's users is a link or somebody else's; your "
             "cookies are kept in " +
                 Quoted(path),
             "Have it removed, and move your cookies to the new one."});
    }
    std::string text;
    const DWORD error = SharedTextFile(path).Read(&text);
    if (error == ERROR_INVALID_DATA) {
        troubles->push_back({"the cookie store " + Quoted(path) + " is larger than 64 MiB",
                             "Move it away; programs begin a new one."});
    } else if (error != NO_ERROR) {
        troubles->push_back(
            {"the cookie store " + Quoted(path) + " cannot be read: error " + std::to_string(error),
             "It has to be a plain file of yours; see ls -l on it."});
    } else if (access(fs::weakly_canonical(path).parent_path().c_str(), W_OK) != 0) {
        troubles->push_back(
            {"the folder of the cookie store " + Quoted(path) + " may not be written to by you",
             "It has to be yours; see ls -ld on it."});
    }
}

// ---- The walk ----

// In the order of the walk. What a check needs comes before it.
struct Check {
    const char* name;
    const char* needs;  // another check that has to have found nothing, or null
    void (*run)(Troubles* troubles);
};

constexpr const char* kMachine = "machine folder";
constexpr const char* kRegistry = "registry";
constexpr const char* kReader = "certificate reader";

constexpr Check kChecks[] = {
    {kMachine, nullptr, CheckMachine},
    {kRegistry, kMachine, CheckRegistry},
    {kReader, kRegistry, CheckReader},
    {"database", kMachine, CheckDatabase},
    {"certificates", kReader, CheckCertificates},
    {"sibling library", kRegistry, CheckSibling},
    {"cookie store", kMachine, CheckCookies},
};

struct Outcome {
    const char* check;
    bool isTested = true;
    Troubles troubles;

    const char* State() const {
        return !isTested ? "untested" : troubles.empty() ? "good" : "wrong";
    }
};

// What a failure says: its first line, and what can be done about it in those after it.
Trouble TroubleOf(const std::exception& failure) {
    const std::string text = Explanation(failure);
    const std::size_t end = std::min(text.find('\n'), text.size());
    return {text.substr(0, end), end < text.size() ? text.substr(end + 1) : ""};
}

Outcome RunCheck(const Check& check, const std::vector<Outcome>& before) {
    Outcome outcome = {check.name, true, {}};
    for (const Outcome& other : before) {
        if (check.needs == other.check && std::string(other.State()) != "good") {
            outcome.isTested = false;
            return outcome;
        }
    }
    try {
        check.run(&outcome.troubles);
    } catch (const std::exception& failure) {
        outcome.troubles.push_back(TroubleOf(failure));
    }
    return outcome;
}

void Print(const Outcome& outcome) {
    std::printf("%-8s  %s\n", outcome.State(), outcome.check);
    for (const Trouble& trouble : outcome.troubles) {
        std::printf("          %s\n            %s\n", trouble.reason.c_str(), trouble.hint.c_str());
    }
}

std::string ToJson(const Outcome& outcome) {
    return ToObject({{"check", outcome.check},
                     {"state", outcome.State()},
                     Fact::OfJson("troubles", ToArray(outcome.troubles, TroubleJson))});
}

void Examine(const Options& options) {
    std::vector<Outcome> outcomes;
    for (const Check& check : kChecks) {
        outcomes.push_back(RunCheck(check, outcomes));
    }
    const bool isGood = std::ranges::all_of(
        outcomes, [](const Outcome& outcome) { return std::string(outcome.State()) == "good"; });
    if (options.json) {
        PrintFacts({{"folder", Machine::Current().Folder()},
                    {"good", isGood},
                    {"note", BREVIK_KEY_NOTE},
                    Fact::OfJson("checks", ToArray(outcomes, ToJson))},
                   true);
    } else {
        if (*BREVIK_KEY_NOTE != '\0') {
            std::printf("note      %s\n", BREVIK_KEY_NOTE);
        }
        std::ranges::for_each(outcomes, Print);
    }
    if (!isGood) {
        throw AllSaid();
    }
}

}  // namespace

void AddDoctorCommand(CLI::App& app) {
    Command(app, "doctor", "Say what is wrong with the machine, and how to mend it", Examine)
        .Json()
        .Footer("Exit code 0 when nothing is wrong, 1 when something is.\n");
}
