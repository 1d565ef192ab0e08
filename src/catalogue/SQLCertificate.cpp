#include "catalogue/SQLCertificate.h"

#include <exception>
#include <mutex>
#include <utility>

#include "catalogue/CertificateImport.h"
#include "catalogue/ImmediateTransaction.h"
#include "catalogue/RecordGathering.h"
#include "catalogue/RecordTable.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "catalogue/SharedRecordStore.h"
#include "text/VelmarException.h"
#include "trace/UTrace.h"

namespace {

// The columns of the table: record key, name, value.
constexpr std::int32_t kNameColumn = 1;

using StoreLock = std::lock_guard<std::recursive_mutex>;

std::recursive_mutex& StoreMutex() {
    return SharedRecordStore::Get().Mutex();
}

void RequireKey(const char* key) {
    if (key == nullptr) {
        throw VelmarException(".\\SQLCertificate", __LINE__);
    }
}

}  // namespace

SQLCertificate::SQLCertificate() : db_(&SharedRecordStore::Get().Database()) {
    SharedRecordStore::Get().EnsureOpen();
}

SQLCertificate::SQLCertificate(SQLite3WrapperDB* database) : db_(database) {}

SQLCertificate::~SQLCertificate() = default;

bool SQLCertificate::Read(const char* key, const char* verificationKey, bool reimport) {
    try {
        RequireKey(key);
        const StoreLock lock(StoreMutex());
        const bool exists = TableExist(key);
        if (exists && reimport) {
            ReimportCertificate(key, verificationKey, *db_);
        } else if (!exists) {
            ImportCertificate(key, verificationKey, *db_);
        }
        SharedHandle<SQLite3WrapperTable> table = LoadRows(key);
        table->SetSearchColumn(kNameColumn);
        table_ = std::move(table);
        key_ = key;
        return true;
    } catch (const std::exception& failure) {
        RecordGathering::Note(failure);
        UTrace::Error("Read failed, path: %s ", key);
        return false;
    } catch (...) {
        UTrace::Error("Read failed, path: %s ", key);
        return false;
    }
}

SharedHandle<SQLite3WrapperTable> SQLCertificate::LoadRows(const std::string& key) {
    RequireRecords(*db_);
    RecordSnapshot* const snapshot = SharedRecordStore::Get().SnapshotOf(db_);
    if (snapshot == nullptr) {
        return RecordTable::LoadRows(*db_, key);
    }
    SharedHandle<SQLite3WrapperTable> rows = snapshot->Find(*db_, key);
    if (!rows) {
        throw SQLite3WrapperException(kWrapperError, "Invalid row index requested");
    }
    return rows;
}

std::string SQLCertificate::GetKey() const {
    return key_;
}

bool SQLCertificate::TableExist(const char* key) {
    try {
        RequireKey(key);
        RecordTable::Quoted(key);  // a key that no statement can name has no rows
        const StoreLock lock(StoreMutex());
        RequireRecords(*db_);
        RecordSnapshot* const snapshot = SharedRecordStore::Get().SnapshotOf(db_);
        return snapshot != nullptr ? snapshot->Find(*db_, key) != nullptr
                                   : RecordTable::HasRows(*db_, key);
    } catch (const std::exception& failure) {
        RecordGathering::Note(failure);
        UTrace::Error("TableExist failed, path: %s ", key);
        return false;
    }
}

bool SQLCertificate::TableList(std::vector<std::string>* keys) {
    const StoreLock lock(StoreMutex());
    return ListRecordKeys(*db_, keys);
}

void SQLCertificate::DeleteRecord(const char* key) {
    const StoreLock lock(StoreMutex());
    if (!TableExist(key)) {
        return;
    }
    ImmediateTransaction transaction(*db_);
    RecordTable::DeleteRows(*db_, std::string(key));
    RecordTable::CountEdit(*db_);
    transaction.Commit();
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
