#include "catalogue/RecordTable.h"

#include <algorithm>
#include <cstddef>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"

namespace RecordTable {
namespace {

constexpr char kCreateStatement[] =
    "create table 'CertificateData'(qzc char[512], fieldname char(256), fieldvalue char(256))";

// How many keys one statement names at most: a path has up to some hundred bytes, a statement up to
// a million.
constexpr std::size_t kKeysOfStatement = 250;

// The first text of a statement's result; "0" where there is none.
std::string FirstText(SQLite3WrapperDB& db, const char* sql) {
    const SharedHandle<SQLite3WrapperQuery> query = db.Query(sql);
    const char* const text = query->IsAtEnd() ? nullptr : query->GetColumnText(0);
    return text != nullptr ? text : "0";
}

}  // namespace

bool CanBeQuoted(const std::string& text) {
    return text.find('\'') == std::string::npos && text.find('\0') == std::string::npos;
}

std::string Quoted(const std::string& text) {
    if (!CanBeQuoted(text)) {
        throw SQLite3WrapperException(kWrapperError, "A text holds an apostrophe or a NUL");
    }
    return "'" + text + "'";
}

void CreateIfMissing(SQLite3WrapperDB& db) {
    if (!db.TableExists(kName)) {
        db.Execute(kCreateStatement);
    }
}

void ListKeys(SQLite3WrapperDB& db, std::vector<std::string>* keys) {
    const SharedHandle<SQLite3WrapperQuery> query =
        db.Query("SELECT DISTINCT qzc FROM CertificateData");
    if (query->GetColumnCount() < 1) {
        return;
    }
    for (; !query->IsAtEnd(); query->NextRow()) {
        const char* const key = query->GetColumnText(0);
        keys->emplace_back(key != nullptr ? key : "");
    }
}

bool HasRows(SQLite3WrapperDB& db, const std::string& key) {
    return db.QueryScalar("select count(*) from CertificateData where qzc=" + Quoted(key)) > 0;
}

SharedHandle<SQLite3WrapperTable> LoadRows(SQLite3WrapperDB& db, const std::string& key) {
    return db.LoadTable(kName, "qzc=" + Quoted(key));
}

std::string InsertStatement(const std::string& key, const std::string& name,
                            const std::string& value) {
    return "insert into 'CertificateData' values(" + Quoted(key) + ", " + Quoted(name) + ", " +
           Quoted(value) + ");";
}

void UpdateRows(SQLite3WrapperDB& db, const std::string& key, const std::string& name,
                const std::string& value) {
    db.Execute("UPDATE CertificateData SET fieldvalue=" + Quoted(value) +
               " WHERE qzc=" + Quoted(key) + " AND fieldname=" + Quoted(name));
}

void DeleteRows(SQLite3WrapperDB& db, const std::string& key) {
    db.Execute("DELETE FROM CertificateData WHERE qzc=" + Quoted(key));
}

void DeleteRows(SQLite3WrapperDB& db, const std::vector<std::string>& keys) {
    for (std::size_t first = 0; first < keys.size(); first += kKeysOfStatement) {
        const std::size_t end = std::min(first + kKeysOfStatement, keys.size());
        std::string list;
        for (std::size_t i = first; i < end; ++i) {
            list += (list.empty() ? "" : ", ") + Quoted(keys[i]);
        }
        db.Execute("DELETE FROM CertificateData WHERE qzc IN (" + list + ")");
    }
}

// The count stands in a number in the database's head that is there for programs to use.
std::int32_t EditCount(SQLite3WrapperDB& db) {
    return db.QueryScalar("PRAGMA user_version");
}

void CountEdit(SQLite3WrapperDB& db) {
    const std::uint32_t next = (static_cast<std::uint32_t>(EditCount(db)) + 1) & 0x7FFFFFFF;
    db.Execute("PRAGMA user_version = " + std::to_string(next));
}

std::string LastRow(SQLite3WrapperDB& db) {
    return FirstText(db, "select max(rowid) from CertificateData");
}

std::string Version(SQLite3WrapperDB& db) {
    return FirstText(db, "PRAGMA data_version");
}

SharedHandle<SQLite3WrapperTable> LoadRowsBehind(SQLite3WrapperDB& db, const std::string& row) {
    return db.LoadResult("select * from 'CertificateData' where rowid > " + row +
                         " order by 1, rowid;");
}

}  // namespace RecordTable
