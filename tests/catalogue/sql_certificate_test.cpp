// One certificate's rows, and the database as a whole, on a machine of its own.

#include "catalogue/SQLCertificate.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "support/record_machine.h"

namespace {

class SqlCertificate : public RecordMachine {
  protected:
    // A store with a current certificate.
    std::unique_ptr<SQLCertificate> MakeRead() {
        const std::string key = AddCertificate("a.qzc",
                                               "Languages = English, German, French\n"
                                               "Number = 42 pieces\n"
                                               "Text = abcdef\n"
                                               "Size = 1, 20\n");
        auto store = std::make_unique<SQLCertificate>();
        EXPECT_TRUE(store->Read(key.c_str(), kKey, false));
        Lines();
        return store;
    }
};

TEST_F(SqlCertificate, ANewMachineGetsItsFolderAndItsFile) {
    {
        const SQLCertificate store;
        EXPECT_EQ(store.GetKey(), "");
    }
    EXPECT_EQ(Lines(), (TextList{"CreateDirectoryW path = C:\\ProgramData\\Velmar, result = TRUE",
                                 "SqlDatabasePath result = C:\\ProgramData\\Velmar\\qzc13.db)",
                                 "TableList failed "}));
    EXPECT_EQ(ReadHostFile(DatabaseFile()), "");
    const auto mode = [](const std::filesystem::path& path) {
        return std::filesystem::status(path).permissions() & std::filesystem::perms::all;
    };
    EXPECT_EQ(mode(DatabaseFile().parent_path()), std::filesystem::perms::all);
    EXPECT_EQ(mode(DatabaseFile()), std::filesystem::perms(0666));

    // Nothing so far has taken a database library, and no later construction says anything.
    SQLCertificate store;
    EXPECT_FALSE(store.TableExist("c:\\certs\\a.qzc"));
    TextList keys = {"before"};
    EXPECT_FALSE(SQLCertificate::GetDatabaseKeys(&keys));
    EXPECT_EQ(keys, TextList());
    EXPECT_FALSE(HasLoaded("sqlcipher"));
    EXPECT_EQ(Lines(),
              (TextList{"TableExist failed, path: c:\\certs\\a.qzc ", "TableList failed "}));

    const std::string key = AddCertificate("a.qzc", "Name = a\n");
    EXPECT_TRUE(store.Read(key.c_str(), kKey, false));
    EXPECT_TRUE(SQLCertificate::GetDatabaseKeys(&keys));
    EXPECT_EQ(keys, TextList{key});
    EXPECT_EQ(store.GetKey(), key);
}

TEST_F(SqlCertificate, Fields) {
    const auto store = MakeRead();
    EXPECT_EQ(ReadField(*store, "TEXT"), "abcdef");
    EXPECT_EQ(ReadNumber(*store, "Number"), 42);
    EXPECT_EQ(ReadNumber(*store, "Text"), 0);
    char buffer[8] = "#######";
    store->GetFieldAsText("Text", buffer, 4);
    EXPECT_STREQ(buffer, "abc");
    store->GetFieldAsText("Text", buffer, 7);
    EXPECT_STREQ(buffer, "abcdef");
    Utf8StringList list;
    ReadFieldList(*store, "Size", &list);
    EXPECT_EQ(list, (Utf8StringList{NarrowToUtf8("1"), NarrowToUtf8("20")}));
    EXPECT_TRUE(store->HasField("sIZe"));

    EXPECT_EQ(store->GetFieldMaxEnum("Languages"), 3u);
    EXPECT_EQ(store->GetFieldValueAsEnum("Languages", "GERMAN"), 2u);
    std::string text;
    store->GetFieldEnumAsValueText("Languages", 3, &text);
    EXPECT_EQ(text, "French");
    EXPECT_EQ(store->GetFieldEnumAsValueNumber("Size", 2), 20);
    store->GetFieldVocabAsText("Languages", &text);
    EXPECT_EQ(text, "English,German,French");
    TextList values = {"before"};
    store->GetFieldVocabAsVector("Size", &values);
    EXPECT_EQ(values, (TextList{"", "1", "20"}));
    EXPECT_EQ(Lines(), TextList());
}

// Every field operation, with what it writes for a field without a row and for an object without a
// certificate, and the state that it leaves of what it was given.
TEST_F(SqlCertificate, FailureLines) {
    using Result = std::string;
    const struct {
        const char* what;
        std::function<Result(SQLCertificate&, const char* name)> run;
        TextList lines;
        Result left;
    } cases[] = {
        {"GetFieldAsText",
         [](SQLCertificate& store, const char* name) {
             std::string value = "before";
             store.GetFieldAsText(std::string(name), &value);
             return value;
         },
         {"GetFieldAsText failed, FieldName: Absent"},
         "before"},
        {"GetFieldAsText, buffer",
         [](SQLCertificate& store, const char* name) {
             char buffer[] = "before";
             store.GetFieldAsText(name, buffer, sizeof buffer);
             return Result(buffer);
         },
         {"GetFieldAsText failed, FieldName: Absent"},
         ""},
        {"GetFieldAsNumber",
         [](SQLCertificate& store, const char* name) {
             return std::to_string(store.GetFieldAsNumber(name));
         },
         {"GetFieldAsNumber failed, FieldName: Absent"},
         "0"},
        {"GetFieldAsVector",
         [](SQLCertificate& store, const char* name) {
             TextList values = {"before"};
             store.GetFieldAsVector(name, &values);
             return std::to_string(values.size());
         },
         {"GetFieldAsVector failed, FieldName: Absent"},
         "0"},
        {"GetFieldMaxEnum",
         [](SQLCertificate& store, const char* name) {
             return std::to_string(store.GetFieldMaxEnum(name));
         },
         {"GetFieldMaxEnum failed, FieldName: Absent"},
         "0"},
        {"GetFieldValueAsEnum",
         [](SQLCertificate& store, const char* name) {
             return std::to_string(store.GetFieldValueAsEnum(name, "v"));
         },
         {"GetFieldValueAsEnum failed, FieldName: Absent , FieldValue: v"},
         "0"},
        {"GetFieldEnumAsValueText",
         [](SQLCertificate& store, const char* name) {
             std::string value = "before";
             store.GetFieldEnumAsValueText(name, 1, &value);
             return value;
         },
         {"GetFieldEnumAsValueText failed, FieldName: Absent , FieldEnum: 1"},
         "before"},
        {"GetFieldVocabAsText",
         [](SQLCertificate& store, const char* name) {
             std::string value = "before";
             store.GetFieldVocabAsText(name, &value);
             return value;
         },
         {"GetFieldVocabAsText failed, FieldName: Absent "},
         ""},
        {"HasField",
         [](SQLCertificate& store, const char* name) {
             return std::to_string(store.HasField(name));
         },
         {},
         "0"},
    };
    const auto read = MakeRead();
    SQLCertificate none;
    for (const auto& testCase : cases) {
        EXPECT_EQ(testCase.run(*read, "Absent"), testCase.left) << testCase.what;
        EXPECT_EQ(Lines(), testCase.lines) << testCase.what;
        EXPECT_EQ(testCase.run(none, "Absent"), testCase.left) << testCase.what;
        EXPECT_EQ(Lines(), testCase.lines) << testCase.what << " without a certificate";
        EXPECT_EQ(testCase.run(*read, ""), testCase.left) << testCase.what << " without a name";
        EXPECT_EQ(Lines().size(), testCase.lines.size()) << testCase.what << " without a name";
    }
}

TEST_F(SqlCertificate, FailureLinesOfOperationsThatCallOthers) {
    const auto read = MakeRead();
    SQLCertificate none;
    EXPECT_EQ(read->GetFieldEnumAsValueNumber("Size", 3), 0);
    EXPECT_EQ(Lines(), TextList{"GetFieldEnumAsValueText failed, FieldName: Size , FieldEnum: 3"});
    EXPECT_EQ(none.GetFieldEnumAsValueNumber("Size", 3), 0);
    EXPECT_EQ(Lines(),
              TextList{"GetFieldEnumAsValueNumber failed, FieldName: Size , FieldEnum: 3"});
    TextList values = {"before"};
    none.GetFieldVocabAsVector("Size", &values);
    EXPECT_EQ(Lines(), TextList{"GetFieldVocabAsVector failed, FieldName: Size "});
    EXPECT_EQ(values, TextList{"before"});
    read->GetFieldVocabAsVector("Absent", &values);
    EXPECT_EQ(Lines(), TextList{"GetFieldAsVector failed, FieldName: Absent"});
    EXPECT_EQ(values, TextList());
    for (const std::int32_t number : {0, -1, 3}) {
        std::string text = "before";
        read->GetFieldEnumAsValueText("Size", number, &text);
        EXPECT_EQ(text, "before");
        EXPECT_EQ(Lines(),
                  TextList{"GetFieldEnumAsValueText failed, FieldName: Size , FieldEnum: " +
                           std::to_string(number)});
    }
    EXPECT_EQ(read->GetFieldValueAsEnum("Size", "2"), 0u);
    EXPECT_EQ(Lines(), TextList{"GetFieldValueAsEnum failed, FieldName: Size , FieldValue: 2"});
    EXPECT_EQ(none.SetFieldAsText("Size", "2"), 0);
    EXPECT_EQ(none.SetFieldAsNumber("Size", 3), 0);
    EXPECT_EQ(read->SetFieldAsText("It's", "v"), 0);
    EXPECT_EQ(read->SetFieldAsText("Size", "it's"), 0);
    EXPECT_EQ(read->SetFieldAsText(std::string("Size"), std::string("a\0b", 3)), 0);
    EXPECT_EQ(Lines(), (TextList{"SetFieldAsText failed, FieldName: Size , FieldValue: 2",
                                 "SetFieldAsText failed, FieldName: Size , FieldValue: 3",
                                 "SetFieldAsText failed, FieldName: It's , FieldValue: v",
                                 "SetFieldAsText failed, FieldName: Size , FieldValue: it's",
                                 "SetFieldAsText failed, FieldName: Size , FieldValue: a"}));
}

TEST_F(SqlCertificate, NullArgumentsAreFailures) {
    const auto read = MakeRead();
    char buffer[] = "before";
    read->GetFieldAsText(static_cast<const char*>(nullptr), buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "");
    read->GetFieldAsText("Text", nullptr, 4);
    read->GetFieldAsText("Text", buffer, 0);
    EXPECT_EQ(read->GetFieldAsNumber(nullptr), 0);
    EXPECT_EQ(read->GetFieldValueAsEnum("Text", nullptr), 0u);
    EXPECT_EQ(read->SetFieldAsText("Text", nullptr), 0);
    EXPECT_FALSE(read->TableExist(nullptr));
    EXPECT_FALSE(read->Read(nullptr, kKey, false));
    EXPECT_EQ(Lines().size(), 8u);
    EXPECT_EQ(read->GetKey(), "c:\\certs\\a.qzc");
}

TEST_F(SqlCertificate, WrittenFieldsShowAtTheNextRead) {
    const auto store = MakeRead();
    EXPECT_EQ(store->SetFieldAsText("New", "v"), 1);
    EXPECT_EQ(store->SetFieldAsText(std::string("Languages"), std::string("all")), 1);
    EXPECT_EQ(store->SetFieldAsNumber("Number", -7), 1);
    EXPECT_EQ(ReadField(*store, "New"), "");
    EXPECT_EQ(ReadNumber(*store, "Number"), 42);
    EXPECT_EQ(Lines(), TextList{"GetFieldAsText failed, FieldName: New"});
    ASSERT_TRUE(store->Read(store->GetKey().c_str(), kKey, false));
    EXPECT_EQ(ReadField(*store, "New"), "v");
    EXPECT_EQ(ReadNumber(*store, "Number"), -7);
    std::string text;
    store->GetFieldVocabAsText("Languages", &text);
    EXPECT_EQ(text, "all,all,all");
    EXPECT_EQ(ReaderOpenings(), 1u);
}

TEST_F(SqlCertificate, WhatOtherConnectionsWriteIsSeenByTheNextRead) {
    const auto store = MakeRead();
    const std::string key = store->GetKey();
    SQLite3WrapperDB connection;
    connection.Open(SQLCertificate::SqlDatabasePath());
    SQLCertificate other(&connection);
    ASSERT_TRUE(other.Read(key.c_str(), kKey, false));

    EXPECT_EQ(other.SetFieldAsText("Text", "changed"), 1);
    ASSERT_TRUE(store->Read(key.c_str(), kKey, false));
    EXPECT_EQ(ReadField(*store, "Text"), "changed");

    const std::string added = AddCertificate("b.qzc", "Name = b\n");
    ASSERT_TRUE(other.Read(added.c_str(), kKey, false));
    EXPECT_TRUE(store->TableExist(added.c_str()));
    ASSERT_TRUE(store->Read(added.c_str(), kKey, false));
    EXPECT_EQ(ReaderOpenings(), 2u);

    // The last rows go, and as many others take their row ids.
    other.DeleteRecord(added.c_str());
    const std::string third = AddCertificate("c.qzc", "Name = c\n");
    ASSERT_TRUE(other.Read(third.c_str(), kKey, false));
    EXPECT_FALSE(store->TableExist(added.c_str()));
    ASSERT_TRUE(store->Read(third.c_str(), kKey, false));
    EXPECT_EQ(ReadField(*store, "Name"), "c");
}

// Another program may write into the file as it likes.
TEST_F(SqlCertificate, WhatIsWrittenWithoutBeingCountedIsSeenByTheNextRead) {
    const auto store = MakeRead();
    const std::string key = store->GetKey();
    SQLite3WrapperDB connection;
    connection.Open(SQLCertificate::SqlDatabasePath());

    connection.Execute("UPDATE CertificateData SET fieldvalue='changed' WHERE fieldname='Text'");
    ASSERT_TRUE(store->Read(key.c_str(), kKey, false));
    EXPECT_EQ(ReadField(*store, "Text"), "changed");

    connection.Execute("insert into CertificateData values('" + key + "', 'Further', 'v')");
    ASSERT_TRUE(store->Read(key.c_str(), kKey, false));
    EXPECT_EQ(ReadField(*store, "Further"), "v");
    EXPECT_EQ(ReadField(*store, "Text"), "changed");

    connection.Execute("delete from CertificateData where fieldname='Further'");
    ASSERT_TRUE(store->Read(key.c_str(), kKey, false));
    EXPECT_FALSE(store->HasField("Further"));
    EXPECT_EQ(ReadField(*store, "Text"), "changed");
}

TEST_F(SqlCertificate, ApostrophesNeverReachTheDatabase) {
    const auto store = MakeRead();
    const std::string hostile = "'); DROP TABLE CertificateData; --";
    const std::string cases[] = {
        AddCertificate("value.qzc", "Name = a\nOther = " + hostile + "\n"),
        AddCertificate("name.qzc", "Name = a\n" + hostile + " = a\n"),
        AddCertificate("nul.qzc", std::string("Name = a\0b\n", 11)),
        AddCertificate(hostile, "Name = a\n"),
    };
    for (const std::string& key : cases) {
        SQLCertificate certificate;
        Lines();
        EXPECT_FALSE(certificate.Read(key.c_str(), kKey, false)) << key;
        const TextList lines = Lines();
        EXPECT_EQ(lines.back(), "Read failed, path: " + key + " ");
        EXPECT_EQ(lines.size(), key.find('\'') != std::string::npos ? 2u : 1u);
        EXPECT_EQ(certificate.GetKey(), "");
    }
    TextList keys;
    EXPECT_TRUE(store->TableList(&keys));
    EXPECT_EQ(keys, TextList{store->GetKey()});
    store->DeleteRecord(cases[3].c_str());
    EXPECT_EQ(Lines(), TextList{"TableExist failed, path: " + cases[3] + " "});
    EXPECT_TRUE(store->TableExist(store->GetKey().c_str()));
}

TEST_F(SqlCertificate, RecordsOfFilesThatAreGoneAreDropped) {
    // Another process has imported three certificates, of which two go.
    AddNumberedCertificates(3);
    ASSERT_EQ(RunRecordHost(3).output, "ok\n");
    std::filesystem::remove(DriveC() / "certs/product0.qzc");
    std::filesystem::remove(DriveC() / "certs/product2.qzc");
    TextList keys;
    {
        // The key of one more that is gone cannot be named in a statement.
        SQLite3WrapperDB connection;
        connection.Open("C:\\ProgramData\\Velmar\\qzc13.db");
        connection.Execute("insert into CertificateData values('c:\\o''k.qzc', 'Name', 'v')");
    }
    EXPECT_TRUE(SQLCertificate::GetDatabaseKeys(&keys));
    EXPECT_EQ(keys, (TextList{"c:\\certs\\product1.qzc", "c:\\o'k.qzc"}));
    EXPECT_EQ(Lines().back(), "TableExist failed, path: c:\\o'k.qzc ");
    // One pass a process: what goes later stays.
    std::filesystem::remove(DriveC() / "certs/product1.qzc");
    EXPECT_TRUE(SQLCertificate::GetDatabaseKeys(&keys));
    EXPECT_EQ(keys.front(), "c:\\certs\\product1.qzc");
}

}  // namespace
