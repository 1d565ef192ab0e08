#include "subject_runner.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string_view>

#include "catalogue_subjects.h"
#include "file_subjects.h"
#include "subjects.h"

namespace {

constexpr int kUsual = 21;
constexpr int kLengthy = kLengthyRepetitions;

struct Subject {
    std::string_view name;
    void (*registration)();
    int repetitions = kUsual;
};
constexpr Subject kSubjects[] = {
    {"language-with-sibling", RegisterLanguageWithSibling},
    {"language-without-sibling", RegisterLanguageWithoutSibling},
    {"trace", RegisterTrace},
    {"trace-filter", RegisterTraceFilter},
    {"cookie-read", RegisterCookieRead},
    {"cookie-write", RegisterCookieWrite},
    {"dispatch", RegisterDispatch},
    {"item-value", RegisterItemValue},
    {"database-opening", RegisterDatabaseOpening, kLengthy},
    {"certificate-import", RegisterCertificateImport, kLengthy},
    {"registry-read", RegisterRegistryRead},
    {"find-files", RegisterFindFiles, kLengthy},
    {"find-growth", RegisterFindGrowth, kLengthy},
    {"file-spec", RegisterFileSpec},
    {"other-case", RegisterOtherCase},
    {"copy-file", RegisterCopyFile, kLengthy},
    {"copy-by-blocks", RegisterCopyByBlocks, kLengthy},
    {"delete-tree", RegisterDeleteTree, kLengthy},
};

// Collects the time of one iteration from every repetition, under the benchmark's name.
class Collector : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            failed = failed || run.error_occurred;
            if (run.run_type == Run::RT_Iteration) {
                figures[run.run_name.function_name].push_back(
                    Nanoseconds(run.GetAdjustedRealTime()));
            }
        }
    }

    bool failed = false;
    std::map<std::string, std::vector<Nanoseconds>> figures;
};

std::string OutputOfSelf(const std::string& option, const std::string& argument) {
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    return OutputOf({self, option, argument});
}

}  // namespace

int RunSubject(const std::string& name) {
    for (const Subject& subject : kSubjects) {
        if (subject.name != name) {
            continue;
        }
        subject.registration();
        // The repetitions of the two take turns, so that a slow moment of the host hits both.
        const std::string repetitions =
            "--benchmark_repetitions=" + std::to_string(subject.repetitions);
        const char* arguments[] = {"brevik_bench", repetitions.c_str(), "--benchmark_min_time=0.02",
                                   "--benchmark_enable_random_interleaving=true"};
        int count = static_cast<int>(std::size(arguments));
        benchmark::Initialize(&count, const_cast<char**>(arguments));
        Collector collector;
        benchmark::RunSpecifiedBenchmarks(&collector);
        if (collector.failed || collector.figures.size() != 2) {
            return 1;
        }
        std::printf("%.3f %.3f\n", Median(collector.figures["ours"]).count(),
                    Median(collector.figures["peer"]).count());
        return 0;
    }
    return 1;
}

int RunListing(const std::string& folder) {
    std::printf("%.3f\n", MeasureListingMemory(folder.c_str()));
    return 0;
}

Figures MeasureSubject(const std::string& name) {
    const std::string output = OutputOfSelf("--subject", name);
    double ours = 0;
    double peer = 0;
    if (std::sscanf(output.c_str(), "%lf %lf", &ours, &peer) != 2) {
        throw std::runtime_error("the subject " + name + " gave no figures");
    }
    return {Nanoseconds(ours), Nanoseconds(peer)};
}

double MeasureListing(const std::string& folder) {
    return std::stod(OutputOfSelf("--listing", folder));
}
