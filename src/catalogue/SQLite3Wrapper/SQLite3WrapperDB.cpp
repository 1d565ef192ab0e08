#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"

#include <cstdio>
#include <memory>
#include <utility>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "catalogue/SQLite3Wrapper/SqliteLibrary.h"
#include "platform/database_library.h"
#include "platform/files.h"

namespace {

// The key is handed over with its NUL.
constexpr char kKey[] = "TorvaKD19";

// The library's default count is for passwords that people think up, and costs some 50 milliseconds
// an opening. This key stands in the program, where whoever wants it can read it.
constexpr char kCheapKeyDerivation[] = "PRAGMA kdf_iter = 1";

// How often a statement is prepared anew because another process has changed the tables since.
constexpr int kMostPreparations = 8;

// An error text of the library, freed with the object.
class ErrorText {
  public:
    explicit ErrorText(const SqliteLibrary& library) : library_(library) {}
    ErrorText(const ErrorText&) = delete;
    ErrorText& operator=(const ErrorText&) = delete;
    ~ErrorText() { library_.free(text_); }

    char** Out() { return &text_; }
    const char* Get() const { return text_; }

  private:
    const SqliteLibrary& library_;
    char* text_ = nullptr;
};

}  // namespace

SQLite3WrapperDB::~SQLite3WrapperDB() {
    Close();
}

void SQLite3WrapperDB::Open(const std::string& path) {
    Close();
    path_ = NarrowToWide(path);
    try {
        if (!MakeSharedFile(path_.c_str()) && GetLastError() != ERROR_FILE_EXISTS) {
            throw SQLite3WrapperException(kSqliteCannotOpen, "unable to open database file");
        }
        if (!IsEmptyFile()) {
            Connect();
        }
    } catch (...) {
        path_.clear();
        throw;
    }
}

void SQLite3WrapperDB::Connect() {
    const SqliteLibrary& library = SqliteLibrary::Get();
    const int result = library.open(DatabaseFilePath(path_.c_str()).c_str(), &db_);
    if (result != kSqliteOk) {
        const SQLite3WrapperException failure(result, library.errmsg(db_));
        library.close(db_);
        db_ = nullptr;
        throw failure;
    }
    // A wrong key shows when the first statement fails.
    library.key(db_, kKey, sizeof kKey);
    library.exec(db_, kCheapKeyDerivation, nullptr, nullptr, nullptr);
    SetBusyTimeout(busyTimeoutMs_);
}

void SQLite3WrapperDB::Close() {
    if (db_ != nullptr) {
        SqliteLibrary::Get().close(db_);
        db_ = nullptr;
    }
    path_.clear();
}

void SQLite3WrapperDB::RequireOpen() const {
    if (path_.empty()) {
        throw SQLite3WrapperException(kWrapperError, "Database not open");
    }
}

sqlite3* SQLite3WrapperDB::Connection() {
    if (db_ == nullptr) {
        Connect();
    }
    return db_;
}

bool SQLite3WrapperDB::IsEmptyFile() const {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    return GetFileAttributesExW(path_.c_str(), GetFileExInfoStandard, &data) &&
           (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 && data.nFileSizeHigh == 0 &&
           data.nFileSizeLow == 0;
}

bool SQLite3WrapperDB::TableExists(const char* name) {
    char sql[512];
    std::snprintf(sql, sizeof sql,
                  "select count(*) from sqlite_master where type='table' and name='%s'", name);
    try {
        return QueryScalar(sql) > 0;
    } catch (const std::exception&) {
        return false;
    }
}

bool SQLite3WrapperDB::KeyAnew(std::int32_t result) {
    if (result != kSqliteNotADatabase || SqliteLibrary::Get().get_autocommit(db_) == 0) {
        return false;
    }
    SqliteLibrary::Get().close(std::exchange(db_, nullptr));
    Connect();
    return true;
}

std::int32_t SQLite3WrapperDB::Execute(const std::string& sql) {
    RequireOpen();
    const SqliteLibrary& library = SqliteLibrary::Get();
    for (bool again = false;; again = true) {
        sqlite3* const db = Connection();
        ErrorText error(library);
        const int result = library.exec(db, sql.c_str(), nullptr, nullptr, error.Out());
        if (result == kSqliteOk) {
            return library.changes(db);
        }
        if (again || !KeyAnew(result)) {
            throw SQLite3WrapperException(result, error.Get());
        }
    }
}

SharedHandle<SQLite3WrapperQuery> SQLite3WrapperDB::Query(const std::string& sql) {
    RequireOpen();
    const SqliteLibrary& library = SqliteLibrary::Get();
    bool keyedAnew = false;
    for (int preparation = 1;; ++preparation) {
        sqlite3* const db = Connection();
        sqlite3_stmt* statement = nullptr;
        const char* tail = nullptr;
        const int prepared = library.prepare(db, sql.c_str(), -1, &statement, &tail);
        const int result = prepared == kSqliteOk ? library.step(statement) : prepared;
        if (result == kSqliteDone || result == kSqliteRow) {
            return std::make_shared<SQLite3WrapperQuery>(db, statement, result == kSqliteDone,
                                                         true);
        }
        const int reason = prepared == kSqliteOk ? library.finalize(statement) : prepared;
        const SQLite3WrapperException failure(reason,
                                              prepared == kSqliteOk ? library.errmsg(db) : nullptr);
        const bool changed = reason == kSqliteSchema && preparation < kMostPreparations;
        if (!changed && (keyedAnew || !KeyAnew(reason))) {
            throw failure;
        }
        keyedAnew = keyedAnew || !changed;
    }
}

std::int32_t SQLite3WrapperDB::QueryScalar(const std::string& sql) {
    const SharedHandle<SQLite3WrapperQuery> query = Query(sql);
    if (query->IsAtEnd() || query->GetColumnCount() < 1) {
        throw SQLite3WrapperException(kWrapperError, "Invalid scalar query");
    }
    const char* const text = query->GetColumnText(0);
    return TextToInt(text != nullptr ? text : "");
}

SharedHandle<SQLite3WrapperTable> SQLite3WrapperDB::LoadTable(const std::string& tableName,
                                                              const std::string& where) {
    return LoadResult("select * from '" + tableName + "' where " + where + " order by 1;");
}

SharedHandle<SQLite3WrapperTable> SQLite3WrapperDB::LoadResult(const std::string& sql) {
    RequireOpen();
    const SqliteLibrary& library = SqliteLibrary::Get();
    for (bool again = false;; again = true) {
        sqlite3* const db = Connection();
        ErrorText error(library);
        char** results = nullptr;
        int rows = 0;
        int columns = 0;
        const int result =
            library.get_table(db, sql.c_str(), &results, &rows, &columns, error.Out());
        if (result == kSqliteOk) {
            return std::make_shared<SQLite3WrapperTable>(
                SQLite3WrapperResults(results, library.free_table), rows, columns);
        }
        if (again || !KeyAnew(result)) {
            throw SQLite3WrapperException(result, error.Get());
        }
    }
}

void SQLite3WrapperDB::SetBusyTimeout(std::int32_t milliseconds) {
    busyTimeoutMs_ = milliseconds;
    if (db_ != nullptr) {
        SqliteLibrary::Get().busy_timeout(db_, milliseconds);
    }
}
