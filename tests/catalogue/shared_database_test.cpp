// The database file in the hands of several processes, and in a bad state.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/RecordGathering.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "catalogue/records/RecordAccess.h"
#include "catalogue/records/RecordTable.h"
#include "catalogue/records/SharedRecordStore.h"
#include "platform/clock.h"
#include "support/child_process.h"
#include "support/other_user.h"
#include "support/record_machine.h"

namespace {

namespace fs = std::filesystem;

class SharedDatabase : public RecordMachine {
  protected:
    static constexpr int kCertificates = 5;
    static constexpr int kProcesses = 8;

    void SetUp() override {
        RecordMachine::SetUp();
        AddNumberedCertificates(kCertificates);
    }

    // Starts processes that begin to read at the same moment; what each one says.
    static TextList RunAtOnce() {
        std::vector<std::unique_ptr<ChildProcess>> hosts;
        std::vector<std::string> command = RecordHost(kCertificates);
        command.push_back("wait");
        for (int i = 0; i < kProcesses; ++i) {
            hosts.push_back(std::make_unique<ChildProcess>(command));
        }
        for (const auto& host : hosts) {
            host->ReadLine();
        }
        for (const auto& host : hosts) {
            host->WriteLine("go");
        }
        TextList results;
        for (const auto& host : hosts) {
            results.push_back(host->ReadLine());
        }
        return results;
    }

    static void ExpectEachRowOnce() {
        SQLite3WrapperDB db;
        db.Open("C:\\ProgramData\\Velmar\\qzc13.db");
        EXPECT_EQ(db.QueryScalar("select count(*) from CertificateData"),
                  kCertificates * NumberedCertificate::kFields);
    }

    static void Execute(const TextList& statements) {
        SQLite3WrapperDB db;
        db.Open("C:\\ProgramData\\Velmar\\qzc13.db");
        for (const std::string& statement : statements) {
            db.Execute(statement);
        }
    }

    static void RemoveDatabase() {
        for (const char* suffix : {"", "-journal"}) {
            fs::remove(DatabaseFile().string() + suffix);
        }
    }

    static const TextList& AllRight() {
        static const TextList texts(kProcesses, "ok");
        return texts;
    }
};

TEST_F(SharedDatabase, ProcessesAtOnceOnANewMachineLeaveOneSetOfRows) {
    for (int round = 0; round < 10; ++round) {
        EXPECT_EQ(RunAtOnce(), AllRight());
        ExpectEachRowOnce();
        RemoveDatabase();
    }
}

TEST_F(SharedDatabase, ProcessKilledAtAnyMomentLeavesNothingWrong) {
    for (long microseconds = 0; microseconds < 40000; microseconds += 800) {
        ChildProcess host(RecordHost(kCertificates));
        const timespec wait = {0, microseconds * 1000};
        nanosleep(&wait, nullptr);
        host.Signal(SIGKILL);
        host.Wait();
        ASSERT_EQ(RunRecordHost(kCertificates).output, "ok\n") << microseconds;
        ExpectEachRowOnce();
        RemoveDatabase();
    }
}

std::string WithOtherBit(std::string bytes, std::size_t place) {
    bytes.at(place) = static_cast<char>(bytes.at(place) ^ 1);
    return bytes;
}

TEST_F(SharedDatabase, ADamagedFileIsReplacedAndFilledAgain) {
    fs::create_directories(DatabaseFile().parent_path());
    Execute({"create table other(a)"});
    const std::string noTable = ReadHostFile(DatabaseFile());
    RemoveDatabase();
    ASSERT_EQ(RunRecordHost(kCertificates).output, "ok\n");
    Execute({"insert into CertificateData values('c:\\certs\\product0.qzc', 'Long', '" +
             std::string(5000, 'x') + "')"});
    const std::string whole = ReadHostFile(DatabaseFile());
    const auto after = [&](const TextList& statements) {
        Execute(statements);
        const std::string bytes = ReadHostFile(DatabaseFile());
        WriteHostFile(DatabaseFile(), whole);
        return bytes;
    };
    const std::string page(1024, '\0');
    const std::pair<const char*, std::string> cases[] = {
        {"end cut", whole.substr(0, whole.size() - 100)},
        {"first page zeroed", page + whole.substr(1024)},
        {"third page zeroed", whole.substr(0, 2048) + page + whole.substr(3072)},
        {"one bit", WithOtherBit(whole, 5000)},
        {"one bit of the long value", WithOtherBit(whole, whole.size() - 99)},
        {"no database", "this is no database\n"},
        {"no table", noTable},
        {"end of the long value zeroed", whole.substr(0, whole.size() - 1024) + page},
        {"a view in the table's place",
         after({"alter table CertificateData rename to rows",
                "create view CertificateData as select * from rows"})},
        {"a trigger", after({"create trigger t before insert on CertificateData begin select "
                             "raise(abort, 'no'); end"})},
        {"one column more", after({"alter table CertificateData add column more"})},
        {"rows kept apart", after({"create unique index i on CertificateData(qzc, fieldname)"})},
    };
    for (const auto& [what, damaged] : cases) {
        SCOPED_TRACE(what);
        const std::size_t openings = ReaderOpenings();
        WriteHostFile(DatabaseFile(), damaged);
        EXPECT_EQ(RunAtOnce(), AllRight());
        ExpectEachRowOnce();
        EXPECT_GT(ReaderOpenings(), openings);
    }
}

// Pages without rows are needed for new ones, and to take rows away.
TEST_F(SharedDatabase, DamagedFreePagesAreMendedWhenTheyAreNeeded) {
    for (const bool drops : {false, true}) {
        RemoveDatabase();
        ASSERT_EQ(RunRecordHost(1).output, "ok\n");
        const std::size_t used = fs::file_size(DatabaseFile());
        Execute({"insert into CertificateData values('', '', '" + std::string(9000, 'x') + "')",
                 "delete from CertificateData where qzc = ''"});
        std::string bytes = ReadHostFile(DatabaseFile());
        for (std::size_t place = used + 99; place < bytes.size(); place += 1024) {
            bytes = WithOtherBit(bytes, place);
        }
        WriteHostFile(DatabaseFile(), bytes);
        if (drops) {
            SharedRecordStore::Get().DropRecords();
        }
        EXPECT_EQ(RunRecordHost(kCertificates).output, "ok\n");
    }
}

TEST_F(SharedDatabase, ADamagedFileThatCannotBeLockedStaysAndIsPassedBy) {
    fs::create_directories(DatabaseFile().string() + ".repair");
    WriteHostFile(DatabaseFile(), "this is no database\n");
    SQLCertificate certificate;
    EXPECT_FALSE(certificate.Read("c:\\certs\\product0.qzc", kKey, false));
    EXPECT_THAT(Lines(), testing::Contains("The damaged record database stays as it is: "
                                           "SQLITE_PERM[3]: it cannot be locked"));
    EXPECT_EQ(ReadHostFile(DatabaseFile()), "this is no database\n");
}

// What is short here says nothing of the file.
TEST_F(SharedDatabase, AFileThatMemoryIsTooShortForIsNoDamagedOne) {
#ifdef BREVIK_TEST_SANITIZED
    GTEST_SKIP() << "the sanitizers need all of the address space";
#endif
    ASSERT_EQ(RunRecordHost(1).output, "ok\n");
    Execute({"insert into CertificateData values('k', 'Long', hex(zeroblob(30000000)))"});
    rlimit all;
    getrlimit(RLIMIT_AS, &all);
    const std::string pages = ReadHostFile("/proc/self/statm");
    const rlimit some = {std::stoul(pages) * 4096 + 40'000'000, all.rlim_max};
    setrlimit(RLIMIT_AS, &some);
    RecordGathering gathering;
    TextList keys;
    EXPECT_FALSE(SQLCertificate::GetDatabaseKeys(&keys));
    EXPECT_TRUE(gathering.HasMissed());
    setrlimit(RLIMIT_AS, &all);
    EXPECT_TRUE(SQLCertificate::GetDatabaseKeys(&keys));
    EXPECT_THAT(keys, testing::Contains("c:\\certs\\product0.qzc"));
}

TEST_F(SharedDatabase, OneLoadWaitsOnceForAnotherProcess) {
    ASSERT_EQ(RunRecordHost(1).output, "ok\n");
    SQLite3WrapperDB other;
    other.Open("C:\\ProgramData\\Velmar\\qzc13.db");
    other.Execute("begin exclusive");
    TextList keys;
    {
        RecordGathering gathering;
        RecordGathering::Note(SQLite3WrapperException(kSqliteBusy, "as if 60 seconds had passed"));
        EXPECT_TRUE(RecordGathering::IsOver());
        const DWORD start = GetTickCount();
        EXPECT_FALSE(SQLCertificate::GetDatabaseKeys(&keys));
        EXPECT_LT(GetTickCount() - start, 30000u);
    }
    RecordGathering next;
    EXPECT_GT(RecordGathering::LongestWait(), 59000u);
    other.Execute("rollback");
    EXPECT_TRUE(SQLCertificate::GetDatabaseKeys(&keys));
    EXPECT_FALSE(next.HasMissed());
}

// A user who may look at less than others, and owns neither the folder nor the file.
TEST_F(SharedDatabase, AUserWithFewerRightsTakesNothingFromOthers) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can be another user";
    }
    ASSERT_EQ(RunRecordHost(1).output, "ok\n");
    OpenTheWayTo(DatabaseFile().parent_path());
    OpenTheWayTo(DriveC() / "certs");
    const auto readAsNobody = [] {
        return AsNobody([] {
            TextList keys;
            return SQLCertificate::GetDatabaseKeys(&keys) && keys.size() == 1;
        });
    };
    for (const fs::perms perms : {fs::perms(0700), fs::perms(0711)}) {
        fs::permissions(DriveC() / "certs", perms);
        fs::rename(DriveC() / "certs/product0.qzc", DriveC() / "certs/Product0.qzc");
        EXPECT_TRUE(readAsNobody()) << static_cast<int>(perms);
        fs::rename(DriveC() / "certs/Product0.qzc", DriveC() / "certs/product0.qzc");
    }
    // To mend the database is another matter.
    WriteHostFile(DatabaseFile(), "this is no database\n");
    EXPECT_FALSE(readAsNobody());
    EXPECT_EQ(ReadHostFile(DatabaseFile()), "");
}

// What another user puts in the place of the folder or of a file in it is not followed.
TEST_F(SharedDatabase, LinksAndPipesAreRefused) {
    const fs::path target = TestMachine::ScratchFolder() / "target";
    const struct {
        const char* name;
        bool isLink;
        const char* reason;
    } cases[] = {{"/qzc13.db", true, "qzc13.db is a symbolic link"},
                 {"/qzc13.db-journal", true, "qzc13.db-journal is a symbolic link"},
                 {"/qzc13.db", false, "qzc13.db is no plain file"},
                 {"", true, "Velmar is a symbolic link"}};
    for (const auto& row : cases) {
        const fs::path folder = DatabaseFile().parent_path();
        fs::remove_all(folder);
        fs::create_directories(*row.name != '\0' ? folder : folder.parent_path());
        const std::string place = folder.string() + row.name;
        row.isLink ? fs::create_symlink(target, place) : void(mkfifo(place.c_str(), 0666));
        try {
            Execute({"create table t(a)"});
            ADD_FAILURE() << "opened where " << row.reason;
        } catch (const SQLite3WrapperException& failure) {
            EXPECT_THAT(failure.what(), testing::EndsWith(row.reason));
        }
        EXPECT_FALSE(fs::exists(target)) << row.reason;
    }
}

TEST_F(SharedDatabase, ALinkThatIsPutInTheJournalsPlaceLaterIsNotFollowed) {
    const fs::path target = TestMachine::ScratchFolder() / "target";
    ASSERT_EQ(RunRecordHost(1).output, "ok\n");
    SQLite3WrapperDB db;
    db.Open(SQLCertificate::SqlDatabasePath());
    EXPECT_NE(db.QueryScalar("select count(*) from CertificateData"), 0);
    fs::create_symlink(target, DatabaseFile() += "-journal");
    EXPECT_THROW(db.Execute("delete from CertificateData"), SQLite3WrapperException);
    EXPECT_FALSE(fs::exists(target));
}

TEST_F(SharedDatabase, WhatIsWrittenGoesToTheFileThatAnotherProcessPutThere) {
    ASSERT_EQ(RunRecordHost(1).output, "ok\n");
    SharedRecordStore& store = SharedRecordStore::Get();
    store.EnsureOpen();
    RemoveDatabase();
    ASSERT_EQ(RunRecordHost(1).output, "ok\n");
    RecordAccess(store.Database()).Edit(RecordTable::DeleteAllRows);
    SQLite3WrapperDB file;
    file.Open(SQLCertificate::SqlDatabasePath());
    EXPECT_EQ(file.QueryScalar("select count(*) from CertificateData"), 0);
}

// The crypto library's exit handler would run before that of the host.
TEST_F(SharedDatabase, ReadingGoesOnWhileTheProcessEnds) {
    ASSERT_EQ(RunRecordHost(kCertificates).output, "ok\n");
    const std::string whole = ReadHostFile(DatabaseFile());
    std::vector<std::string> command = RecordHost(kCertificates);
    command.push_back("late");
    EXPECT_EQ(RunChild(command).output, "ok\nok\n");
    // A host that has used the same library itself shuts it down, and reading ends.
    command.back() = "crypto";
    const ChildResult result = RunChild(command);
    EXPECT_EQ(result.output, "ok\nc:\\certs\\product0.qzc is not good\n");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(ReadHostFile(DatabaseFile()), whole);
}

TEST_F(SharedDatabase, WithoutTheDatabaseLibraryTheCatalogueIsEmpty) {
    const fs::path folder = TestMachine::ScratchFolder() / "libraries";
    fs::create_directory(folder);
    WriteHostFile(folder / "libsqlcipher.so.0", "no library");
    const std::map<std::string, std::string> environment = {{"LD_LIBRARY_PATH", folder.string()}};
    // On a new machine nothing is missed until there is something to import.
    EXPECT_EQ(RunRecordHost(0, environment).output, "ok\n");
    std::map<std::string, std::string> heard = environment;
    heard["BREVIK_DEBUG_OUTPUT"] = "-";
    const ChildResult missing = RunRecordHost(1, heard);
    EXPECT_EQ(missing.output, "c:\\certs\\product0.qzc is not good\n");
    EXPECT_THAT(missing.errors, testing::ContainsRegex(
                                    "The catalogue is empty: CPPSQLITE_ERROR.1000.: the database "
                                    "library libsqlcipher.so.0 cannot be loaded: .*\r\n"));

    ASSERT_EQ(RunRecordHost(kCertificates).output, "ok\n");
    const std::string whole = ReadHostFile(DatabaseFile());
    EXPECT_THAT(RunRecordHost(1, environment).output,
                testing::StartsWith("CPPSQLITE_ERROR[1000]: the database library"));
    EXPECT_EQ(ReadHostFile(DatabaseFile()), whole);
}

// The host is linked with the plain library, which exports the same names, and uses it before,
// between and after the library's own use of the other one.
TEST_F(SharedDatabase, AHostMayUseThePlainLibraryBesides) {
#ifdef BREVIK_TEST_SANITIZED
    GTEST_SKIP() << "the sanitizers refuse the deep binding that keeps the libraries apart";
#endif
    const ChildResult result =
        RunChild({BREVIK_TEST_BINARY_FOLDER "/plain_sqlite_host", "c:\\certs\\product0.qzc",
                  "c:\\certs\\product1.qzc", (TestMachine::ScratchFolder() / "plain.db").string()});
    EXPECT_EQ(result.output,
              "plain 1\nValue 1 of product 0\nplain 2\nValue 1 of product 1\nplain 3\n");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(
        ReadHostFile(TestMachine::ScratchFolder() / "plain.db").starts_with("SQLite format 3"));
    const std::string bytes = ReadHostFile(DatabaseFile());
    EXPECT_GT(bytes.size(), 1024u);
    EXPECT_FALSE(bytes.starts_with("SQLite format 3"));
    EXPECT_EQ(bytes.find("product"), std::string::npos);
}

}  // namespace
