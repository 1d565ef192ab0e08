// brevik_bench: what the library is held to, measured on this host, one row a claim.
//
// Exit code 0 when everything ran, also where a target was missed.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "bench_machine.h"
#include "processes.h"
#include "rows.h"
#include "subject_runner.h"

namespace {

constexpr int kProcessRuns = 201;

// Whole processes, taking turns.
Row StartRow() {
    constexpr int kWarmUps = 5;
    std::vector<Nanoseconds> ours;
    std::vector<Nanoseconds> empty;
    for (int run = -kWarmUps; run < kProcessRuns; ++run) {
        const Nanoseconds first = TimeOf(BENCH_FIRST_CALL_PROGRAM);
        const Nanoseconds second = TimeOf(BENCH_EMPTY_PROGRAM);
        if (run >= 0) {
            ours.push_back(first);
            empty.push_back(second);
        }
    }
    const Nanoseconds loaded = Median(ours);
    const Nanoseconds bare = Median(empty);
    return {"process that loads the library and makes its first call",
            "peer + 3 ms",
            Text(loaded),
            "empty C program",
            Text(bare),
            Verdict(loaded <= bare + 3 * kMillisecond)};
}

// Which libraries of this kind the same process holds.
Row LoadedLibrariesRow() {
    constexpr const char* kUnwanted[] = {"sqlite", "sqlcipher", "libcrypto", "libssl", "gnutls",
                                         "sodium", "gcrypt",    "nettle",    "libnss3"};
    const std::string map = OutputOf({BENCH_FIRST_CALL_PROGRAM, "map"});
    std::string found;
    for (const char* name : kUnwanted) {
        if (map.find(name) != std::string::npos) {
            found += (found.empty() ? "" : ", ") + std::string(name);
        }
    }
    return {"crypto and database libraries in that process",
            "none",
            found.empty() ? "none" : found,
            "-",
            "-",
            Verdict(found.empty())};
}

std::vector<Row> Measure() {
    const BenchMachine machine;
    std::vector<Row> rows = {StartRow(), LoadedLibrariesRow()};
    rows.push_back(SubjectRow("GetUserLanguage_Ids, three identifiers, sibling present",
                              "language-with-sibling", "ICU uloc_acceptLanguage, three locales",
                              "< 5 us", Under(5 * kMicrosecond)));
    machine.UseSibling(false);
    rows.push_back(SubjectRow("GetUserLanguage_Ids, three identifiers, sibling missing",
                              "language-without-sibling", "ICU uloc_acceptLanguage, three locales",
                              "< 40 us", Under(40 * kMicrosecond)));
    rows.push_back(SubjectRow("trace line, two arguments, no listener", "trace",
                              "spdlog line, null sink", "<= 1.5 x peer", AtMost(1.5)));
    rows.push_back(SubjectRow("trace line, two arguments, a filter listening", "trace-filter",
                              "spdlog line, null sink", "(for information)", nullptr));
    rows.push_back(SubjectRow("cookie read, file of 50 cookies", "cookie-read",
                              "libcurl, load of that file", "< 100 us", Under(100 * kMicrosecond)));
    rows.push_back(SubjectRow("cookie write, file of 50 cookies", "cookie-write",
                              "libcurl, flush of that jar", "< 1 ms", Under(kMillisecond)));
    for (const auto& part : {CatalogueRows(), FileRows()}) {
        rows.insert(rows.end(), part.begin(), part.end());
    }
    return rows;
}

void Print(const std::vector<Row>& rows) {
    constexpr const char* kFormat = "%-58s %-13s %10s  %-38s %10s  %s\n";
    std::printf(kFormat, "what", "target", "ours", "peer", "peer's", "result");
    for (const Row& row : rows) {
        std::printf(kFormat, row.what.c_str(), row.target.c_str(), row.ours.c_str(),
                    row.peer.c_str(), row.peerFigure.c_str(), row.verdict.c_str());
    }
    std::printf(
        "Medians: processes over %d runs each (with products over 51, first loads over 3), scans, "
        "copies and deletions over 5, everything else over 21.\n"
        "A missing sibling is searched for twice in each folder of PATH, here Debian's six, among "
        "others.\n",
        kProcessRuns);
}

// The search looks into each folder of PATH: the one that Debian gives a root user, so that figures
// of different machines compare.
constexpr const char* kSearchPath = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

}  // namespace

int main(int argc, char** argv) {
    setenv("PATH", kSearchPath, 1);
    try {
        if (argc == 3 && std::string(argv[1]) == "--subject") {
            return RunSubject(argv[2]);
        }
        if (argc == 3 && std::string(argv[1]) == "--listing") {
            return RunListing(argv[2]);
        }
        if (argc != 1) {
            std::fprintf(stderr, "usage: brevik_bench\n");
            return 2;
        }
        Print(Measure());
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "brevik_bench: %s\n", error.what());
        return 1;
    }
}
