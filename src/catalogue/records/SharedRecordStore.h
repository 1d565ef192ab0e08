// The process's one connection to the record database of the machine.
//
// Never destroyed: a host may call while the process ends. Any thread.
#pragma once

#include <exception>
#include <string>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"
#include "catalogue/records/RecordSnapshot.h"
#include "platform/never_destroyed.h"
#include "text/TimedMutex.h"

class RecordAccess;

class SharedRecordStore {
  public:
    static SharedRecordStore& Get();

    // Opens the database, replaces a damaged one where it can, and drops the records of files that
    // are gone; once in the process. Throws a SQLite3WrapperException when it cannot be opened, and
    // is then tried again by the next call.
    void EnsureOpen();

    // Loads the database library where there are records to read. That runs code of others, which
    // may call us: holders of a lock call this first.
    static void LoadLibrary();

    // To be used through a RecordAccess.
    SQLite3WrapperDB& Database() { return db_; }

    // Whether a statement failed because the shared database was damaged, which is mended now.
    // Tries once in the process.
    bool RepairAfter(const std::exception& failure, const SQLite3WrapperDB& db);

    // Drops all records, if need be with the database. Throws a SQLite3WrapperException on failure.
    void DropRecords();

  private:
    friend class RecordAccess;
    friend class NeverDestroyed<SharedRecordStore>;

    SharedRecordStore() = default;

    // These belong to the thread that has the access.
    void Reopen();
    void Examine(RecordAccess& access);
    enum class Outcome { kMended, kStays, kMayPass };
    Outcome Repair(RecordAccess& access);
    void ReplaceIfDamaged(RecordAccess& access);
    void ReadAll(RecordAccess& access);
    bool IsDamaged(RecordAccess& access);
    void Purge(RecordAccess& access);

    TimedMutex mutex_;  // held by a RecordAccess, guards the rest
    SQLite3WrapperDB db_;
    RecordSnapshot snapshot_;
    bool existed_ = false;  // before this process opened it
    bool opened_ = false;
    bool examined_ = false;
    bool purged_ = false;
    bool triedRepair_ = false;  // after a failed import
};
