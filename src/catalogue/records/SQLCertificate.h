// The store of product records, seen through one certificate.
//
// A certificate file is read once on a machine: its fields become rows of a database that all
// programs share. An object holds the rows of its current certificate in memory.
//
// Texts are narrow. A record key is the certificate file's full path in lower case. Failures of
// field operations, such as a field without a row, are written to the trace at level 1 and never
// thrown; each operation says what its arguments are then.
//
// Threads: the objects of a process share one connection, whose use is serialised here. Any number
// of threads may read one object once Read has ended.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "text/SharedHandle.h"
#include "text/StringConversions.h"

class SQLite3WrapperDB;
class SQLite3WrapperTable;

class SQLCertificate {
  public:
    // Works on the shared connection, see SharedRecordStore::EnsureOpen, which may throw.
    SQLCertificate();

    // Works on a connection that the caller owns and keeps open. Opens nothing.
    explicit SQLCertificate(SQLite3WrapperDB* database) : db_(database) {}

    SQLCertificate(const SQLCertificate&) = delete;
    SQLCertificate& operator=(const SQLCertificate&) = delete;
    virtual ~SQLCertificate() = default;

    // ---- The current certificate ----

    // Makes `key` the current certificate, importing its file when its rows are missing, or anew
    // with `reimport`. False, with a line on the trace, when that fails.
    bool Read(const char* key, const char* verificationKey, bool reimport);

    // The current certificate's record key; empty before the first successful Read.
    std::string GetKey() const { return key_; }

    // ---- Fields of the current certificate ----

    // The first value of a field. On failure `value` stays as it was.
    virtual void GetFieldAsText(const std::string& name, std::string* value);

    // The same into a buffer, cut to `size` - 1 bytes and a NUL; empty on failure.
    virtual void GetFieldAsText(const char* name, char* buffer, std::uint32_t size);

    // The decimal number at the start of the first value; 0 without one, and on failure.
    virtual std::int32_t GetFieldAsNumber(const char* name);

    // All values in row order; `values` is cleared first.
    virtual void GetFieldAsVector(const std::string& name, std::vector<std::string>* values);

    // How many values a field has; 0 on failure.
    virtual std::uint32_t GetFieldMaxEnum(const char* name);

    // The place of a value among the field's values, from 1, without regard to the case of ASCII
    // letters; 0 on failure.
    virtual std::uint32_t GetFieldValueAsEnum(const std::string& name, const std::string& value) {
        return GetFieldValueAsEnum(name.c_str(), value.c_str());
    }
    virtual std::uint32_t GetFieldValueAsEnum(const char* name, const char* value);

    // The value at a place, from 1. On failure the text is as it was, and the number is 0.
    virtual void GetFieldEnumAsValueText(const std::string& name, std::int32_t enumValue,
                                         std::string* value);
    virtual std::int32_t GetFieldEnumAsValueNumber(const char* name, std::int32_t enumValue);

    // All values joined by commas.
    virtual void GetFieldVocabAsText(const std::string& name, std::string* text);

    // All values after one empty text, so that a value's index is its place; none without values.
    virtual void GetFieldVocabAsVector(const std::string& name, std::vector<std::string>* values);

    // Writes a field into the database: a new row, or where the field has a value, that value for
    // all its rows. 1 when written, else 0. The rows in memory stay until the next Read.
    virtual std::uint8_t SetFieldAsText(const std::string& name, const std::string& value);
    virtual std::uint8_t SetFieldAsText(const char* name, const char* value);

    // Whether the field has a row. Says nothing on the trace.
    virtual bool HasField(const std::string& name) { return FindValue(name.c_str()) != nullptr; }

    virtual std::uint8_t SetFieldAsNumber(const char* name, std::int32_t value) {
        return SetFieldAsText(name, std::to_string(value).c_str());
    }

    // ---- The database as a whole ----

    // Whether rows with this record key exist.
    bool TableExist(const char* key);

    // Appends the distinct record keys. False on failure, such as a database without records.
    bool TableList(std::vector<std::string>* keys);

    // Removes the rows of a certificate. Throws a SQLite3WrapperException on failure.
    void DeleteRecord(const char* key);

    // The database file's path, a narrow Windows path; its folder is made on first use.
    static std::string SqlDatabasePath();

    // The distinct record keys of the shared database; `keys` is cleared first. False on failure.
    static bool GetDatabaseKeys(std::vector<std::string>* keys);

  private:
    // Whether there is a current certificate, and a name to ask it for.
    bool CanRead(const char* name) const;

    // The first value, null when there is none, and all values.
    const char* FindValue(const char* name) const;
    std::vector<std::string> FindValues(const char* name) const;

    void WriteField(const std::string& name, const std::string& value);

    // Null when there are none, and on failure, which gets a line on the trace.
    SharedHandle<SQLite3WrapperTable> FindRows(const char* key);

    SQLite3WrapperDB* db_;
    SharedHandle<SQLite3WrapperTable> table_;
    std::string key_;
};

// The first value of a field; empty where it has none.
std::string ReadField(SQLCertificate& store, const std::string& name);
inline std::int32_t ReadNumber(SQLCertificate& store, const char* name) {
    return store.GetFieldAsNumber(name);
}
void ReadFieldList(SQLCertificate& store, const std::string& name, Utf8StringList* values);
