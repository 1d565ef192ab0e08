#include "brevikctl/certificates/catalogue_access.h"

#include <map>
#include <utility>

#include "brevikctl/certificates/certificate_argument.h"
#include "brevikctl/files/file_argument.h"
#include "brevikctl/output/terminal.h"
#include "catalogue/SQLite3Wrapper/SqliteLibrary.h"
#include "catalogue/VerificationKey.h"
#include "catalogue/certificates/CertificateReader.h"
#include "catalogue/records/DatabasePath.h"
#include "catalogue/records/RecordTable.h"
#include "filesystem/FileSystem.h"
#include "platform/component_model.h"

namespace {

constexpr const char* kWhatAFieldIs = "A field is a line with a name, an equals sign and a value.";

std::string Text(const SQLite3WrapperTable& rows, std::int32_t row, std::int32_t column) {
    const char* text = rows.GetText(row, column);
    return text != nullptr ? text : "";
}

const char* HintOn(CertificateFault fault) {
    switch (fault) {
        case CertificateFault::kBadSignature:
            return "Sign its text anew with brevikctl certificate sign, with the key that this "
                   "library was built for.";
        case CertificateFault::kForeign:
        case CertificateFault::kUnknownVersion:
        case CertificateFault::kCut:
            return "Put the file back as it was delivered, or make it with brevikctl certificate "
                   "sign.";
        default:
            return "brevikctl certificate show says more.";
    }
}

// REQUIRES: the component gave no text for it.
Trouble TroubleOfFile(const std::string& path) {
    const std::string file = HostPath(FileArgument(path));
    if (file.empty()) {
        return {"the file is missing",
                "Put it there, or forget it with brevikctl certificate remove."};
    }
    const CertificateReport report(file, kVerificationKey);
    if (!report.systemError.empty()) {
        return {report.State(),
                "See ls -l " + SafeText(file) + "; every user has to be able to read it."};
    }
    if (!report.IsGood()) {
        return {report.State(), HintOn(report.fault)};
    }
    if (report.fields.empty()) {
        return {"it is signed, but has no fields", kWhatAFieldIs};
    }
    return {"the certificate reader of this machine does not read it, though it is good",
            "brevikctl machine create registers the reader that belongs to the library."};
}

// Why the catalogue does not take a certificate's fields, and nothing where it does.
std::optional<Trouble> TroubleOfFields(const std::string& path,
                                       const std::vector<CertificateField>& fields) {
    if (path.find('\'') != std::string::npos) {
        return Trouble{"its path holds an apostrophe",
                       "The catalogue takes none; give it another name or folder."};
    }
    if (fields.empty()) {
        return Trouble{"its text has no fields", kWhatAFieldIs};
    }
    if (const CertificateField* field = FieldWithApostrophe(fields)) {
        return Trouble{"its field " + Quoted(field->name) + " holds an apostrophe",
                       "The catalogue takes no text with an apostrophe; U+2019 looks the same."};
    }
    return std::nullopt;
}

}  // namespace

void RequireDatabaseLibrary() {
    try {
        SqliteLibrary::Get();
    } catch (const std::exception& failure) {
        Fail("the catalogue cannot be read: " + SafeText(failure.what()),
             "Install that library; on Debian it is in the package libsqlcipher0.");
    }
}

CertificateReferences LoadCatalogue(CCertificateMgr& manager) {
    CertificateReferences certificates;
    try {
        manager.GetCertificateList(&certificates);
    } catch (const std::exception& failure) {
        RequireDatabaseLibrary();
        Fail("the catalogue cannot be read: " + SafeText(failure.what()),
             "Its database is " + Quoted(DatabasePath()) +
                 "; every user has to be able to write to it and to its folder.");
    }
    Utf8StringList paths;
    Utf8StringList guids;
    if (certificates.empty() && manager.GetCertificatePathsFromRegistry(&paths, &guids) == S_OK) {
        RequireDatabaseLibrary();
    }
    if (!manager.Missed().empty()) {
        Warn("the catalogue cannot be read in full for now: " + SafeText(manager.Missed()));
    }
    return certificates;
}

std::string DatabasePath() {
    return WideToNarrow(DatabaseFileIn(FindDatabaseFolder()));
}

std::vector<CertificateRecord> ReadRecords() {
    const std::string path = DatabasePath();
    std::map<std::string, std::vector<CertificateField>> found;
    if (!FileArgument(path).IsPresent()) {
        return {};
    }
    try {
        SQLite3WrapperDB database;
        database.Open(path);
        if (database.IsEmptyFile() ||
            database.QueryScalar("select count(*) from sqlite_master where name='" +
                                 std::string(RecordTable::kName) + "'") == 0) {
            return {};
        }
        const auto rows = RecordTable::LoadRowsAfter(database, "0");
        for (std::int32_t row = 0; row < rows->GetRowCount(); ++row) {
            found[Text(*rows, row, 0)].push_back({Text(*rows, row, 1), Text(*rows, row, 2)});
        }
    } catch (const std::exception& failure) {
        RequireDatabaseLibrary();
        Fail("the database " + Quoted(path) + " cannot be read: " + SafeText(failure.what()),
             "brevikctl database rebuild replaces one that is damaged.");
    }
    std::vector<CertificateRecord> records;
    for (auto& [key, fields] : found) {
        records.push_back({key, std::move(fields)});
    }
    return records;
}

std::optional<Trouble> TroubleOfPath(const std::string& path) {
    constexpr const char* kHint =
        "Give it as C:\\folder\\name.qzc: in the registry with brevikctl certificate install, or "
        "in the CertReferencePath that names it.";
    FileSystem::EnsureStarted();
    try {
        const std::string full = PlainText(FileSpec(FilePath(path)).GetPath());
        if (AsciiToLower(full) == AsciiToLower(path)) {
            return std::nullopt;
        }
        return Trouble{"its path " + Quoted(path) + " is an odd spelling of " + Quoted(full),
                       kHint};
    } catch (const FileException& failure) {
        return Trouble{"its path " + Quoted(path) + " names no file: " + failure.what(), kHint};
    }
}

CertificateContent ReadContent(const std::string& path) {
    std::string text;
    try {
        text = ReadCertificateFile(path, kVerificationKey);
    } catch (const _com_error&) {
        return {
            {},
            Trouble{"this machine has no certificate reader, so that no certificate can be read",
                    "brevikctl machine create registers it."}};
    }
    if (text.empty()) {
        try {
            return {{}, TroubleOfFile(path)};
        } catch (const std::exception& failure) {
            return {{},
                    Trouble{"its path cannot be used: " + SafeText(failure.what()),
                            "brevikctl certificate install writes a good one."}};
        }
    }
    CertificateContent content = {ParseCertificateText(text), {}};
    content.trouble = TroubleOfFields(path, content.fields);
    return content;
}
