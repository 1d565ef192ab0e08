#include "catalogue/records/SQLCertificate.h"

#include <exception>
#include <utility>

#include "catalogue/RecordGathering.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "catalogue/records/CertificateImport.h"
#include "catalogue/records/RecordAccess.h"
#include "catalogue/records/RecordTable.h"
#include "catalogue/records/SharedRecordStore.h"
#include "trace/UTrace.h"

namespace {

// The columns of the table: record key, name, value.
constexpr std::int32_t kNameColumn = 1;

}  // namespace

SQLCertificate::SQLCertificate() : db_(&SharedRecordStore::Get().Database()) {
    SharedRecordStore::Get().EnsureOpen();
}

bool SQLCertificate::Read(const char* key, const char* verificationKey, bool reimport) {
    try {
        RequireKey(key);
        SharedHandle<SQLite3WrapperTable> rows = FindRows(key);
        if (rows == nullptr || reimport) {
            const auto import = rows == nullptr ? ImportCertificate : ReimportCertificate;
            try {
                import(key, verificationKey, *db_);
            } catch (const std::exception& failure) {
                if (!SharedRecordStore::Get().RepairAfter(failure, *db_)) {
                    throw;
                }
                import(key, verificationKey, *db_);
            }
            rows = RecordAccess(*db_).RowsOf(key);
        }
        if (rows == nullptr) {
            throw SQLite3WrapperException(kWrapperError, "Invalid row index requested");
        }
        rows->SetSearchColumn(kNameColumn);
        table_ = std::move(rows);
        key_ = key;
        return true;
    } catch (const std::exception& failure) {
        RecordGathering::Note(failure);
    } catch (...) {
        // The component that reads certificate files could not be made.
    }
    UTrace::Error("Read failed, path: %s ", key);
    return false;
}

bool SQLCertificate::TableExist(const char* key) {
    return FindRows(key) != nullptr;
}

SharedHandle<SQLite3WrapperTable> SQLCertificate::FindRows(const char* key) {
    try {
        RequireKey(key);
        RecordTable::Quoted(key);  // a key that no statement can name has no rows
        return RecordAccess(*db_).RowsOf(key);
    } catch (const std::exception& failure) {
        RecordGathering::Note(failure);
        UTrace::Error("TableExist failed, path: %s ", key);
        return nullptr;
    }
}

bool SQLCertificate::TableList(std::vector<std::string>* keys) {
    return RecordAccess(*db_).ListKeys(keys);
}

void SQLCertificate::DeleteRecord(const char* key) {
    if (TableExist(key)) {
        RecordAccess(*db_).Edit([&](SQLite3WrapperDB& db) { RecordTable::DeleteRows(db, {key}); });
    }
}

bool SQLCertificate::GetDatabaseKeys(std::vector<std::string>* keys) {
    try {
        keys->clear();
        SQLCertificate certificate;
        return certificate.TableList(keys);
    } catch (const std::exception& failure) {
        RecordGathering::Note(failure);
        return false;
    }
}
