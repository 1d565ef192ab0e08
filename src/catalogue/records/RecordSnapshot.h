// The rows of all certificates, read in one pass.
//
// The table has no index, so that a statement for one certificate reads the rows of all of them.
// This keeps what one statement gave, split by certificate. Each use first asks the database for
// its version, which changes whenever another connection has written, and its last row: with
// another version all rows are read anew, with a further last row the new ones. What this
// connection itself deletes or changes is not noticed: Clear after it.
//
// Rows that were handed out stay as they are, and share their texts with the snapshot. Guarded by
// the lock of the connection; failures are those of statements.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"

class RecordSnapshot {
  public:
    // The rows of a certificate as the database has them now, in a table of the caller's own; null
    // when there are none.
    SharedHandle<SQLite3WrapperTable> Find(SQLite3WrapperDB& db, const std::string& key);

    // The record keys in the order of their first rows.
    std::vector<std::string> Keys(SQLite3WrapperDB& db);
    void Clear();

  private:
    using Certificates = std::unordered_map<std::string, SharedHandle<SQLite3WrapperTable>>;

    void Refresh(SQLite3WrapperDB& db);
    void Add(SQLite3WrapperDB& db, const SQLite3WrapperTable& table);

    bool loaded_ = false;
    std::string version_;
    std::string lastRow_;
    Certificates certificates_;
    std::vector<const std::string*> order_;  // keys of `certificates_`
};
