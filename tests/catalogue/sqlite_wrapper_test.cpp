// The classes around the database library, on real database files.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "support/drive_files.h"

namespace {

std::string Failure(const std::function<void()>& operation) {
    try {
        operation();
        return "nothing";
    } catch (const SQLite3WrapperException& failure) {
        return failure.what();
    }
}

class SqliteWrapper : public testing::Test {
  protected:
    SqliteWrapper() {
        std::filesystem::remove(DriveC() / "test.db");
        db.Open("C:\\test.db");
        db.Execute("create table fields(a, name, value, extra)");
    }

    // A table of three columns, its search column the name's.
    SharedHandle<SQLite3WrapperTable> Load() {
        db.Execute("insert into fields values('k', 'Name', 'first', 0)");
        db.Execute("insert into fields values('k', 'Other', ' 42x', 0)");
        db.Execute("insert into fields values('k', 'NAME', 'second', 0)");
        db.Execute("insert into fields values('k', 'None', null, 0)");
        const SharedHandle<SQLite3WrapperTable> table =
            db.LoadResult("select a, name, value from fields");
        table->SetSearchColumn(1);
        return table;
    }

    SQLite3WrapperDB db;
};

TEST_F(SqliteWrapper, ExceptionMessages) {
    EXPECT_STREQ(SQLite3WrapperException(5, "text").what(), "SQLITE_BUSY[5]: text");
    EXPECT_STREQ(SQLite3WrapperException(101, nullptr).what(), "SQLITE_DONE[101]: ");
    EXPECT_STREQ(SQLite3WrapperException(26, "text").what(), "UNKNOWN_ERROR[26]: text");
    EXPECT_STREQ(SQLite3WrapperException(1000, "100% %s").what(), "CPPSQLITE_ERROR[1000]: 100% %s");
    const SQLite3WrapperException bare("bare message");
    const SQLite3WrapperException copy = bare;
    EXPECT_STREQ(copy.what(), "bare message");
    EXPECT_EQ(copy.GetCode(), 0);
}

TEST_F(SqliteWrapper, LookupsGoByNameWithoutCase) {
    const SharedHandle<SQLite3WrapperTable> table = Load();
    EXPECT_STREQ(table->GetValue("nAmE"), "first");
    EXPECT_EQ(table->GetValues("name"), (std::vector<std::string>{"first", "second"}));
    EXPECT_EQ(table->GetValueAsNumber("other", 7), 42);
    EXPECT_EQ(table->GetValueAsNumber("none", 7), 7);
    EXPECT_STREQ(table->GetValue("none", "default"), "default");
    EXPECT_STREQ(table->GetValue("name", "default"), "first");
    EXPECT_TRUE(table->HasField("none"));
    EXPECT_FALSE(table->HasField("nam"));
    EXPECT_FALSE(table->HasField("names"));
    EXPECT_FALSE(table->HasField(nullptr));
    const char* const failure = "CPPSQLITE_ERROR[1000]: Invalid field name requested";
    EXPECT_EQ(Failure([&] { table->GetValue("nam"); }), failure);
    EXPECT_EQ(Failure([&] { table->GetValue("nam", "default"); }), failure);
    EXPECT_EQ(Failure([&] { table->GetValueAsNumber(nullptr, 0); }), failure);
    EXPECT_EQ(Failure([&] { table->GetValues("nam"); }), failure);
}

TEST_F(SqliteWrapper, SearchColumnNeedsAColumnRightOfIt) {
    const SharedHandle<SQLite3WrapperTable> table = Load();
    const char* const failure = "CPPSQLITE_ERROR[1000]: Invalid row index requested";
    EXPECT_EQ(Failure([&] { table->SetSearchColumn(2); }), failure);
    EXPECT_EQ(Failure([&] { table->SetSearchColumn(-1); }), failure);
    EXPECT_STREQ(table->GetValue("Name"), "first");  // the search column has stayed
    const SharedHandle<SQLite3WrapperTable> none = db.LoadTable("fields", "a = 'absent'");
    EXPECT_EQ(none->GetRowCount(), 0);
    EXPECT_EQ(Failure([&] { none->SetSearchColumn(0); }), failure);
    EXPECT_EQ(Failure([] { SQLite3WrapperTable(nullptr, 0, 0).HasField("n"); }),
              "CPPSQLITE_ERROR[1000]: Null Results pointer");
}

TEST_F(SqliteWrapper, QueriesWalkTheirRows) {
    db.Execute("insert into fields values('1', 'one', null, 0)");
    EXPECT_EQ(db.Execute("insert into fields select '2', 'two', 'v', 0"), 1);
    const SharedHandle<SQLite3WrapperQuery> query = db.Query("select a, value from fields");
    EXPECT_EQ(query->GetColumnCount(), 2);
    EXPECT_STREQ(query->GetColumnText(0), "1");
    EXPECT_EQ(query->GetColumnText(1), nullptr);
    const char* const index = "CPPSQLITE_ERROR[1000]: Invalid field index requested";
    EXPECT_EQ(Failure([&] { query->GetColumnText(2); }), index);
    EXPECT_EQ(Failure([&] { query->GetColumnText(-1); }), index);
    query->NextRow();
    EXPECT_STREQ(query->GetColumnText(1), "v");
    EXPECT_FALSE(query->IsAtEnd());
    query->NextRow();
    EXPECT_TRUE(query->IsAtEnd());
    query->Finish();
    query->Finish();
    const char* const finished = "CPPSQLITE_ERROR[1000]: Null Virtual Machine pointer";
    EXPECT_EQ(Failure([&] { query->NextRow(); }), finished);
    EXPECT_EQ(Failure([&] { query->GetColumnText(0); }), finished);
}

TEST_F(SqliteWrapper, ScalarsAndTables) {
    EXPECT_EQ(db.QueryScalar("select '12 and more'"), 12);
    EXPECT_TRUE(db.Query("select a from fields")->IsAtEnd());
    EXPECT_EQ(Failure([&] { db.QueryScalar("select a from fields"); }),
              "CPPSQLITE_ERROR[1000]: Invalid scalar query");
    EXPECT_TRUE(db.TableExists("fields"));
    EXPECT_FALSE(db.TableExists("absent"));
    EXPECT_FALSE(db.TableExists("an apostrophe's"));
    EXPECT_FALSE(db.TableExists(std::string(600, 'n').c_str()));
}

TEST_F(SqliteWrapper, FailuresCarryTheDatabasesCodeAndText) {
    EXPECT_EQ(Failure([&] { db.Execute("nonsense"); }),
              "SQLITE_ERROR[1]: near \"nonsense\": syntax error");
    EXPECT_EQ(Failure([&] { db.Query("select * from absent"); }), "SQLITE_ERROR[1]: ");
    EXPECT_EQ(Failure([&] { db.LoadTable("absent", "1"); }),
              "SQLITE_ERROR[1]: no such table: absent");
    EXPECT_EQ(Failure([&] { db.Query("select abs(-9223372036854775807 - 1)"); }),
              "SQLITE_ERROR[1]: integer overflow");
    db.Close();
    for (const std::function<void()>& operation : std::vector<std::function<void()>>{
             [&] { db.Execute("select 1"); }, [&] { db.Query("select 1"); },
             [&] { db.QueryScalar("select 1"); }, [&] { db.LoadTable("fields", "1"); }}) {
        EXPECT_EQ(Failure(operation), "CPPSQLITE_ERROR[1000]: Database not open");
    }
    EXPECT_FALSE(db.TableExists("fields"));
    const std::string cannot = "SQLITE_CANTOPEN[14]: unable to open database file";
    const std::string folder = NewFolder("folder");
    EXPECT_EQ(Failure([&] { db.Open("C:\\folder"); }),
              cannot + ": " + folder + " is no plain file");
    EXPECT_EQ(Failure([&] { db.Open("C:\\absent\\test.db"); }), cannot);
    EXPECT_EQ(Failure([&] { db.Execute("select 1"); }), "CPPSQLITE_ERROR[1000]: Database not open");
    // A path that has come to lead nowhere is not an unnamed database in memory.
    db.Open("C:\\folder\\test.db");
    std::filesystem::remove_all(folder);
    EXPECT_EQ(Failure([&] { db.Execute("create table t(a)"); }), cannot);
}

TEST_F(SqliteWrapper, ANewTableOfAnotherConnectionIsSeenAtOnce) {
    SQLite3WrapperDB other;
    other.Open("C:\\test.db");
    EXPECT_FALSE(other.TableExists("late"));
    db.Execute("create table late(a)");
    EXPECT_TRUE(other.TableExists("late"));
    EXPECT_EQ(other.QueryScalar("select count(*) from late"), 0);
}

}  // namespace
