#include "platform/posix/machine/machine.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "brevikctl/certificates/database_files.h"
#include "brevikctl/certificates/reader_component.h"
#include "brevikctl/commands/command.h"
#include "brevikctl/commands/commands.h"
#include "brevikctl/files/file_argument.h"
#include "brevikctl/output/facts.h"
#include "brevikctl/output/terminal.h"
#include "brevikctl/output/trouble.h"
#include "brevikctl/registry/registry_file.h"
#include "catalogue/records/DatabasePath.h"
#include "platform/files.h"
#include "platform/posix/registry/registry_snapshot.h"
#include "text/StringConversions.h"

namespace {

namespace fs = std::filesystem;

struct Options {
    std::string reader;
    bool json = false;
};

void Create(const Options& options) {
    const Machine& machine = Machine::Current();
    if (!machine.Exists()) {
        Fail("the machine folder " + Quoted(machine.Folder()) + " cannot be made",
             "Let yourself write there, or name another folder in BREVIK_MACHINE.");
    }
    machine.SetModes();
    const FileSpec file =
        FileArgument(options.reader.empty() ? ReaderBesideTool() : options.reader);
    const std::string path = PlainText(file.GetPath());
    RequireReader(path);
    MakeDatabaseFiles();
    RegisterReader(path);
    PrintFacts({{"folder", machine.Folder()}, {"reader", path}});
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

Facts DriveFacts(const fs::path& machine) {
    Facts facts;
    for (const fs::path& drive : EntriesOf(machine / "drives")) {
        facts.emplace_back(AsciiToUpper(drive.filename().string()) + ":", PlaceOf(drive));
    }
    return facts;
}

Facts ShareFacts(const fs::path& machine) {
    Facts facts;
    for (const fs::path& server : EntriesOf(machine / "shares")) {
        for (const fs::path& share : EntriesOf(server)) {
            const std::string name =
                "\\\\" + server.filename().string() + "\\" + share.filename().string();
            facts.emplace_back(name, PlaceOf(share));
        }
    }
    return facts;
}

// In what state the registry file is.
std::string RegistryState() {
    RegistryTree tree;
    RegistryFault fault;
    const DWORD error = ReadRegistry(&tree, &fault);
    return error == ERROR_INVALID_DATA ? "malformed: " + fault.Text()
           : error != NO_ERROR
               ? "unreadable: error " + std::to_string(error)
               : std::to_string(tree.CountKeys() + tree.CountValues()) + " keys and values";
}

std::string ReaderState() {
    const HRESULT result = TryReader();
    if (SUCCEEDED(result)) {
        return "works";
    }
    return result == REGDB_E_CLASSNOTREG
               ? "not registered; brevikctl machine create registers it"
               : "cannot be loaded (" + CodeText(result) +
                     "); brevikctl machine create --reader registers another";
}

// Only looks: nothing is made of what is missing.
void Show(const Options& options) {
    std::string folder;
    if (!Machine::IsMade(&folder)) {
        Fail("the machine folder " + Quoted(folder) + " is not made yet",
             "brevikctl machine create makes it.");
    }
    const fs::path machine = folder;
    const WideString database = DatabaseFileIn(FindDatabaseFolder());
    Facts facts = {{"folder", folder},
                   {"registry", RegistryFilePath()},
                   {"registryState", RegistryState()},
                   {"reader", RegisteredReader()},
                   {"readerState", ReaderState()},
                   {"database", WideToNarrow(database)},
                   {"databaseMade", PathFileExistsW(database.c_str()) != FALSE}};
    const Facts drives = DriveFacts(machine);
    const Facts shares = ShareFacts(machine);
    const std::vector<fs::path> users = EntriesOf(machine / "users");
    Facts userFacts;
    for (const fs::path& user : users) {
        userFacts.emplace_back((options.json ? "" : "user ") + user.filename().string(),
                               user.string());
    }
    if (options.json) {
        facts.push_back(Fact::OfJson("drives", ToObject(drives)));
        facts.push_back(Fact::OfJson("shares", ToObject(shares)));
        facts.push_back(Fact::OfJson("users", ToObject(userFacts)));
    } else {
        for (const Facts& more : {drives, shares, userFacts}) {
            facts.insert(facts.end(), more.begin(), more.end());
        }
    }
    PrintFacts(facts, options.json);
}

}  // namespace

void AddMachineCommands(CLI::App& app) {
    CLI::App& machine = AddGroup(app, "machine", "The machine folder as a whole");
    Command(machine, "create",
            "Make what is missing of the machine folder, and register the certificate reader",
            Create)
        .Option("--reader", &Options::reader,
                "File of the certificate reader component; the one that belongs to this brevikctl "
                "by default");
    Command(machine, "show", "Show what the machine consists of", Show).Json();
}
