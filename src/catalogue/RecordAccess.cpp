#include "catalogue/RecordAccess.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <iterator>

#include "catalogue/RecordGathering.h"
#include "catalogue/RecordTable.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "catalogue/SharedRecordStore.h"
#include "trace/UTrace.h"

namespace {

// A transaction that holds the database's write lock from its beginning, so that what is read in it
// stays true until it ends. Without a Commit that succeeded, nothing has been done.
class WriteTransaction {
  public:
    explicit WriteTransaction(SQLite3WrapperDB& db) : db_(db) { db_.Execute("begin immediate"); }
    WriteTransaction(const WriteTransaction&) = delete;
    WriteTransaction& operator=(const WriteTransaction&) = delete;
    ~WriteTransaction() {
        try {
            if (!ended_) {
                db_.Execute("rollback");
            }
        } catch (const std::exception&) {
            // Some failures have ended the transaction themselves.
        }
    }

    void Commit() {
        db_.Execute("commit");
        ended_ = true;
    }

  private:
    SQLite3WrapperDB& db_;
    bool ended_ = false;
};

}  // namespace

RecordAccess::RecordAccess(SQLite3WrapperDB& db)
    : lock_(SharedRecordStore::Get().mutex_,
            std::chrono::milliseconds(RecordGathering::LongestWait())),
      db_(db),
      snapshot_(&db == &SharedRecordStore::Get().db_ ? SharedRecordStore::Get().snapshot_ : own_) {
    if (!lock_) {
        throw SQLite3WrapperException(kSqliteBusy, "another thread waits for the database");
    }
    if (&snapshot_ != &own_) {
        db_.SetBusyTimeout(static_cast<std::int32_t>(RecordGathering::LongestWait()));
    }
}

bool RecordAccess::ListKeys(std::vector<std::string>* keys) {
    try {
        std::ranges::copy(Keys(), std::back_inserter(*keys));
        return true;
    } catch (const std::exception& failure) {
        RecordGathering::Note(failure);
        UTrace::Error("TableList failed ");
        return false;
    }
}

void RecordAccess::EnsureTable() {
    if (!db_.TableExists(RecordTable::kName)) {
        WriteTransaction transaction(db_);
        RecordTable::CreateIfMissing(db_);
        transaction.Commit();
    }
}

void RecordAccess::Import(const std::string& key,
                          const std::vector<std::string>& insertStatements) {
    WriteTransaction transaction(db_);
    // Another process may have imported the file since.
    if (RowsOf(key) == nullptr) {
        for (const std::string& statement : insertStatements) {
            db_.Execute(statement);
        }
        transaction.Commit();
    }
}

void RecordAccess::Edit(const std::function<void(SQLite3WrapperDB&)>& change) {
    snapshot_.Clear();
    WriteTransaction transaction(db_);
    change(db_);
    transaction.Commit();
}
