#include "database.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "catalogue/manager/CBrevikKitCertificateMgr.h"
#include "catalogue/records/SharedRecordStore.h"
#include "catalogue_access.h"
#include "facts.h"
#include "file_argument.h"
#include "filesystem/FileSystem.h"
#include "modules/SmartComInitializer.h"
#include "terminal.h"
#include "text_table.h"

namespace {

struct Options {
    bool json = false;
};

// Where the database lies on the host; empty when there is none.
std::string DatabaseFile() {
    return HostPath(FileArgument(DatabasePath()));
}

void Show(const Options& options) {
    const std::vector<CertificateRecord> records = ReadRecords();
    const std::string file = DatabaseFile();
    const auto size = file.empty() ? 0 : std::filesystem::file_size(file);
    if (options.json) {
        std::string list;
        for (const CertificateRecord& record : records) {
            list += std::string(list.empty() ? "" : ",") +
                    "{\"certificate\":" + JsonString(record.path) +
                    ",\"rows\":" + std::to_string(record.rows.size()) + "}";
        }
        std::printf("{\"path\":%s,\"file\":%s,\"size\":%llu,\"records\":[%s]}\n",
                    JsonString(DatabasePath()).c_str(),
                    file.empty() ? "null" : JsonString(file).c_str(),
                    static_cast<unsigned long long>(size), list.c_str());
        return;
    }
    std::size_t rows = 0;
    TextTable table = {{"ROWS", "CERTIFICATE"}};
    for (const CertificateRecord& record : records) {
        rows += record.rows.size();
        table.push_back({std::to_string(record.rows.size()), record.path});
    }
    const std::string facts =
        ToLines({TextFact("path", DatabasePath()),
                 TextFact("file", file.empty() ? "none yet" : file), NumberFact("size", size),
                 NumberFact("certificates", records.size()), NumberFact("rows", rows)});
    std::fputs(facts.c_str(), stdout);
    if (!records.empty()) {
        std::printf("\n");
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
    const CLibraryUtils::SmartComInitializer apartment;
    bool isWhole = true;
    TextTable table = {{"STATE", "CERTIFICATE", "REASON"}};
    for (const CertificateRecord& record : ReadRecords()) {
        const Finding finding = Compare(record);
        isWhole = isWhole && finding.reason.empty();
        if (options.json) {
            std::printf("{\"certificate\":%s,\"state\":\"%s\",\"reason\":%s}\n",
                        JsonString(record.path).c_str(), finding.state,
                        finding.reason.empty() ? "null" : JsonString(finding.reason).c_str());
        }
        table.push_back({finding.state, record.path, finding.reason});
    }
    if (!options.json && table.size() > 1) {
        PrintTable(table);
    }
    if (!isWhole) {
        throw std::runtime_error(
            "the database is not what the certificate files say"
            "\nbrevikctl database rebuild reads them anew.");
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
    const CLibraryUtils::SmartComInitializer apartment;
    RequireDatabaseLibrary();
    const std::set<std::string> known = KnownPaths();
    SharedRecordStore::Get().DropRecords();
    std::size_t failed = 0;
    for (const std::string& path : known) {
        CCertificateReference certificate;
        if (certificate.Init(NarrowToUtf8(path), {}, CCertificateMgr::normal_runtime, 0) == 0) {
            const CertificateContent content = ReadContent(path);
            std::fprintf(stderr, "brevikctl: %s is left out: %s\n", Quoted(path).c_str(),
                         content.trouble ? content.trouble->reason.c_str() : "no rows came of it");
            ++failed;
        } else if (const auto odd = TroubleOfPath(path)) {
            std::fprintf(stderr, "brevikctl: warning: %s\n", odd->reason.c_str());
        }
    }
    // Whatever these point to.
    CBrevikKitCertificateMgr manager;
    LoadCatalogue(manager);
    std::vector<std::string> keys;
    SQLCertificate::GetDatabaseKeys(&keys);
    std::printf("imported: %zu\n", keys.size());
    if (failed > 0) {
        throw std::runtime_error("certificates left out: " + std::to_string(failed) +
                                 "\nbrevikctl certificate check tells about one what to do.");
    }
}

CLI::App* AddCommand(CLI::App* parent, const char* name, const char* description,
                     void (*run)(const Options&)) {
    CLI::App* command = parent->add_subcommand(name, description);
    const auto options = std::make_shared<Options>();
    command->callback([run, options] {
        FileSystem::EnsureStarted();
        run(*options);
    });
    if (run != Rebuild) {
        command->add_flag("--json", options->json, "JSON: one object, or one a certificate");
    }
    return command;
}

}  // namespace

void AddDatabaseCommands(CLI::App& app) {
    CLI::App* database = app.add_subcommand("database", "The rows kept of the certificate files");
    database->require_subcommand(1);
    AddCommand(database, "show", "Show where the database lies and what it holds", Show);
    AddCommand(database, "verify", "Compare the rows with the certificate files", Verify);
    AddCommand(database, "rebuild", "Drop all rows and read the certificate files anew", Rebuild);
}
