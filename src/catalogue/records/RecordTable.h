// The table of product records, and every statement on it.
//
// A row is one value of a field: the record key (the certificate file's path in lower case), the
// field's name, the value. A certificate's rows are in the order of their row ids. All functions
// throw a SQLite3WrapperException on failure.
#pragma once

#include <string>
#include <vector>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"

namespace RecordTable {

inline constexpr char kName[] = "CertificateData";

// A text between apostrophes, for a statement. One with an apostrophe or a NUL throws: no text from
// outside becomes part of a statement's syntax.
bool CanBeQuoted(const std::string& text);
std::string Quoted(const std::string& text);

void CreateIfMissing(SQLite3WrapperDB& db);

std::string InsertStatement(const std::string& key, const std::string& name,
                            const std::string& value);

void UpdateRows(SQLite3WrapperDB& db, const std::string& key, const std::string& name,
                const std::string& value);

// Deletes the rows of some keys in one pass over the table, and all rows.
void DeleteRows(SQLite3WrapperDB& db, const std::vector<std::string>& keys);
void DeleteAllRows(SQLite3WrapperDB& db);

// Throws kSqliteCorrupt when there is something else in the table's place or attached to it, or a
// value holds a NUL, as from a lost page; kSqliteError without the table or one of its columns.
void CheckForm(SQLite3WrapperDB& db);

SharedHandle<SQLite3WrapperTable> LoadRows(SQLite3WrapperDB& db, const std::string& key);

// All rows with a higher row id than this, in the order of their ids. Fails when a page of them is
// damaged, which other statements do not for the last page that they read.
SharedHandle<SQLite3WrapperTable> LoadRowsAfter(SQLite3WrapperDB& db, const std::string& row);

// The highest row id; "0" without rows. A row that is added gets a higher one.
std::string LastRow(SQLite3WrapperDB& db);

// A number that changes, on one connection, whenever another one has changed the database.
std::string Version(SQLite3WrapperDB& db);

}  // namespace RecordTable
