#include "catalogue/records/RecordTable.h"

#include <algorithm>
#include <cstddef>
#include <exception>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"

namespace RecordTable {
namespace {

constexpr char kCreateStatement[] =
    "create table 'CertificateData'(qzc char[512], fieldname char(256), fieldvalue char(256))";

// How many keys one statement names at most: a path has up to some hundred bytes, a statement up to
// a million.
constexpr std::size_t kKeysOfStatement = 250;

// Reads that belong together, also within another transaction.
class ReadTransaction {
  public:
    explicit ReadTransaction(SQLite3WrapperDB& db) : db_(db) { db_.Query("savepoint reading"); }
    ReadTransaction(const ReadTransaction&) = delete;
    ReadTransaction& operator=(const ReadTransaction&) = delete;
    ~ReadTransaction() {
        for (const char* const end : {"release reading", "rollback"}) {
            try {
                db_.Execute(end);
                return;
            } catch (const std::exception&) {
                // Some failures have ended the transaction themselves.
            }
        }
    }

  private:
    SQLite3WrapperDB& db_;
};

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

void DeleteAllRows(SQLite3WrapperDB& db) {
    db.Execute("DELETE FROM CertificateData");
}

void CheckForm(SQLite3WrapperDB& db) {
    // An index that lets equal rows be does no harm.
    const char* const oddities =
        "select (select count(*) from sqlite_master where lower(tbl_name) = 'certificatedata' and "
        "case type when 'table' then name <> 'CertificateData' or "
        "replace(replace(replace(lower(sql), '''', ''), '\"', ''), ' ', '') <> "
        "'createtablecertificatedata(qzcchar[512],fieldnamechar(256),fieldvaluechar(256))' "
        "when 'index' then sql is null or sql like '%unique%' else 1 end) + "
        "(select count(*) from CertificateData where "
        "instr(qzc || fieldname || fieldvalue, char(0)))";
    if (db.QueryScalar(oddities) != 0) {
        throw SQLite3WrapperException(kSqliteCorrupt, "The record table is not as it was made");
    }
}

SharedHandle<SQLite3WrapperTable> LoadRows(SQLite3WrapperDB& db, const std::string& key) {
    return db.LoadTable(kName, "qzc=" + Quoted(key));
}

SharedHandle<SQLite3WrapperTable> LoadRowsAfter(SQLite3WrapperDB& db, const std::string& row) {
    const ReadTransaction transaction(db);
    SharedHandle<SQLite3WrapperTable> rows =
        db.LoadResult("select * from 'CertificateData' where rowid > " + row + " order by rowid;");
    // The cipher gives zeros for a page that is damaged and fails the next read alone, as long as
    // the transaction lasts: so there is a next one.
    LastRow(db);
    return rows;
}

std::string LastRow(SQLite3WrapperDB& db) {
    return FirstText(db, "select max(rowid) from CertificateData");
}

std::string Version(SQLite3WrapperDB& db) {
    return FirstText(db, "PRAGMA data_version");
}

}  // namespace RecordTable
