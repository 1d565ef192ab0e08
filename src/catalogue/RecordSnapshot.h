// The rows of all certificates, read in one pass.
//
// The table of records has no index, so that a statement for one certificate reads the rows of all
// of them: a process that loads two thousand certificates one by one would read the table two
// thousand times. This keeps what one statement gave, split by certificate. Each use first asks
// the database for three numbers: the count of edits, the last row, and the version, which changes
// with whatever another connection writes. While all stay as they were, the rows do too. When there
// are further rows and the edits are the same, only these rows are read; else all are. So it is
// right whatever programs write in between that count their edits, and sees what others write as
// long as no rows are added in the same moment.
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
    // What the database told of itself ahead of the reading of the rows.
    struct State {
        std::int32_t editCount = 0;
        std::string lastRow;
        std::string version;

        bool operator==(const State&) const = default;
    };

    void Refresh(SQLite3WrapperDB& db);

    // Takes the rows behind those that are known. False when there are none, or when they are not
    // those of further certificates.
    bool AddBehind(SQLite3WrapperDB& db);
    void Add(const SQLite3WrapperTable& table);

    bool loaded_ = false;
    State state_;
    std::unordered_map<std::string, SharedHandle<SQLite3WrapperTable>> certificates_;
};
