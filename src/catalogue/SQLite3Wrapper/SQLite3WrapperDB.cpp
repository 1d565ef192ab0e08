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

// The default count protects weak passwords and costs some 50 milliseconds an opening. This key can
// be read in the program.
constexpr char kCheapKeyDerivation[] = "PRAGMA kdf_iter = 1";

// An existing file, to read and write. The library is never to make one: it would not open it to
// every user.
constexpr int kOpenReadWrite = 2;

// How often a statement is prepared anew because another process has changed the tables since.
constexpr int kMostPreparations = 8;

// An error text of the library, freed with the object.
class ErrorText {
  public:
    explicit ErrorText(const SqliteCall& call) : call_(call) {}
    ErrorText(const ErrorText&) = delete;
    ErrorText& operator=(const ErrorText&) = delete;
    ~ErrorText() { call_->free(text_); }

    char** Out() { return &text_; }
    const char* Get() const { return text_; }

  private:
    const SqliteCall& call_;
    char* text_ = nullptr;
};

void CloseQuietly(sqlite3* db) {
    try {
        const SqliteCall call;
        call->close(db);
    } catch (const SQLite3WrapperException&) {
        // The process ends, and closes the file itself.
    }
}

}  // namespace

SQLite3WrapperDB::~SQLite3WrapperDB() {
    Close();
}

void SQLite3WrapperDB::Open(const std::string& path) {
    Close();
    path_ = NarrowToWide(path);
    try {
        const std::string hostPath = HostPath();
        if (!MakeSharedFile(path_.c_str()) && GetLastError() != ERROR_FILE_EXISTS) {
            throw SQLite3WrapperException(kSqliteCannotOpen, "unable to open database file");
        }
        if (!IsEmptyFile()) {
            Connect(hostPath);
        }
    } catch (...) {
        path_.clear();
        throw;
    }
}

// Without this the library would take an empty path for a database of its own in memory.
std::string SQLite3WrapperDB::HostPath() const {
    std::string fault;
    std::string hostPath = DatabaseFilePath(path_.c_str(), &fault);
    if (hostPath.empty()) {
        const std::string text = "unable to open database file" + fault;
        throw SQLite3WrapperException(kSqliteCannotOpen, text.c_str());
    }
    return hostPath;
}

void SQLite3WrapperDB::Connect(const std::string& hostPath) {
    const SqliteCall call;
    sqlite3* db = nullptr;
    int result = call->open_v2(hostPath.c_str(), &db, kOpenReadWrite, nullptr);
    // A wrong key shows when the first statement fails. A key that was not taken would show as
    // damage, or leave a new file in plain text.
    if (result == kSqliteOk) {
        result = call->key(db, kKey, sizeof kKey);
    }
    if (result == kSqliteOk) {
        result = call->exec(db, kCheapKeyDerivation, nullptr, nullptr, nullptr);
    }
    if (result != kSqliteOk) {
        const SQLite3WrapperException failure(result, call->errmsg(db));
        call->close(db);
        throw failure;
    }
    db_ = db;
    SetBusyTimeout(busyTimeoutMs_);
}

void SQLite3WrapperDB::Close() {
    if (db_ != nullptr) {
        CloseQuietly(std::exchange(db_, nullptr));
    }
    path_.clear();
}

void SQLite3WrapperDB::Reconnect() {
    if (db_ != nullptr) {
        CloseQuietly(std::exchange(db_, nullptr));
    }
    Connect(HostPath());
}

sqlite3* SQLite3WrapperDB::Connection(Need need) {
    if (path_.empty()) {
        throw SQLite3WrapperException(kWrapperError, "Database not open");
    }
    if (db_ == nullptr) {
        if (need == Need::kContent && IsEmptyFile()) {
            throw SQLite3WrapperException(kSqliteEmpty, "the database file is empty");
        }
        Connect(HostPath());
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
    Reconnect();
    return true;
}

template <typename Statement>
void SQLite3WrapperDB::Run(Need need, Statement statement) {
    for (bool again = false;; again = true) {
        sqlite3* const db = Connection(need);
        const SqliteCall call;
        ErrorText error(call);
        const int result = statement(call, db, error.Out());
        if (result == kSqliteOk) {
            return;
        }
        if (again || !KeyAnew(result)) {
            throw SQLite3WrapperException(result, error.Get());
        }
    }
}

std::int32_t SQLite3WrapperDB::Execute(const std::string& sql) {
    std::int32_t changes = 0;
    Run(Need::kConnection, [&](const SqliteCall& call, sqlite3* db, char** error) {
        const int result = call->exec(db, sql.c_str(), nullptr, nullptr, error);
        changes = call->changes(db);
        return result;
    });
    return changes;
}

SharedHandle<SQLite3WrapperQuery> SQLite3WrapperDB::Query(const std::string& sql) {
    bool keyedAnew = false;
    for (int preparation = 1;; ++preparation) {
        sqlite3* const db = Connection(Need::kContent);
        const SqliteCall call;
        sqlite3_stmt* statement = nullptr;
        const char* tail = nullptr;
        const int prepared = call->prepare(db, sql.c_str(), -1, &statement, &tail);
        const int result = prepared == kSqliteOk ? call->step(statement) : prepared;
        if (result == kSqliteDone || result == kSqliteRow) {
            return std::make_shared<SQLite3WrapperQuery>(db, statement, result == kSqliteDone,
                                                         true);
        }
        const int reason = prepared == kSqliteOk ? call->finalize(statement) : prepared;
        const SQLite3WrapperException failure(reason,
                                              prepared == kSqliteOk ? call->errmsg(db) : nullptr);
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
    SharedHandle<SQLite3WrapperTable> table;
    Run(Need::kContent, [&](const SqliteCall& call, sqlite3* db, char** error) {
        char** results = nullptr;
        int rows = 0;
        int columns = 0;
        const int result = call->get_table(db, sql.c_str(), &results, &rows, &columns, error);
        if (result == kSqliteOk) {
            table = std::make_shared<SQLite3WrapperTable>(
                SQLite3WrapperResults(results, call->free_table), rows, columns);
        }
        return result;
    });
    return table;
}

void SQLite3WrapperDB::SetBusyTimeout(std::int32_t milliseconds) {
    busyTimeoutMs_ = milliseconds;
    if (db_ != nullptr) {
        SqliteLibrary::Get().busy_timeout(db_, milliseconds);
    }
}
