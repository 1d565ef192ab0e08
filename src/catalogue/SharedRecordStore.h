// The process's one connection to the record database of the machine.
//
// Never destroyed: a host may call while the process ends. Any thread, as told below.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "catalogue/RecordSnapshot.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"

class SharedRecordStore {
  public:
    static SharedRecordStore& Get();

    // Opens the database, replaces one that cannot be read, and drops the records of files that are
    // gone; once in the process. Throws what the opening throws, and is then tried again by the
    // next call.
    void EnsureOpen();

    // Held around every use of a connection. Its holder may take it again.
    std::recursive_mutex& Mutex() { return mutex_; }

    SQLite3WrapperDB& Database() { return db_; }

    // The rows of the shared connection; null for another one.
    RecordSnapshot* SnapshotOf(const SQLite3WrapperDB* db) {
        return db == &db_ ? &snapshot_ : nullptr;
    }

  private:
    SharedRecordStore() = default;

    void Open();
    void Replace(const std::string& path);
    void Purge();

    std::recursive_mutex mutex_;
    SQLite3WrapperDB db_;
    RecordSnapshot snapshot_;
    bool opened_ = false;
    bool purged_ = false;
};

// Appends the distinct record keys. A failure is told on the trace, and false.
bool ListRecordKeys(SQLite3WrapperDB& db, std::vector<std::string>* keys);

// Throws when the database file holds nothing at all, which takes no database library to tell.
void RequireRecords(const SQLite3WrapperDB& db);
