// The table of product records, and every statement on it.
//
// A row is one value of a field of a certificate: the record key (the certificate file's path in
// lower case), the field's name, the value. The table has no index; a certificate's rows follow
// each other in the order of their row ids.
//
// Whoever takes away or changes rows, or adds some to a certificate that has rows already, counts
// that in the same transaction, see CountEdit: the count tells readers whether rows were merely
// added since they last looked.
//
// All functions throw a SQLite3WrapperException on failure. One thread at a time on a connection.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"

namespace RecordTable {

inline constexpr char kName[] = "CertificateData";

// A text between apostrophes, as it stands in a statement. A text that would end there early, with
// an apostrophe or a NUL, throws: no text from outside ever becomes part of a statement's syntax.
bool CanBeQuoted(const std::string& text);
std::string Quoted(const std::string& text);

void CreateIfMissing(SQLite3WrapperDB& db);

// Appends the distinct record keys.
void ListKeys(SQLite3WrapperDB& db, std::vector<std::string>* keys);

bool HasRows(SQLite3WrapperDB& db, const std::string& key);
SharedHandle<SQLite3WrapperTable> LoadRows(SQLite3WrapperDB& db, const std::string& key);

// The statement that adds a row.
std::string InsertStatement(const std::string& key, const std::string& name,
                            const std::string& value);

void UpdateRows(SQLite3WrapperDB& db, const std::string& key, const std::string& name,
                const std::string& value);
void DeleteRows(SQLite3WrapperDB& db, const std::string& key);

// The same for many keys in one pass over the table.
void DeleteRows(SQLite3WrapperDB& db, const std::vector<std::string>& keys);

// The count of edits. REQUIRES for CountEdit: a transaction.
std::int32_t EditCount(SQLite3WrapperDB& db);
void CountEdit(SQLite3WrapperDB& db);

// The highest row id; "0" without rows. A row that is added gets a higher one.
std::string LastRow(SQLite3WrapperDB& db);

// A number that changes, on one connection, whenever another one has changed the database.
std::string Version(SQLite3WrapperDB& db);

// All rows with a higher row id than this, ordered by key and, within a key, row id.
SharedHandle<SQLite3WrapperTable> LoadRowsBehind(SQLite3WrapperDB& db, const std::string& row);

}  // namespace RecordTable
