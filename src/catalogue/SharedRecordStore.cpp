#include "catalogue/SharedRecordStore.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iterator>
#include <memory>

#include "catalogue/ImmediateTransaction.h"
#include "catalogue/RecordGathering.h"
#include "catalogue/RecordTable.h"
#include "catalogue/RepairLock.h"
#include "catalogue/SQLCertificate.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "text/StringConversions.h"
#include "trace/UTrace.h"

namespace {

// On either side of the deletion of a database, for other programs to let go of it.
constexpr DWORD kRepairPause = 500;

// Failures that come and go with what other programs do, with the rights of this one or with room
// on the disk, and tell nothing of the file.
constexpr std::int32_t kPassingFailures[] = {kSqlitePermission, kSqliteBusy, kSqliteLocked,
                                             kSqliteReadOnly,   kSqliteFull, kSqliteCannotOpen,
                                             kWrapperError};

bool IsPassing(const SQLite3WrapperException& failure) {
    return std::find(std::begin(kPassingFailures), std::end(kPassingFailures), failure.GetCode()) !=
           std::end(kPassingFailures);
}

// Whether the records cannot be had because of what the file holds. A file without any bytes is one
// that holds no records yet.
bool IsDamaged(SQLite3WrapperDB& db) {
    try {
        RequireRecords(db);
        std::vector<std::string> keys;
        RecordTable::ListKeys(db, &keys);
        return false;
    } catch (const SQLite3WrapperException& failure) {
        return !IsPassing(failure) && !db.IsEmptyFile();
    }
}

bool CanBeOpened(const std::string& path) {
    std::FILE* const file = _wfopen(NarrowToWide(path).c_str(), WIDE("r"));
    return file != nullptr && std::fclose(file) == 0;
}

}  // namespace

void RequireRecords(const SQLite3WrapperDB& db) {
    if (!db.IsConnected() && db.IsEmptyFile()) {
        throw SQLite3WrapperException(kSqliteError, "the database file is empty");
    }
}

bool ListRecordKeys(SQLite3WrapperDB& db, std::vector<std::string>* keys) {
    try {
        RequireRecords(db);
        RecordTable::ListKeys(db, keys);
        return true;
    } catch (const std::exception& failure) {
        RecordGathering::Note(failure);
        UTrace::Error("TableList failed ");
        return false;
    }
}

SharedRecordStore& SharedRecordStore::Get() {
    static SharedRecordStore& store = *new SharedRecordStore;
    return store;
}

void SharedRecordStore::EnsureOpen() {
    const std::lock_guard lock(mutex_);
    db_.SetBusyTimeout(static_cast<std::int32_t>(RecordGathering::LongestWait()));
    if (!opened_) {
        Open();
        opened_ = true;
    }
    if (!purged_) {
        purged_ = true;
        Purge();
    }
}

void SharedRecordStore::Open() {
    const std::string path = SQLCertificate::SqlDatabasePath();
    const bool existed = PathFileExistsW(NarrowToWide(path).c_str());
    snapshot_.Clear();
    db_.Open(path);
    std::vector<std::string> scratch;
    if (existed && !ListRecordKeys(db_, &scratch) && IsDamaged(db_)) {
        Replace(path);
    }
}

// Several processes may meet the same damaged file. One at a time gets to replace it, and each
// looks again first: the one before it may have done so.
void SharedRecordStore::Replace(const std::string& path) {
    const RepairLock lock(path);
    db_.Close();
    db_.Open(path);
    if (!IsDamaged(db_)) {
        return;
    }
    db_.Close();
    Sleep(kRepairPause);
    db_.Open(path);
    if (!IsDamaged(db_)) {
        return;
    }
    db_.Close();
    DeleteFileW(NarrowToWide(path).c_str());
    Sleep(kRepairPause);
    db_.Open(path);
}

void SharedRecordStore::Purge() {
    std::vector<std::string> keys;
    if (!ListRecordKeys(db_, &keys)) {
        return;
    }
    std::vector<std::string> gone;
    for (const std::string& key : keys) {
        if (CanBeOpened(key)) {
            continue;
        }
        if (RecordTable::CanBeQuoted(key)) {
            gone.push_back(key);
        } else {
            UTrace::Error("TableExist failed, path: %s ", key.c_str());
        }
    }
    if (gone.empty()) {
        return;
    }
    try {
        ImmediateTransaction transaction(db_);
        RecordTable::DeleteRows(db_, gone);
        RecordTable::CountEdit(db_);
        transaction.Commit();
    } catch (const std::exception& failure) {
        RecordGathering::Note(failure);
        // The records stay, and the next process tries again.
    }
}
