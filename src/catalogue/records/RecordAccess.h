// The records of one connection in the hands of one thread.
//
// An object keeps all other threads out of the record store: it is short-lived, no foreign code
// runs meanwhile, and a thread has one at a time. Failures are SQLite3WrapperExceptions.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"
#include "catalogue/records/RecordSnapshot.h"
#include "text/TimedMutex.h"

class RecordAccess {
  public:
    // Waits for other threads, and statements on the shared connection wait for other processes, as
    // long in all as the thread's RecordGathering allows.
    explicit RecordAccess(SQLite3WrapperDB& db);
    RecordAccess(const RecordAccess&) = delete;
    RecordAccess& operator=(const RecordAccess&) = delete;

    // See RecordSnapshot.
    SharedHandle<SQLite3WrapperTable> RowsOf(const std::string& key) {
        return snapshot_.Find(db_, key);
    }
    std::vector<std::string> Keys() { return snapshot_.Keys(db_); }

    // Appends the keys. False, with a line on the trace, when they cannot be read.
    bool ListKeys(std::vector<std::string>* keys);

    // Makes the table where it is missing.
    void EnsureTable();

    // Adds the rows of a certificate in one transaction, unless it has some by then.
    void Import(const std::string& key, const std::vector<std::string>& insertStatements);

    // Changes or takes away rows in one transaction, in which nothing is read through this object.
    void Edit(const std::function<void(SQLite3WrapperDB&)>& change);

  private:
    // Runs a change in a transaction that holds the write lock from its beginning, so that what is
    // read in it stays true.
    void Write(const std::function<void()>& change);

    const std::unique_lock<TimedMutex> lock_;
    SQLite3WrapperDB& db_;
    RecordSnapshot own_;  // of a connection other than the shared one
    RecordSnapshot& snapshot_;
};
