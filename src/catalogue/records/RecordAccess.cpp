#include "catalogue/records/RecordAccess.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <iterator>

#include "catalogue/RecordGathering.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "catalogue/records/RecordTable.h"
#include "catalogue/records/SharedRecordStore.h"
#include "trace/UTrace.h"

namespace {

// Without a Commit that succeeded, nothing has been done.
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
        Write([&] { RecordTable::CreateIfMissing(db_); });
    }
}

void RecordAccess::Import(const std::string& key,
                          const std::vector<std::string>& insertStatements) {
    Write([&] {
        // Another process may have imported the file since.
        if (RowsOf(key) == nullptr) {
            for (const std::string& statement : insertStatements) {
                db_.Execute(statement);
            }
        }
    });
}

void RecordAccess::Edit(const std::function<void(SQLite3WrapperDB&)>& change) {
    snapshot_.Clear();
    Write([&] { change(db_); });
}

void RecordAccess::Write(const std::function<void()>& change) {
    for (bool again = false;; again = true) {
        try {
            WriteTransaction transaction(db_);
            change();
            transaction.Commit();
            return;
        } catch (const SQLite3WrapperException& failure) {
            if (again || failure.GetCode() != kSqliteReadOnly) {
                throw;
            }
        }
        // Another process may have replaced the file since, or opening it for writing failed once,
        // after which the library takes it for read-only.
        snapshot_.Clear();
        db_.Reconnect();
    }
}
