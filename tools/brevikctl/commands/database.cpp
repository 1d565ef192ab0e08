#include <cstdio>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "brevikctl/certificates/catalogue_access.h"
#include "brevikctl/commands/command.h"
#include "brevikctl/commands/commands.h"
#include "brevikctl/files/file_argument.h"
#include "brevikctl/output/facts.h"
#include "brevikctl/output/terminal.h"
#include "brevikctl/output/text_table.h"
#include "brevikctl/output/trouble.h"
#include "catalogue/manager/CCertificateMgr.h"
#include "catalogue/records/SharedRecordStore.h"
#include "filesystem/FileSystem.h"

namespace {

struct Options {
    bool json = false;
};

void Show(const Options& options) {
    const std::vector<CertificateRecord> records = ReadRecords();
    const std::string path = DatabasePath();
    const std::string file = HostPath(FileArgument(path));
    const auto size = file.empty() ? 0 : std::filesystem::file_size(file);
    if (options.json) {
        PrintFacts(
            {{"path", path},
             file.empty() ? Fact::OfJson("file", "null") : Fact("file", file),
             {"size", size},
             Fact::OfJson("records", ToArray(records,
                                             [](const CertificateRecord& record) {
                                                 return ToObject({{"certificate", record.path},
                                                                  {"rows", record.rows.size()}});
                                             }))},
            true);
        return;
    }
    std::size_t rows = 0;
    TextTable table = {{"ROWS", "CERTIFICATE"}};
    for (const CertificateRecord& record : records) {
        rows += record.rows.size();
        table.push_back({std::to_string(record.rows.size()), record.path});
    }
    PrintFacts({{"path", path},
                {"file", file.empty() ? "none yet" : file},
                {"size", size},
                {"certificates", records.size()},
                {"rows", rows}});
    if (!records.empty()) {
        PrintLine("");
        PrintTable(table);
    }
}

struct Finding {
    const char* state;
    std::string reason;  // empty where all is well
};

Finding Compare(const CertificateRecord& record) {
    const CertificateContent content = ReadContent(record.path);
    if (content.trouble) {
        return {"unreadable", content.trouble->reason};
    }
    if (content.fields != record.rows) {
        return {"differs", "the file says something else by now"};
    }
    return {"same", ""};
}

void Verify(const Options& options) {
    FileSystem::EnsureStarted();
    bool isWhole = true;
    TextTable table = {{"STATE", "CERTIFICATE", "REASON"}};
    for (const CertificateRecord& record : ReadRecords()) {
        const Finding finding = Compare(record);
        isWhole = isWhole && finding.reason.empty();
        if (options.json) {
            PrintFacts({{"certificate", record.path},
                        {"state", finding.state},
                        finding.reason.empty() ? Fact::OfJson("reason", "null")
                                               : Fact("reason", finding.reason)},
                       true);
        }
        table.push_back({finding.state, record.path, finding.reason});
    }
    if (!options.json && table.size() > 1) {
        PrintTable(table);
    }
    if (!isWhole) {
        Fail("the database is not what the certificate files say",
             "brevikctl database rebuild reads them anew.");
    }
}

// Every path that the catalogue knows of, in lower case.
std::set<std::string> KnownPaths() {
    std::vector<std::string> keys;
    SQLCertificate::GetDatabaseKeys(&keys);
    std::set<std::string> known(keys.begin(), keys.end());
    Utf8StringList paths;
    Utf8StringList guids;
    CertificateSources::GetCertificatePathsFromRegistry(&paths, &guids);
    for (const Utf8String& path : paths) {
        known.insert(Utf8ToNarrow(AsciiToLower(path)));
    }
    known.erase("");
    return known;
}

// The records are dropped, not the file: programs that have it open see the new ones.
void Rebuild(const Options&) {
    FileSystem::EnsureStarted();
    RequireDatabaseLibrary();
    const std::set<std::string> known = KnownPaths();
    SharedRecordStore::Get().DropRecords();
    std::size_t failed = 0;
    for (const std::string& path : known) {
        CCertificateReference certificate;
        if (certificate.Init(NarrowToUtf8(path), {}, CCertificateMgr::normal_runtime, 0) == 0) {
            const CertificateContent content = ReadContent(path);
            Say(Quoted(path) + " is left out: " +
                (content.trouble ? content.trouble->reason : "no rows came of it"));
            ++failed;
        } else if (const auto odd = TroubleOfPath(path)) {
            Warn(odd->reason);
        }
    }
    // Whatever these point to.
    CBrevikKitCertificateMgr manager;
    LoadCatalogue(manager);
    std::vector<std::string> keys;
    SQLCertificate::GetDatabaseKeys(&keys);
    std::printf("imported: %zu\n", keys.size());
    if (failed > 0) {
        Fail("certificates left out: " + std::to_string(failed),
             "brevikctl certificate check says about one what to do.");
    }
}

}  // namespace

void AddDatabaseCommands(CLI::App& app) {
    CLI::App& database = AddGroup(app, "database", "The rows kept of the certificate files");
    constexpr const char* kJson = "JSON: one object, or one a certificate";
    Command(database, "show", "Show where the database lies and what it holds", Show).Json(kJson);
    Command(database, "verify", "Compare the rows with the certificate files", Verify).Json(kJson);
    Command(database, "rebuild", "Drop all rows and read the certificate files anew", Rebuild);
}
