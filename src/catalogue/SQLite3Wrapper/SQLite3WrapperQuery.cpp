#include "catalogue/SQLite3Wrapper/SQLite3WrapperQuery.h"

#include <utility>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "catalogue/SQLite3Wrapper/SqliteLibrary.h"

SQLite3WrapperQuery::SQLite3WrapperQuery(sqlite3* db, sqlite3_stmt* statement, bool atEnd,
                                         bool ownsStatement)
    : db_(db),
      statement_(statement),
      atEnd_(atEnd),
      columnCount_(SqliteLibrary::Get().column_count(statement)),
      ownsStatement_(ownsStatement) {}

SQLite3WrapperQuery::~SQLite3WrapperQuery() {
    try {
        Finish();
    } catch (const SQLite3WrapperException&) {
        // The statement is gone all the same.
    }
}

void SQLite3WrapperQuery::RequireStatement() const {
    if (statement_ == nullptr) {
        throw SQLite3WrapperException(kWrapperError, "Null Virtual Machine pointer");
    }
}

std::int32_t SQLite3WrapperQuery::GetColumnCount() const {
    RequireStatement();
    return columnCount_;
}

const char* SQLite3WrapperQuery::GetColumnText(std::int32_t index) const {
    RequireStatement();
    if (index < 0 || index >= columnCount_) {
        throw SQLite3WrapperException(kWrapperError, "Invalid field index requested");
    }
    return reinterpret_cast<const char*>(SqliteLibrary::Get().column_text(statement_, index));
}

std::uint8_t SQLite3WrapperQuery::IsAtEnd() const {
    RequireStatement();
    return atEnd_;
}

void SQLite3WrapperQuery::NextRow() {
    RequireStatement();
    const SqliteCall call;
    const int result = call->step(statement_);
    if (result == kSqliteDone) {
        atEnd_ = 1;
    } else if (result != kSqliteRow) {
        const int reason = call->finalize(std::exchange(statement_, nullptr));
        throw SQLite3WrapperException(reason, call->errmsg(db_));
    }
}

void SQLite3WrapperQuery::Finish() {
    if (statement_ == nullptr || !ownsStatement_) {
        return;
    }
    const SqliteCall call;
    const int result = call->finalize(std::exchange(statement_, nullptr));
    if (result != kSqliteOk) {
        throw SQLite3WrapperException(result, call->errmsg(db_));
    }
}
