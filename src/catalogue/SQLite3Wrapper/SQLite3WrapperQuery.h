// The rows of a running statement, one at a time.
//
// Belongs to the thread that uses its connection, which must outlive it.
#pragma once

#include <cstdint>

struct sqlite3;
struct sqlite3_stmt;

class SQLite3WrapperQuery {
  public:
    // A statement that has been stepped once: `atEnd` when it gave no row, else the first row is
    // the current one. With `ownsStatement` the object finalises it.
    SQLite3WrapperQuery(sqlite3* db, sqlite3_stmt* statement, bool atEnd, bool ownsStatement);
    SQLite3WrapperQuery(const SQLite3WrapperQuery&) = delete;
    SQLite3WrapperQuery& operator=(const SQLite3WrapperQuery&) = delete;

    // Finishes; a failure is swallowed.
    virtual ~SQLite3WrapperQuery();

    // Each of these throws "Null Virtual Machine pointer" when the query is finished.

    std::int32_t GetColumnCount() const;

    // A column of the current row, valid until the next row; null for no value. Throws "Invalid
    // field index requested" for a column that there is not.
    const char* GetColumnText(std::int32_t index) const;

    // 1 after the last row.
    std::uint8_t IsAtEnd() const;

    // A step that fails finishes the query and throws.
    void NextRow();

    // Ends the statement; a second time it does nothing.
    void Finish();

  private:
    void RequireStatement() const;

    sqlite3* db_;
    sqlite3_stmt* statement_;
    std::uint8_t atEnd_;
    std::int32_t columnCount_;
    std::uint8_t ownsStatement_;
};
