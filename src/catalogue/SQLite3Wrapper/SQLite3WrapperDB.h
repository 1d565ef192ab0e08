// A connection to the record database, whose file is encrypted.
//
// Callers quote the texts in their statements. Every failure is a SQLite3WrapperException; an
// operation that needs the database throws "Database not open" while it is closed. One thread at a
// time. Several processes may use one file: a statement waits up to the busy timeout for another's
// transaction to end.
#pragma once

#include <cstdint>
#include <string>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperQuery.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperTable.h"
#include "text/SharedHandle.h"
#include "text/StringConversions.h"

class SQLite3WrapperDB {
  public:
    SQLite3WrapperDB() = default;
    SQLite3WrapperDB(const SQLite3WrapperDB&) = delete;
    SQLite3WrapperDB& operator=(const SQLite3WrapperDB&) = delete;
    virtual ~SQLite3WrapperDB();

    // Opens the file of a narrow path, making it where it is missing. What is no plain file, such
    // as a symbolic link, is refused with "unable to open database file" and the reason.
    //
    // An empty file is not given to the database library before the first Execute, so that a
    // machine without records never loads it; until then queries fail with kSqliteEmpty.
    void Open(const std::string& path);

    void Close();

    // Closes the file and opens it again as the path leads to it now.
    void Reconnect();

    // Whether the file holds no bytes on the disk now.
    bool IsEmptyFile() const;

    // False also when it cannot be read.
    bool TableExists(const char* name);

    // How many rows the statement changed.
    std::int32_t Execute(const std::string& sql);

    SharedHandle<SQLite3WrapperQuery> Query(const std::string& sql);

    // The number in the first column of the first row. Throws "Invalid scalar query" without one.
    std::int32_t QueryScalar(const std::string& sql);

    // All columns of the rows for which `where` holds, in the order of the first one.
    SharedHandle<SQLite3WrapperTable> LoadTable(const std::string& tableName,
                                                const std::string& where);

    // The whole result of a statement.
    SharedHandle<SQLite3WrapperTable> LoadResult(const std::string& sql);

    void SetBusyTimeout(std::int32_t milliseconds);

  private:
    enum class Need { kContent, kConnection };

    // The connection of an open file, made here where that was put off.
    sqlite3* Connection(Need need);
    void Connect(const std::string& hostPath);
    std::string HostPath() const;

    template <typename Statement>
    void Run(Need need, Statement statement);

    // Connects anew where that may mend a failed statement, which is then to be given once more:
    // the salt of an empty file is made up at the keying, and another process may have given the
    // file its own since.
    bool KeyAnew(std::int32_t result);

    sqlite3* db_ = nullptr;
    std::int32_t busyTimeoutMs_ = 60000;
    WideString path_;  // empty while closed
};
