// The functions of the database library, loaded at their first use.
//
// A host that never asks the catalogue never loads the library. Once loaded it stays for the rest
// of the process's life. Any thread.
#pragma once

#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"

struct sqlite3;
struct sqlite3_stmt;

// The library or one of its functions cannot be had; the text names which.
class SqliteLibraryMissing : public SQLite3WrapperException {
  public:
    explicit SqliteLibraryMissing(const std::string& text)
        : SQLite3WrapperException(kWrapperError, text.c_str()) {}
};

struct SqliteLibrary {
    int (*open)(const char* path, sqlite3** db);
    int (*close)(sqlite3* db);
    int (*key)(sqlite3* db, const void* key, int length);
    int (*busy_timeout)(sqlite3* db, int milliseconds);
    int (*exec)(sqlite3* db, const char* sql, int (*row)(void*, int, char**, char**), void* context,
                char** error);
    int (*prepare)(sqlite3* db, const char* sql, int length, sqlite3_stmt** statement,
                   const char** tail);
    int (*step)(sqlite3_stmt* statement);
    int (*finalize)(sqlite3_stmt* statement);
    int (*column_count)(sqlite3_stmt* statement);
    const unsigned char* (*column_text)(sqlite3_stmt* statement, int column);
    int (*get_table)(sqlite3* db, const char* sql, char*** results, int* rows, int* columns,
                     char** error);
    void (*free_table)(char** results);
    int (*changes)(sqlite3* db);
    int (*get_autocommit)(sqlite3* db);
    const char* (*errmsg)(sqlite3* db);
    void (*free)(void* block);

    // Throws a SqliteLibraryMissing; the next call tries again.
    static const SqliteLibrary& Get();
};
