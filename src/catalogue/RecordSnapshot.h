// The rows of all certificates, read in one pass.
//
// The table of records has no index, so that a statement for one certificate reads the rows of all
// of them: a process that loads two thousand certificates one by one would read the table two
// thousand times. This keeps what one statement gave, split by certificate. Each use first asks
// the database for two numbers, the count of edits and the last row: while both stay as they were,
// the rows do too; when there are merely rows behind the last one, only these are read; else all
// are. So it is right whatever other processes write in between.
//
// Rows that were handed out stay as they are, and share their texts with the snapshot. Under the
// lock of its connection.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"

class RecordSnapshot {
  public:
    // The rows of a certificate as the database has them now, in a table of the caller's own; null
    // when there are none. Throws a SQLite3WrapperException as a statement would.
    SharedHandle<SQLite3WrapperTable> Find(SQLite3WrapperDB& db, const std::string& key);

    // Forgets everything, such as when the connection goes to another file.
    void Clear();

  private:
    void Refresh(SQLite3WrapperDB& db);
    void Add(const SQLite3WrapperTable& table);

    bool loaded_ = false;
    std::int32_t editCount_ = 0;
    std::string lastRow_;
    std::unordered_map<std::string, SharedHandle<SQLite3WrapperTable>> certificates_;
};
