#include "machine.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "catalogue/records/DatabasePath.h"
#include "certificate_reader/reader.h"
#include "database_files.h"
#include "facts.h"
#include "file_argument.h"
#include "modules/CLibraryUtilsImpl.h"
#include "modules/SmartComInitializer.h"
#include "platform/files.h"
#include "platform/posix/host_text.h"
#include "platform/posix/machine.h"
#include "platform/posix/registry_snapshot.h"
#include "registry_data.h"
#include "registry_file.h"
#include "registry_paths.h"
#include "terminal.h"
#include "text/StringConversions.h"

namespace {

namespace fs = std::filesystem;

struct Options {
    std::string reader;
    bool json = false;
};

// Where the reader component lies beside this tool: in a build tree, and installed.
constexpr const char* kReaderFolders[] = {"../../components/certificate_reader",
                                          "../" BREVIK_LIBRARY_FOLDER "/brevikconfig"};

const std::u16string kReaderKey =
    u"Classes\\CLSID\\" + WideFromUtf8(CertificateReader::kClassText) + u"\\InprocServer32";

void MakeMachine() {
    const Machine& machine = Machine::Current();
    if (!machine.Exists()) {
        throw std::runtime_error("the machine folder " + Quoted(machine.Folder()) +
                                 " cannot be made\nLet yourself write there, or name another "
                                 "folder in BREVIK_MACHINE.");
    }
    machine.SetModes();
}

std::string DefaultReader() {
    const fs::path tools = fs::canonical("/proc/self/exe").parent_path();
    for (const char* folder : kReaderFolders) {
        const fs::path path = (tools / folder / BREVIK_READER_FILE).lexically_normal();
        if (fs::is_regular_file(path)) {
            return path.string();
        }
    }
    throw std::runtime_error(
        "no certificate reader component lies beside brevikctl\n--reader "
        "PATH tells where it is; its file is named " BREVIK_READER_FILE ".");
}

// Throws where a library does not make objects of the reader's class.
void RequireReader(const std::string& path) {
    void* object = nullptr;
    CLibraryUtils::CLibraryUtilsImpl library;
    const HRESULT result =
        library.CreateInstance(CertificateReader::kClass, nullptr, WideFromUtf8(path).c_str(),
                               CertificateReader::kInterface, &object);
    if (FAILED(result) || object == nullptr) {
        throw std::runtime_error(Quoted(path) +
                                 " is no certificate reader component\nIt is missing, no library, "
                                 "or one of another kind; its file is named " BREVIK_READER_FILE
                                 ".");
    }
    static_cast<CertificateReader::IReader*>(object)->Release();
}

void Create(const Options& options) {
    const CLibraryUtils::SmartComInitializer apartment;
    MakeMachine();
    const FileSpec file = FileArgument(options.reader.empty() ? DefaultReader() : options.reader);
    const std::string path = PlainText(file.GetPath());
    RequireReader(path);
    MakeDatabaseFiles();
    ChangeRegistry([&](RegistryTree* tree) {
        tree->Make(PlaceForPrograms(*tree, kReaderKey))->SetValue(TextValue(u"", path));
    });
    std::fputs(ToLines({TextFact("folder", Machine::Current().Folder()), TextFact("reader", path)})
                   .c_str(),
               stdout);
}

// What there is in a folder of the machine, in order.
std::vector<fs::path> EntriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        entries.push_back(entry.path());
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

// Where an entry leads to, links followed.
std::string PlaceOf(const fs::path& entry) {
    std::error_code error;
    const fs::path place = fs::canonical(entry, error);
    return error ? entry.string() + " (leads nowhere)" : place.string();
}

Fact Together(const char* name, const std::vector<Fact>& facts) {
    return {name, "", ToObject(facts)};
}

std::vector<Fact> DriveFacts(const fs::path& machine) {
    std::vector<Fact> facts;
    for (const fs::path& drive : EntriesOf(machine / "drives")) {
        facts.push_back(TextFact(AsciiToUpper(drive.filename().string()) + ":", PlaceOf(drive)));
    }
    return facts;
}

std::vector<Fact> ShareFacts(const fs::path& machine) {
    std::vector<Fact> facts;
    for (const fs::path& server : EntriesOf(machine / "shares")) {
        for (const fs::path& share : EntriesOf(server)) {
            const std::string name =
                "\\\\" + server.filename().string() + "\\" + share.filename().string();
            facts.push_back(TextFact(name, PlaceOf(share)));
        }
    }
    return facts;
}

// In what state the registry file is.
Fact RegistryFact() {
    RegistryTree tree;
    RegistryFault fault;
    const DWORD error = ReadRegistry(&tree, &fault);
    if (error != NO_ERROR) {
        return TextFact("registryState", error == ERROR_INVALID_DATA
                                             ? "malformed: " + fault.Text()
                                             : "unreadable: error " + std::to_string(error));
    }
    return TextFact("registryState",
                    std::to_string(tree.CountKeys() + tree.CountValues()) + " keys and values");
}

std::string ReaderPath() {
    RegistryTree tree;
    RegistryFault fault;
    if (ReadRegistry(&tree, &fault) != NO_ERROR) {
        return {};
    }
    const RegistryKey* key = tree.Find(PlaceForPrograms(tree, kReaderKey));
    const RegistryValue* path = key != nullptr ? key->FindValue(u"") : nullptr;
    return path != nullptr ? TextOf(*path) : std::string();
}

std::string ReaderState() {
    const CLibraryUtils::SmartComInitializer apartment;
    void* object = nullptr;
    const HRESULT result =
        CoCreateInstance(CertificateReader::kClass, nullptr, CLSCTX_INPROC_SERVER,
                         CertificateReader::kInterface, &object);
    if (SUCCEEDED(result)) {
        static_cast<CertificateReader::IReader*>(object)->Release();
        return "works";
    }
    if (result == REGDB_E_CLASSNOTREG) {
        return "not registered; brevikctl machine create registers it";
    }
    char text[96];
    std::snprintf(text, sizeof text,
                  "cannot be loaded (0x%08X); brevikctl machine create --reader registers another",
                  static_cast<unsigned>(result));
    return text;
}

// Only looks: nothing is made of what is missing.
void Show(const Options& options) {
    std::string folder;
    if (!Machine::IsMade(&folder)) {
        throw std::runtime_error("the machine folder " + Quoted(folder) +
                                 " is not made yet\nbrevikctl machine create makes it.");
    }
    const fs::path machine = folder;
    const WideString database = DatabaseFileIn(FindDatabaseFolder());
    std::vector<Fact> facts = {
        TextFact("folder", machine.string()),
        TextFact("registry", RegistryFilePath()),
        RegistryFact(),
        TextFact("reader", ReaderPath()),
        TextFact("readerState", ReaderState()),
        TextFact("database", WideToNarrow(database)),
        YesNoFact("databaseMade", PathFileExistsW(database.c_str()) != FALSE),
    };
    std::vector<Fact> users;
    for (const fs::path& user : EntriesOf(machine / "users")) {
        users.push_back(TextFact(user.filename().string(), user.string()));
    }
    const std::vector<Fact> drives = DriveFacts(machine);
    const std::vector<Fact> shares = ShareFacts(machine);
    if (options.json) {
        facts.push_back(Together("drives", drives));
        facts.push_back(Together("shares", shares));
        facts.push_back(Together("users", users));
        PrintLine(ToObject(facts));
        return;
    }
    facts.insert(facts.end(), drives.begin(), drives.end());
    facts.insert(facts.end(), shares.begin(), shares.end());
    for (Fact& user : users) {
        user.name = "user " + user.name;
        facts.push_back(user);
    }
    std::fputs(ToLines(facts).c_str(), stdout);
}

void Run(void (*command)(const Options&), const Options& options) {
    try {
        command(options);
    } catch (const FileException& failure) {
        throw std::runtime_error(Explanation(failure));
    }
}

}  // namespace

void AddMachineCommands(CLI::App& app) {
    CLI::App* machine = app.add_subcommand("machine", "The machine folder as a whole");
    machine->require_subcommand(1);
    const auto options = std::make_shared<Options>();

    CLI::App* create = machine->add_subcommand(
        "create",
        "Make what is missing of the machine folder, and register the certificate reader");
    create->add_option("--reader", options->reader,
                       "File of the certificate reader component; the one that belongs to this "
                       "brevikctl by default");
    create->callback([options] { Run(Create, *options); });

    CLI::App* show = machine->add_subcommand("show", "Show what the machine consists of");
    show->add_flag("--json", options->json, "One JSON object");
    show->callback([options] { Run(Show, *options); });
}
