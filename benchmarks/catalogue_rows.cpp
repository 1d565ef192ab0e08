#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "processes.h"
#include "product_machine.h"
#include "rows.h"

namespace {

constexpr int kRuns = 51;
constexpr int kLoads = 3;

// Whole processes, taking turns.
Row FirstItemRow() {
    std::vector<Nanoseconds> ours;
    std::vector<Nanoseconds> empty;
    TimeOf(BENCH_FIRST_ITEM_PROGRAM);  // imports the certificates
    for (int run = 0; run < kRuns; ++run) {
        ours.push_back(TimeOf(BENCH_FIRST_ITEM_PROGRAM));
        empty.push_back(TimeOf(BENCH_EMPTY_PROGRAM));
    }
    const Nanoseconds loaded = Median(ours);
    const Nanoseconds bare = Median(empty);
    return {"process that asks for its first item, 20 products imported",
            "peer + 12 ms",
            Text(loaded),
            "empty C program",
            Text(bare),
            Verdict(loaded <= bare + 12 * kMillisecond)};
}

// Median times of the first load of a process.
struct LoadTimes {
    Nanoseconds importing;
    Nanoseconds imported;
};

LoadTimes MeasureLoads(const ProductMachine& machine) {
    machine.Use();
    std::vector<Nanoseconds> importing;
    std::vector<Nanoseconds> imported;
    for (int run = 0; run < kLoads; ++run) {
        machine.DropDatabase();
        importing.push_back(TimeOf(BENCH_FIRST_ITEM_PROGRAM));
        imported.push_back(TimeOf(BENCH_FIRST_ITEM_PROGRAM));
    }
    return {Median(importing), Median(imported)};
}

// Forty times the certificates may take fifty times as long.
Row GrowthRow(const std::string& what, Nanoseconds large, Nanoseconds small) {
    constexpr double kMost = 50;
    return {what,        "<= 50 x peer",
            Text(large), "the same with 50 certificates",
            Text(small), Verdict(large <= kMost * small)};
}

Row ToldRow(const std::string& what, const std::string& ours, const std::string& peers) {
    return {what, "(for information)", ours, "the same with 50 certificates", peers, "-"};
}

double KibibytesOfFirstItem() {
    return std::stod(OutputOf({BENCH_FIRST_ITEM_PROGRAM, "memory"}));
}

}  // namespace

std::vector<Row> CatalogueRows() {
    namespace fs = std::filesystem;
    const std::string before = std::getenv("BREVIK_MACHINE");
    const fs::path folder = fs::path(before).parent_path();
    std::vector<Row> rows;

    const ProductMachine usual(folder / "products-20", 20);
    usual.Use();
    rows.push_back(FirstItemRow());
    rows.push_back(SubjectRow("opening and keying the database", "database-opening",
                              "the same, usual key derivation", "< 4 ms", Under(4 * kMillisecond)));
    rows.push_back(SubjectRow("CertificateItemValue, 20 products", "item-value",
                              "prepared SELECT by key and field", "< 8 us",
                              Under(8 * kMicrosecond)));
    rows.push_back(SubjectRow("import of one certificate of 40 fields", "certificate-import",
                              "its rows written one by one", "< 5 ms", Under(5 * kMillisecond)));
    rows.push_back(SubjectRow("registry key opened and value read", "registry-read",
                              "its file opened and read", "< 10 us", Under(10 * kMicrosecond)));

    usual.AddServices();
    rows.push_back(SubjectRow(
        "bvkc_Dispatch_IsUpdateOrMessageAvailable, stand-in answering at once", "dispatch",
        "the call on the component's interface", "< 60 us", Under(60 * kMicrosecond)));

    const ProductMachine small(folder / "products-50", 50);
    const ProductMachine middle(folder / "products-500", 500);
    const ProductMachine large(folder / "products-2000", 2000);
    const LoadTimes of50 = MeasureLoads(small);
    const LoadTimes of500 = MeasureLoads(middle);
    const double memory = KibibytesOfFirstItem();
    small.Use();
    const double memoryOf50 = KibibytesOfFirstItem();
    const LoadTimes of2000 = MeasureLoads(large);
    rows.push_back(ToldRow("first load of 500 certificates, importing", Text(of500.importing),
                           Text(of50.importing)));
    rows.push_back(
        GrowthRow("first load of 2,000 certificates, importing", of2000.importing, of50.importing));
    rows.push_back(ToldRow("first load of 500 certificates, imported", Text(of500.imported),
                           Text(of50.imported)));
    rows.push_back(
        GrowthRow("first load of 2,000 certificates, imported", of2000.imported, of50.imported));
    const auto kibibytes = [](double figure) {
        return std::to_string(static_cast<int>(figure)) + " KiB";
    };
    rows.push_back(ToldRow("memory of a process with 500 certificates", kibibytes(memory),
                           kibibytes(memoryOf50)));
    setenv("BREVIK_MACHINE", before.c_str(), 1);
    return rows;
}
