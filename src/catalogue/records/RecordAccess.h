// The records of one connection in the hands of one thread.
//
// As long as an object lives its thread is the only one in the process that uses the record store:
// so it is short-lived, nothing that runs foreign code is done within, and a thread has one at a
// time. Failures are SQLite3WrapperExceptions.
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

    // The rows of a certificate as the database has them now, in a table of the caller's own; null
    // when there are none.
    SharedHandle<SQLite3WrapperTable> RowsOf(const std::string& key) {
        return snapshot_.Find(db_, key);
    }

    // The record keys in the order of their first rows.
    std::vector<std::string> Keys() { return snapshot_.Keys(db_); }

    // Appends them. False, said on the trace, when they cannot be read.
    bool ListKeys(std::vector<std::string>* keys);

    // Makes the table where it is missing.
    void EnsureTable();

    // Adds the rows of a certificate in one transaction, unless it has some by then.
    void Import(const std::string& key, const std::vector<std::string>& insertStatements);

    // Changes or takes away rows in one transaction, in which nothing is read through this object.
    void Edit(const std::function<void(SQLite3WrapperDB&)>& change);

  private:
    // Runs a change in a transaction that holds the database's write lock from its beginning, so
    // that what is read in it stays true until it ends.
    void Write(const std::function<void()>& change);

    const std::unique_lock<TimedMutex> lock_;
    SQLite3WrapperDB& db_;
    RecordSnapshot own_;  // of a connection other than the shared one
    RecordSnapshot& snapshot_;
};
