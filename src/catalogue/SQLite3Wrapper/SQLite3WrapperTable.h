// A result in memory, read as name and value pairs: names are in the search column, values in the
// column right of it.
//
// Names are compared in at most 512 bytes, without regard to the case of ASCII letters. Tables may
// share one result, each with its own rows. Any number of threads may read one object. Every
// operation throws "Null Results pointer" without a result.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "text/SharedHandle.h"

// The texts of a result, row by row after a row of headings, as the database library gives them.
using SQLite3WrapperResults = SharedHandle<char*>;

class SQLite3WrapperTable {
  public:
    SQLite3WrapperTable(SQLite3WrapperResults results, std::int32_t rowCount,
                        std::int32_t columnCount);

    // The rows from `firstRow` on, counted from 0.
    SQLite3WrapperTable(SQLite3WrapperResults results, std::int32_t firstRow, std::int32_t rowCount,
                        std::int32_t columnCount);
    virtual ~SQLite3WrapperTable() = default;

    // Throws "Invalid row index requested" for a column that has none right of it; in a result
    // without rows that is every column.
    void SetSearchColumn(std::int32_t column);

    // The first value of a name. Throws "Invalid field name requested" when no row has it. With a
    // default, that stands for a value of no text.
    const char* GetValue(const char* name) const;
    const char* GetValue(const char* name, const char* otherwise) const {
        const char* const value = GetValue(name);
        return value != nullptr ? value : otherwise;
    }
    std::int32_t GetValueAsNumber(const char* name, std::int32_t otherwise) const;

    // The values of all rows of a name, in row order; throws as above.
    std::vector<std::string> GetValues(const char* name) const;

    bool HasField(const char* name) const { return FindValue(name) != nullptr; }

    // The same reads for names that may be missing: null or an empty list then, and nothing thrown.
    // A value of no text is found as "".
    const char* FindValue(const char* name) const;
    std::vector<std::string> FindValues(const char* name) const;

    std::int32_t GetRowCount() const { return rowCount_; }

    // A text of the result; null for no value. REQUIRES: the row and the column are there.
    const char* GetText(std::int32_t row, std::int32_t column) const;

    // A table of some of this one's rows, on the same result.
    SharedHandle<SQLite3WrapperTable> MakePart(std::int32_t firstRow, std::int32_t rowCount) const;

  private:
    void RequireResults() const;

    // The first row of a name from `row` on; rowCount_ when there is none, also for a null name.
    std::int32_t FindRow(const char* name, std::int32_t row) const;

    SQLite3WrapperResults results_;
    std::int32_t firstRow_;
    std::int32_t rowCount_;
    std::int32_t columnCount_;
    std::int32_t searchColumn_ = 0;
};
