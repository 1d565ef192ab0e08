#include "catalogue/CertificateImport.h"

#include <mutex>
#include <string>
#include <vector>

#include "catalogue/CertificateReader.h"
#include "catalogue/CertificateText.h"
#include "catalogue/ImmediateTransaction.h"
#include "catalogue/RecordTable.h"
#include "catalogue/SharedRecordStore.h"
#include "text/VelmarException.h"

namespace {

void RequireKey(const char* key) {
    if (key == nullptr) {
        throw VelmarException(".\\SQLCertificate", __LINE__);
    }
}

// The statements that add a certificate's rows. The file is read here, ahead of the transaction,
// so that the database is locked for the writing alone.
std::vector<std::string> InsertStatementsOf(const std::string& key, const char* verificationKey) {
    const std::string text =
        ReadCertificateFile(key, verificationKey != nullptr ? verificationKey : "");
    std::vector<std::string> statements;
    for (const CertificateField& field : ParseCertificateText(text)) {
        statements.push_back(RecordTable::InsertStatement(key, field.name, field.value));
    }
    return statements;
}

// REQUIRES: the table is there.
bool HasRows(SQLite3WrapperDB& db, const std::string& key) {
    RecordSnapshot* const snapshot = SharedRecordStore::Get().SnapshotOf(&db);
    return snapshot != nullptr ? snapshot->Find(db, key) != nullptr : RecordTable::HasRows(db, key);
}

// The table comes to be ahead of the first file's reading, whatever that gives: from then on, that
// a certificate has no rows is no failure of the database.
void EnsureTable(SQLite3WrapperDB& db) {
    if (!db.IsEmptyFile() && db.TableExists(RecordTable::kName)) {
        return;
    }
    ImmediateTransaction transaction(db);
    RecordTable::CreateIfMissing(db);
    transaction.Commit();
}

void ExecuteAll(SQLite3WrapperDB& db, const std::vector<std::string>& statements) {
    for (const std::string& statement : statements) {
        db.Execute(statement);
    }
}

}  // namespace

std::uint8_t ImportCertificate(const char* key, const char* verificationKey, SQLite3WrapperDB& db) {
    RequireKey(key);
    const std::lock_guard lock(SharedRecordStore::Get().Mutex());
    EnsureTable(db);
    if (HasRows(db, key)) {
        return 1;
    }
    const std::vector<std::string> statements = InsertStatementsOf(key, verificationKey);
    if (statements.empty()) {
        return 1;
    }
    ImmediateTransaction transaction(db);
    // Another process may have imported the file since.
    if (!HasRows(db, key)) {
        ExecuteAll(db, statements);
        transaction.Commit();
    }
    return 1;
}

std::uint8_t ReimportCertificate(const char* key, const char* verificationKey,
                                 SQLite3WrapperDB& db) {
    RequireKey(key);
    const std::lock_guard lock(SharedRecordStore::Get().Mutex());
    EnsureTable(db);
    const std::vector<std::string> statements = InsertStatementsOf(key, verificationKey);
    ImmediateTransaction transaction(db);
    RecordTable::DeleteRows(db, key);
    RecordTable::CountEdit(db);
    ExecuteAll(db, statements);
    transaction.Commit();
    return 1;
}
