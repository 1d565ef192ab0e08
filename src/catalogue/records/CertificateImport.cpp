#include "catalogue/records/CertificateImport.h"

#include <string>
#include <vector>

#include "catalogue/SQLite3Wrapper/SqliteLibrary.h"
#include "catalogue/certificates/CertificateReader.h"
#include "catalogue/certificates/CertificateText.h"
#include "catalogue/records/RecordAccess.h"
#include "catalogue/records/RecordTable.h"
#include "text/VelmarException.h"

namespace {

// The statements that add a certificate's rows. The file is read here, outside of any lock of ours:
// the component that reads it is foreign code.
std::vector<std::string> InsertStatementsOf(const std::string& key, const char* verificationKey) {
    const std::string text =
        ReadCertificateFile(key, verificationKey != nullptr ? verificationKey : "");
    std::vector<std::string> statements;
    for (const CertificateField& field : ParseCertificateText(text)) {
        statements.push_back(RecordTable::InsertStatement(key, field.name, field.value));
    }
    return statements;
}

}  // namespace

void RequireKey(const char* key) {
    if (key == nullptr) {
        throw VelmarException(".\\SQLCertificate", __LINE__);
    }
}

std::uint8_t ImportCertificate(const char* key, const char* verificationKey, SQLite3WrapperDB& db) {
    RequireKey(key);
    SqliteLibrary::Get();
    {
        // The table comes to be before the first file is read, whatever that gives: from then on,
        // that a certificate has no rows is no failure of the database.
        RecordAccess access(db);
        access.EnsureTable();
        if (access.RowsOf(key) != nullptr) {
            return 1;
        }
    }
    const std::vector<std::string> statements = InsertStatementsOf(key, verificationKey);
    if (!statements.empty()) {
        RecordAccess(db).Import(key, statements);
    }
    return 1;
}

std::uint8_t ReimportCertificate(const char* key, const char* verificationKey,
                                 SQLite3WrapperDB& db) {
    RequireKey(key);
    SqliteLibrary::Get();
    const std::vector<std::string> statements = InsertStatementsOf(key, verificationKey);
    RecordAccess access(db);
    access.EnsureTable();
    access.Edit([&](SQLite3WrapperDB& connection) {
        RecordTable::DeleteRows(connection, {key});
        for (const std::string& statement : statements) {
            connection.Execute(statement);
        }
    });
    return 1;
}
