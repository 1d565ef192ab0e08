// One certificate's rows, and the database as a whole, on a machine of its own.

#include "catalogue/records/SQLCertificate.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
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
        return std::filesystem::status(path).permissions() & std::filesystem::perms::mask;
    };
    EXPECT_EQ(mode(DatabaseFile().parent_path()), std::filesystem::perms(01777));
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

// For a field without a row, for no name, and for an object without a certificate.
TEST_F(SqlCertificate, FailuresAreSaidAndLeaveTheirArguments) {
    const auto read = MakeRead();
    SQLCertificate none;
    const std::pair<SQLCertificate*, std::string> cases[] = {
        {read.get(), "Absent"}, {read.get(), ""}, {&none, "Text"}};
    for (const auto& [store, name] : cases) {
        std::string text = "before";
        store->GetFieldAsText(name, &text);
        store->GetFieldEnumAsValueText(name, 1, &text);
        EXPECT_EQ(text, "before");
        char buffer[] = "before";
        store->GetFieldAsText(name.c_str(), buffer, sizeof buffer);
        EXPECT_STREQ(buffer, "");
        EXPECT_EQ(store->GetFieldAsNumber(name.c_str()), 0);
        EXPECT_EQ(store->GetFieldMaxEnum(name.c_str()), 0u);
        EXPECT_EQ(store->GetFieldValueAsEnum(name, "v"), 0u);
        EXPECT_FALSE(store->HasField(name));
        store->GetFieldVocabAsText(name, &text);
        EXPECT_EQ(text, "");
        const std::string end = " failed, FieldName: " + name;
        EXPECT_EQ(
            Lines(),
            (TextList{"GetFieldAsText" + end, "GetFieldEnumAsValueText" + end + " , FieldEnum: 1",
                      "GetFieldAsText" + end, "GetFieldAsNumber" + end, "GetFieldMaxEnum" + end,
                      "GetFieldValueAsEnum" + end + " , FieldValue: v",
                      "GetFieldVocabAsText" + end + " "}));
    }
    TextList values = {"before"};
    none.GetFieldVocabAsVector("Size", &values);
    EXPECT_EQ(values, TextList{"before"});
    read->GetFieldVocabAsVector("Absent", &values);
    EXPECT_EQ(values, TextList());
    EXPECT_EQ(read->GetFieldEnumAsValueNumber("Size", 3), 0);
    EXPECT_EQ(none.GetFieldEnumAsValueNumber("Size", 3), 0);
    EXPECT_EQ(read->GetFieldValueAsEnum("Size", "2"), 0u);
    EXPECT_EQ(none.SetFieldAsNumber("Size", 3), 0);
    EXPECT_EQ(read->SetFieldAsText("Size", "it's"), 0);
    EXPECT_EQ(read->SetFieldAsText(std::string("Size"), std::string("a\0b", 3)), 0);
    EXPECT_EQ(Lines(), (TextList{"GetFieldVocabAsVector failed, FieldName: Size ",
                                 "GetFieldAsVector failed, FieldName: Absent",
                                 "GetFieldEnumAsValueText failed, FieldName: Size , FieldEnum: 3",
                                 "GetFieldEnumAsValueNumber failed, FieldName: Size , FieldEnum: 3",
                                 "GetFieldValueAsEnum failed, FieldName: Size , FieldValue: 2",
                                 "SetFieldAsText failed, FieldName: Size , FieldValue: 3",
                                 "SetFieldAsText failed, FieldName: Size , FieldValue: it's",
                                 "SetFieldAsText failed, FieldName: Size , FieldValue: a"}));
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

    // Another program may write into the file as it likes, also in the midst of others' rows.
    EXPECT_EQ(other.SetFieldAsText("Text", "changed"), 1);
    connection.Execute("insert into CertificateData values('other', 'Name', 'v')");
    connection.Execute("insert into CertificateData values('" + key + "', 'Further', 'v')");
    ASSERT_TRUE(store->Read(key.c_str(), kKey, false));
    EXPECT_EQ(ReadField(*store, "Text"), "changed");
    EXPECT_EQ(ReadField(*store, "Further"), "v");
    connection.Execute("delete from CertificateData where fieldname='Further'");
    ASSERT_TRUE(store->Read(key.c_str(), kKey, false));
    EXPECT_FALSE(store->HasField("Further"));

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
