// The database file in the hands of several processes, and in a bad state.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <time.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"
#include "catalogue/SQLite3Wrapper/SqliteLibrary.h"
#include "support/child_process.h"
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

std::string WithoutTable(const char* key) {
    const SqliteLibrary& library = SqliteLibrary::Get();
    const std::string path = TestMachine::ScratchFolder() / "other.db";
    sqlite3* db = nullptr;
    EXPECT_EQ(library.open(path.c_str(), &db), 0);
    if (key != nullptr) {
        EXPECT_EQ(library.key(db, key, 10), 0);
        EXPECT_EQ(library.exec(db, "PRAGMA kdf_iter = 1", nullptr, nullptr, nullptr), 0);
    }
    EXPECT_EQ(library.exec(db, "create table other(a)", nullptr, nullptr, nullptr), 0);
    library.close(db);
    std::string bytes = ReadHostFile(path);
    fs::remove(path);
    return bytes;
}

struct Damage {
    const char* name;
    std::function<std::string(std::string)> apply;
};

void PrintTo(const Damage& damage, std::ostream* stream) {
    *stream << damage.name;
}

class DamagedDatabase : public SharedDatabase, public testing::WithParamInterface<Damage> {};

TEST_P(DamagedDatabase, IsReplacedAndFilledAgain) {
    ASSERT_EQ(RunRecordHost(kCertificates).output, "ok\n");
    const std::string whole = ReadHostFile(DatabaseFile());
    const std::string damaged = GetParam().apply(whole);
    ASSERT_NE(damaged, whole);
    WriteHostFile(DatabaseFile(), damaged);
    EXPECT_EQ(RunAtOnce(), AllRight());
    ExpectEachRowOnce();
    EXPECT_GT(ReaderOpenings(), std::size_t{kCertificates});
}

const Damage kDamages[] = {
    {"Halved", [](std::string bytes) { return bytes.substr(0, bytes.size() / 2); }},
    {"EndCut", [](std::string bytes) { return bytes.substr(0, bytes.size() - 100); }},
    {"OneByte", [](std::string bytes) { return bytes.substr(0, 1); }},
    {"OnePage", [](std::string bytes) { return bytes.substr(0, 1024); }},
    {"FirstPageZeroed", [](std::string bytes) { return bytes.replace(0, 1024, 1024, '\0'); }},
    {"ThirdPageZeroed", [](std::string bytes) { return bytes.replace(2048, 1024, 1024, '\0'); }},
    {"AllZeroed", [](std::string bytes) { return std::string(bytes.size(), '\0'); }},
    {"OneBit",
     [](std::string bytes) {
         bytes.at(5000) = static_cast<char>(bytes.at(5000) ^ 1);
         return bytes;
     }},
    {"Text", [](std::string) { return std::string("this is no database\n"); }},
    {"OtherKey", [](std::string) { return WithoutTable("otherKey9"); }},
    {"NotEncrypted", [](std::string) { return WithoutTable(nullptr); }},
    {"NoTable", [](std::string) { return WithoutTable("TorvaKD19"); }},
};
INSTANTIATE_TEST_SUITE_P(Kinds, DamagedDatabase, testing::ValuesIn(kDamages),
                         [](const auto& parameter) { return parameter.param.name; });

TEST_F(SharedDatabase, ReplacingADamagedFileIsTold) {
    fs::create_directories(DatabaseFile().parent_path());
    WriteHostFile(DatabaseFile(), "this is no database\n");
    TextList keys;
    EXPECT_FALSE(SQLCertificate::GetDatabaseKeys(&keys));
    EXPECT_EQ(Lines(), (TextList{"SqlDatabasePath result = C:\\ProgramData\\Velmar\\qzc13.db)",
                                 "TableList failed ", "TableList failed ", "TableList failed "}));
    EXPECT_EQ(ReadHostFile(DatabaseFile()), "");
}

TEST_F(SharedDatabase, AnEmptyFileIsTakenAsItIs) {
    fs::create_directories(DatabaseFile().parent_path());
    WriteHostFile(DatabaseFile(), "");
    const auto before = fs::last_write_time(DatabaseFile());
    TextList keys;
    EXPECT_FALSE(SQLCertificate::GetDatabaseKeys(&keys));
    EXPECT_EQ(fs::last_write_time(DatabaseFile()), before);
    EXPECT_FALSE(HasLoaded("sqlcipher"));
    EXPECT_EQ(RunAtOnce(), AllRight());
    EXPECT_TRUE(SQLCertificate::GetDatabaseKeys(&keys));
    EXPECT_EQ(keys.size(), std::size_t{kCertificates});
}

// A process that is killed while it writes the file for the first time leaves content without a
// table and the journal that takes it back.
TEST_F(SharedDatabase, ACreationThatWasCutOffIsTakenBack) {
    SQLite3WrapperDB db;
    fs::create_directories(DatabaseFile().parent_path());
    db.Open("C:\\ProgramData\\Velmar\\qzc13.db");
    db.Execute("PRAGMA cache_size = 10");
    db.Execute("begin immediate");
    db.Execute("create table 'CertificateData'(qzc, fieldname, fieldvalue)");
    for (int row = 0; row < 200; ++row) {
        db.Execute("insert into CertificateData values('k', 'n', '" + std::string(500, 'v') + "')");
    }
    // The cache has spilled by now; what lies on the disk is what a killed process leaves.
    const fs::path copy = TestMachine::ScratchFolder();
    for (const char* suffix : {"", "-journal"}) {
        fs::copy_file(DatabaseFile().string() + suffix, (copy / "copy").string() + suffix,
                      fs::copy_options::overwrite_existing);
    }
    db.Execute("rollback");
    db.Close();
    RemoveDatabase();
    for (const char* suffix : {"", "-journal"}) {
        fs::copy_file((copy / "copy").string() + suffix, DatabaseFile().string() + suffix);
    }
    ASSERT_GT(fs::file_size(DatabaseFile()), 0u);
    EXPECT_EQ(RunAtOnce(), AllRight());
    ExpectEachRowOnce();
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
                testing::StartsWith("CPPSQLITE_ERROR[1000]: the database library "
                                    "libsqlcipher.so.0 cannot be loaded: "));
    fs::copy_file(BREVIK_TEST_BINARY_FOLDER "/plain_library.so", folder / "libsqlcipher.so.0",
                  fs::copy_options::overwrite_existing);
    EXPECT_EQ(RunRecordHost(1, environment).output,
              "CPPSQLITE_ERROR[1000]: the database library libsqlcipher.so.0 has no function "
              "sqlite3_open\n");
    EXPECT_EQ(ReadHostFile(DatabaseFile()), whole);
    EXPECT_EQ(RunRecordHost(kCertificates).output, "ok\n");
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
