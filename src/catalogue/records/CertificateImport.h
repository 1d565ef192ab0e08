// The way of a certificate file into the record database.
#pragma once

#include <cstdint>

class SQLite3WrapperDB;

// Throws a VelmarException for a null key.
void RequireKey(const char* key);

// Turns a certificate file into its rows, unless they are there already. All of them come to be or,
// on any failure, none: two processes that import one file at once leave one set of rows, and a
// process that is killed leaves none. `key` is the file's record key; a null `verificationKey`
// counts as empty. A file that gives no text gives no rows. 1, or throws: a VelmarException for a
// null key, a _com_error when the reader component cannot be made, a SQLite3WrapperException when
// the database fails or a text holds an apostrophe.
std::uint8_t ImportCertificate(const char* key, const char* verificationKey, SQLite3WrapperDB& db);

// The same where the file replaces the rows that are there; on failure these stay, and a file that
// gives no text leaves none.
std::uint8_t ReimportCertificate(const char* key, const char* verificationKey,
                                 SQLite3WrapperDB& db);
