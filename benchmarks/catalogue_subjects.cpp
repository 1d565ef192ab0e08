#include "catalogue_subjects.h"

#define BREVIKCONFIG_NO_COTASKMEMFREE  // the platform's own is used
#include <benchmark/benchmark.h>
#include <brevikconfig.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"
#include "catalogue/SQLite3Wrapper/SqliteLibrary.h"
#include "catalogue/VerificationKey.h"
#include "catalogue/records/SQLCertificate.h"
#include "modules/SmartComInitializer.h"
#include "platform/database_library.h"
#include "platform/registry.h"
#include "product_machine.h"

namespace {

constexpr const char* kGuid = "{PRODUCT-7}";
constexpr const char* kField = "Field 39";
constexpr const char* kValue = "value 39 of product 7";
constexpr const char* kRecordKey = "c:\\products\\product 7\\product.qzc";

// The functions of the library that only a peer needs.
struct PeerLibrary {
    int (*bind_text)(sqlite3_stmt*, int, const char*, int, void (*)(void*));
    int (*reset)(sqlite3_stmt*);

    PeerLibrary() {
        std::string reason;
        void* const library = LoadDatabaseLibrary([] {}, &reason);
        bind_text = reinterpret_cast<decltype(bind_text)>(
            FindDatabaseFunction(library, "sqlite3_bind_text"));
        reset = reinterpret_cast<decltype(reset)>(FindDatabaseFunction(library, "sqlite3_reset"));
    }
};

// A connection made by hand.
class PeerConnection {
  public:
    PeerConnection(const std::string& path, bool cheapKey) {
        constexpr int kOpenOrMake = 6;
        std::string fault;
        const std::string hostPath = DatabaseFilePath(NarrowToWide(path).c_str(), &fault);
        if (library_.open_v2(hostPath.c_str(), &db_, kOpenOrMake, nullptr) != 0) {
            throw std::runtime_error("the peer cannot open " + path);
        }
        library_.key(db_, "TorvaKD19", 10);
        if (cheapKey) {
            Execute("PRAGMA kdf_iter = 1");
        }
    }
    PeerConnection(const PeerConnection&) = delete;
    PeerConnection& operator=(const PeerConnection&) = delete;
    ~PeerConnection() { library_.close(db_); }

    void Execute(const std::string& sql) {
        if (library_.exec(db_, sql.c_str(), nullptr, nullptr, nullptr) != 0) {
            throw std::runtime_error(sql + ": " + library_.errmsg(db_));
        }
    }
    sqlite3* Get() const { return db_; }

  private:
    const SqliteLibrary& library_ = SqliteLibrary::Get();
    sqlite3* db_ = nullptr;
};

void Register(void (*ours)(benchmark::State&), void (*peer)(benchmark::State&)) {
    benchmark::RegisterBenchmark("ours", ours)->UseRealTime();
    benchmark::RegisterBenchmark("peer", peer)->UseRealTime();
}

// ---- An item ----

bool IsItemRight() {
    void* value = nullptr;
    std::uint32_t size = 0;
    const bool isRight = bvkc_CertificateItemValue(kGuid, kField, &value, &size) != 0 &&
                         std::string_view(static_cast<const char*>(value)) == kValue;
    CoTaskMemFree(value);
    return isRight;
}

void ItemOurs(benchmark::State& state) {
    for (auto _ : state) {
        if (!IsItemRight()) {
            state.SkipWithError("no item");
        }
    }
}

void ItemPeer(benchmark::State& state) {
    const PeerLibrary more;
    const SqliteLibrary& library = SqliteLibrary::Get();
    const PeerConnection connection(SQLCertificate::SqlDatabasePath(), true);
    sqlite3_stmt* statement = nullptr;
    library.prepare(connection.Get(),
                    "select fieldvalue from CertificateData where qzc=? and fieldname=?", -1,
                    &statement, nullptr);
    for (auto _ : state) {
        more.bind_text(statement, 1, kRecordKey, -1, nullptr);
        more.bind_text(statement, 2, kField, -1, nullptr);
        const bool found = library.step(statement) == 100;
        const std::string value =
            found ? reinterpret_cast<const char*>(library.column_text(statement, 0)) : "";
        if (value != kValue) {
            state.SkipWithError("no item");
        }
        more.reset(statement);
    }
    library.finalize(statement);
}

// ---- The opening ----

void OpeningOurs(benchmark::State& state) {
    for (auto _ : state) {
        SQLite3WrapperDB database;
        database.Open(SQLCertificate::SqlDatabasePath());
        if (!database.TableExists("CertificateData")) {
            state.SkipWithError("no records");
        }
    }
}

void OpeningPeer(benchmark::State& state) {
    for (auto _ : state) {
        PeerConnection connection("C:\\peer.db", false);
        connection.Execute("select count(*) from sqlite_master");
    }
}

// ---- An import ----

void ImportOurs(benchmark::State& state) {
    const CLibraryUtils::SmartComInitializer componentModel;
    SQLite3WrapperDB database;
    database.Open("C:\\import.db");
    SQLCertificate certificate(&database);
    for (auto _ : state) {
        if (!certificate.Read(kRecordKey, kVerificationKey, true)) {
            state.SkipWithError("not imported");
        }
    }
}

void ImportPeer(benchmark::State& state) {
    PeerConnection connection("C:\\import-peer.db", true);
    connection.Execute("create table if not exists t(qzc, fieldname, fieldvalue)");
    for (auto _ : state) {
        connection.Execute("delete from t");
        for (int field = 0; field < ProductMachine::kFields; ++field) {
            const std::string number = std::to_string(field);
            connection.Execute("insert into t values('" + std::string(kRecordKey) + "', 'Field " +
                               number + "', 'value " + number + " of product 7')");
        }
    }
}

// ---- The registry ----

void RegistryOurs(benchmark::State& state) {
    for (auto _ : state) {
        HKEY key = nullptr;
        WCHAR text[16];
        DWORD size = sizeof text;
        const bool isRead =
            RegOpenKeyExW(HKEY_LOCAL_MACHINE, WIDE("SOFTWARE\\ONDREL\\Certificates13\\{PRODUCT-7}"),
                          0, KEY_QUERY_VALUE, &key) == ERROR_SUCCESS &&
            RegQueryValueExW(key, WIDE("Language"), nullptr, nullptr, reinterpret_cast<BYTE*>(text),
                             &size) == ERROR_SUCCESS;
        RegCloseKey(key);
        if (!isRead || text[0] != WIDE('1')) {
            state.SkipWithError("no value");
        }
    }
}

void RegistryPeer(benchmark::State& state) {
    const std::string path = std::string(std::getenv("BREVIK_MACHINE")) + "/registry.reg";
    for (auto _ : state) {
        std::ifstream file(path, std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        benchmark::DoNotOptimize(text.find("{PRODUCT-7}"));
    }
}

}  // namespace

void RegisterItemValue() {
    if (!IsItemRight()) {
        throw std::runtime_error("the machine has no products");
    }
    Register(ItemOurs, ItemPeer);
}

void RegisterDatabaseOpening() {
    PeerConnection("C:\\peer.db", false).Execute("create table if not exists t(a)");
    Register(OpeningOurs, OpeningPeer);
}

void RegisterCertificateImport() {
    Register(ImportOurs, ImportPeer);
}

void RegisterRegistryRead() {
    Register(RegistryOurs, RegistryPeer);
}
