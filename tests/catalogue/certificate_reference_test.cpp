// The import of certificate files, and the references on them.

#include "catalogue/manager/CCertificateReference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "catalogue/records/CertificateImport.h"
#include "platform/component_model.h"
#include "support/record_machine.h"
#include "text/VelmarException.h"

namespace {

Utf8String Utf8(const std::string& text) {
    return NarrowToUtf8(text);
}

class CertificateReference : public RecordMachine {
  protected:
    static constexpr std::uint32_t kNormal = 0;

    static std::int32_t Rows() {
        SQLite3WrapperDB db;
        db.Open(SQLCertificate::SqlDatabasePath());
        return db.QueryScalar("select count(*) from CertificateData");
    }
};

TEST_F(CertificateReference, TellsWhatTheCertificateSays) {
    const std::string key = AddCertificate("a.qzc",
                                           "QDR_ProductName = Product, Product the first\n"
                                           "Vector Location = Products\\More\\{GUID-1}\n"
                                           "CertReferencePath = c:\\certs\\b.qzc\n");
    CCertificateReference reference;
    ASSERT_EQ(reference.Init(Utf8(key), {}, kNormal, 0), 1);
    const TextList lines = Lines();
    EXPECT_EQ(lines[lines.size() - 2], "CCertificateReference::Init(), certPath = " + key);
    EXPECT_EQ(lines.back(), "TableExist failed, path: " + key + " ");
    EXPECT_EQ(reference.GetGUID(), Utf8("{GUID-1}"));
    EXPECT_EQ(reference.GetPath(), Utf8(key));
    EXPECT_EQ(reference.GetStore()->GetKey(), key);
    EXPECT_TRUE(reference.HasProductName(Utf8("PRODUCT the First")));
    EXPECT_FALSE(reference.HasProductName(Utf8("Product the")));
    EXPECT_TRUE(reference.HasField(Utf8("certreferencepath")));
    EXPECT_EQ(reference.GetPathField(Utf8("CertReferencePath")), Utf8("c:\\certs\\b.qzc"));
    EXPECT_EQ(reference.GetPathField(Utf8("Absent")), Utf8String());
}

TEST_F(CertificateReference, GuidComesFromTheCallerFirst) {
    const std::string flat =
        AddCertificate("flat.qzc", "QDR_ProductName = p\nVector Location = {GUID-2}\n");
    const std::string none = AddCertificate("none.qzc", "Other = v\n");
    CCertificateReference given;
    EXPECT_EQ(given.Init(Utf8(flat), Utf8("{GIVEN}"), kNormal, 0), 1);
    EXPECT_EQ(given.GetGUID(), Utf8("{GIVEN}"));
    CCertificateReference taken;
    EXPECT_EQ(taken.Init(Utf8(flat), {}, kNormal, 0), 1);
    EXPECT_EQ(taken.GetGUID(), Utf8("{GUID-2}"));
    Lines();
    CCertificateReference nameless;
    EXPECT_EQ(nameless.Init(Utf8(none), {}, kNormal, 0), 1);
    EXPECT_EQ(nameless.GetGUID(), Utf8String());
    EXPECT_FALSE(nameless.HasProductName({}));
    EXPECT_EQ(Lines(), (TextList{"CCertificateReference::Init(), certPath = " + none,
                                 "GetFieldAsVector failed, FieldName: QDR_ProductName",
                                 "GetFieldAsText failed, FieldName: Vector Location"}));
}

TEST_F(CertificateReference, UsersOfTheProductComeFromTheRegistry) {
    std::string registry = ReadRegistry();
    const std::string uninstall =
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
    WriteRawRegistry(registry + uninstall +
                     "{A}]\n\"UsedBy\"=hex(7):78,00,00,00,79,00,00,00,00,00\n" + uninstall +
                     "{B}]\n\"UsedBy\"=\"z\"\n");
    CCertificateReference reference;
    EXPECT_EQ(reference.GetUsedBy(), Utf8String());
    reference.SetGUID(Utf8("{A}"));
    EXPECT_EQ(reference.GetUsedBy(), Utf8("x"));
    WriteRawRegistry(registry);
    EXPECT_EQ(reference.GetUsedBy(), Utf8("x"));  // once known, it stays
    reference.SetGUID(Utf8("{B}"));
    EXPECT_EQ(reference.GetUsedBy(), Utf8String());
}

TEST_F(CertificateReference, FileIsReadOnceUnlessAskedToReadItAnew) {
    const std::string key = AddCertificate("a.qzc", "Name = a\nOld = v\n");
    CCertificateReference reference;
    ASSERT_EQ(reference.Init(Utf8(key), {}, kNormal, 0), 1);
    AddCertificate("a.qzc", "Name = changed\n");
    ASSERT_EQ(reference.Init(Utf8(key), {}, kNormal, 0), 1);
    EXPECT_EQ(reference.GetPathField(Utf8("Name")), Utf8("a"));
    EXPECT_EQ(ReaderOpenings(), 1u);
    ASSERT_EQ(reference.Init(Utf8(key), {}, kNormal, 1), 1);
    EXPECT_EQ(reference.GetPathField(Utf8("Name")), Utf8("changed"));
    EXPECT_FALSE(reference.HasField(Utf8("Old")));
    EXPECT_EQ(ReaderOpenings(), 2u);
}

TEST_F(CertificateReference, FailedReadingAnewKeepsTheRowsAndAnUnreadableFileLeavesNone) {
    const std::string key = AddCertificate("a.qzc", "Name = a\nOther = b\n");
    CCertificateReference reference;
    ASSERT_EQ(reference.Init(Utf8(key), {}, kNormal, 0), 1);
    AddCertificate("a.qzc", "Name = changed\nOther = it's\n");
    Lines();
    EXPECT_EQ(reference.Init(Utf8(key), {}, kNormal, 1), 0);
    EXPECT_EQ(Lines().back(), "Read failed, path: " + key + " ");
    EXPECT_EQ(Rows(), 2);
    ASSERT_EQ(reference.Init(Utf8(key), {}, kNormal, 0), 1);
    EXPECT_EQ(reference.GetPathField(Utf8("Name")), Utf8("a"));
    AddCertificate("a.qzc", "unreadable");
    EXPECT_EQ(reference.Init(Utf8(key), {}, kNormal, 1), 0);
    EXPECT_EQ(Lines().back(), "Read failed, path: " + key + " ");
    EXPECT_EQ(Rows(), 0);
}

TEST_F(CertificateReference, WithoutTheReaderOrItsTextThereIsNoCertificate) {
    const std::string unreadable = AddCertificate("a.qzc", "unreadable");
    const std::string absent = "c:\\certs\\absent.qzc";
    for (const std::string& key : {unreadable, absent}) {
        CCertificateReference reference;
        EXPECT_EQ(reference.Init(Utf8(key), {}, kNormal, 0), 0);
        // The first one has made the table, though it gave nothing.
        const TextList lines = Lines();
        EXPECT_EQ(lines.back(), "Read failed, path: " + key + " ");
        EXPECT_EQ(std::ranges::count(lines, "TableExist failed, path: " + key + " "),
                  key == unreadable ? 1 : 0);
    }
    EXPECT_EQ(Rows(), 0);
    WriteRegistry("");
    CCertificateReference reference;
    EXPECT_EQ(reference.Init(Utf8(AddCertificate("b.qzc", "Name = v\n")), {}, kNormal, 0), 0);
    EXPECT_EQ(Lines().back(), "Read failed, path: c:\\certs\\b.qzc ");
    SQLite3WrapperDB db;
    db.Open(SQLCertificate::SqlDatabasePath());
    try {
        ImportCertificate("c:\\certs\\b.qzc", kKey, db);
        FAIL() << "imported without a reader";
    } catch (const _com_error& failure) {
        EXPECT_EQ(failure.Error(), E_POINTER);
    }
    EXPECT_THROW(ImportCertificate(nullptr, kKey, db), VelmarException);
}

TEST_F(CertificateReference, ImportIsAllOrNothing) {
    SQLite3WrapperDB db;
    db.Open(SQLCertificate::SqlDatabasePath());
    const std::string good = AddCertificate("good.qzc", "Name = a, b, c\n");
    EXPECT_EQ(ImportCertificate(good.c_str(), kKey, db), 1);
    EXPECT_EQ(ImportCertificate(good.c_str(), kKey, db), 1);
    EXPECT_EQ(ReaderOpenings(), 1u);
    EXPECT_EQ(db.QueryScalar("select count(*) from CertificateData"), 3);

    // The database refuses the second row of this one.
    const std::string bad = AddCertificate("bad.qzc", "Name = a, refused, c\n");
    db.Execute(
        "create trigger refusal before insert on CertificateData when new.fieldvalue = 'refused' "
        "begin select raise(abort, 'refused'); end");
    EXPECT_THROW(ImportCertificate(bad.c_str(), kKey, db), SQLite3WrapperException);
    EXPECT_EQ(db.QueryScalar("select count(*) from CertificateData"), 3);
    db.Execute("drop trigger refusal");
    EXPECT_EQ(ImportCertificate(bad.c_str(), kKey, db), 1);
    EXPECT_EQ(db.QueryScalar("select count(*) from CertificateData"), 6);

    // Without a key to test the file against it is not read.
    const std::string other = AddCertificate("other.qzc", "Name = a\n");
    EXPECT_EQ(ImportCertificate(other.c_str(), nullptr, db), 1);
    EXPECT_EQ(db.QueryScalar("select count(*) from CertificateData"), 6);
}

TEST_F(CertificateReference, ManyThreadsImportEachFileOnce) {
    constexpr int kCertificates = 4;
    AddNumberedCertificates(kCertificates);
    std::vector<std::thread> threads;
    std::atomic<int> good = 0;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            const CLibraryUtils::SmartComInitializer apartment;
            for (int number = 0; number < kCertificates; ++number) {
                CCertificateReference reference;
                const std::string key = "c:\\certs\\" + NumberedCertificate::FileName(number);
                good += reference.Init(Utf8(key), {}, kNormal, 0);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(good, 8 * kCertificates);
    EXPECT_EQ(Rows(), kCertificates * NumberedCertificate::kFields);
}

}  // namespace
