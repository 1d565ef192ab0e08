// The way of a certificate file into the record database.
#pragma once

#include <cstdint>

class SQLite3WrapperDB;

// Throws a VelmarException for a null key.
void RequireKey(const char* key);

// Turns a certificate file into its rows, unless they are there already: all of them or, on any
// failure, none, also when several processes import one file at once. `key` is the file's record
// key; a null `verificationKey` counts as empty. A file without a text gives no rows. 1, or throws:
// a VelmarException for a null key, a _com_error when the reader component cannot be made, a
// SQLite3WrapperException when the database fails or a text holds an apostrophe.
std::uint8_t ImportCertificate(const char* key, const char* verificationKey, SQLite3WrapperDB& db);

// The same where the file replaces the rows that are there; on failure these stay, and a file that
// gives no text leaves none.
std::uint8_t ReimportCertificate(const char* key, const char* verificationKey,
                                 SQLite3WrapperDB& db);
