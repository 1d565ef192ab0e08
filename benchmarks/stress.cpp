// brevik_stress: all twelve functions from many threads at once, on a machine of its own.
//
//     brevik_stress [SECONDS [THREADS [CALLS]]]     60, 20 and 1,000,000 by default
//
// Tells the rounds of twelve calls that each thread makes in a second, for 1, 2 and 4 threads; then
// has THREADS threads make them for SECONDS, and after that one thread CALLS calls of each query.
// Exit code 1 when an answer differs from that of a first, quiet round, or when the process goes on
// to take memory.

#include <brevikconfig.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "bench_machine.h"
#include "product_machine.h"

namespace {

using Clock = std::chrono::steady_clock;

// A function's answer as a text; it frees what it was given.
using Call = std::string (*)();

std::string Taken(void* block, std::size_t size) {
    std::string text(static_cast<const char*>(block), block != nullptr ? size : 0);
    CoTaskMemFree(block);
    return text;
}

std::string Item(std::uint8_t (*query)(const char*, const char*, void**, std::uint32_t*),
                 const char* whose) {
    void* value = nullptr;
    std::uint32_t size = 0;
    return query(whose, "Field 39", &value, &size) != 0 ? Taken(value, size) : "none";
}

std::string WideTaken(std::int32_t result, bvkc_wchar* value) {
    std::string text = std::to_string(result) + ":";
    for (const bvkc_wchar* unit = value; unit != nullptr && *unit != 0; ++unit) {
        text += static_cast<char>(*unit);
    }
    CoTaskMemFree(value);
    return text;
}

constexpr bvkc_langid kOffered[] = {1036, 1031, 1033};
constexpr const char* kOfferedCodes[] = {"fra", "deu", "enu"};

struct Export {
    const char* name;
    bool isQuery;  // changes nothing
    Call call;
};

constexpr Export kExports[] = {
    {"CertificateItemValue", true, [] { return Item(bvkc_CertificateItemValue, "{PRODUCT-7}"); }},
    {"CertificateItemValueByProdName", true,
     [] { return Item(bvkc_CertificateItemValueByProdName, "product 7"); }},
    {"GetLocalGUIDs", true,
     [] {
         char* guids = nullptr;
         const std::int32_t count = bvkc_GetLocalGUIDs(&guids);
         return std::to_string(count) + Taken(guids, 1);
     }},
    {"GetUserLanguage_Ids", true,
     [] {
         bvkc_langid selected = 0;
         const std::int32_t result =
             bvkc_GetUserLanguage_Ids(kOffered, std::size(kOffered), &selected);
         return std::to_string(result) + ":" + std::to_string(selected);
     }},
    {"GetUserLanguage_Code", true,
     [] {
         bvkc_langid selected = 0;
         const std::int32_t result =
             bvkc_GetUserLanguage_Code(kOfferedCodes, std::size(kOfferedCodes), &selected);
         return std::to_string(result) + ":" + std::to_string(selected);
     }},
    {"VCM_WriteOndrelCookieValue", false,
     [] { return std::to_string(bvkc_VCM_WriteOndrelCookieValue(u"volume", u"11")); }},
    {"VCM_ReadOndrelCookieValue", true,
     [] {
         bvkc_wchar* value = nullptr;
         const std::int32_t result = bvkc_VCM_ReadOndrelCookieValue(u"volume", &value);
         return WideTaken(result, value);
     }},
    {"VCM_WriteCookieValue", false,
     [] {
         return std::to_string(bvkc_VCM_WriteCookieValue(u"shop.example", u"basket", u"k", u"v"));
     }},
    {"VCM_ReadCookieValue", true,
     [] {
         bvkc_wchar* value = nullptr;
         const std::int32_t result =
             bvkc_VCM_ReadCookieValue(u"shop.example", u"basket", u"k", &value);
         return WideTaken(result, value);
     }},
    {"Dispatch_InvokeUpdate", false,
     [] { return std::to_string(bvkc_Dispatch_InvokeUpdate("Product 7", "DEU", 1)); }},
    {"Dispatch_IsUpdateOrMessageAvailable", true,
     [] {
         return std::to_string(bvkc_Dispatch_IsUpdateOrMessageAvailable("Product 7", "DEU", 0));
     }},
    {"Dispatch_GetKindletProfileID", false,
     [] {
         char* profile = nullptr;
         const std::int32_t result =
             bvkc_Dispatch_GetKindletProfileID("somebody", "DEU", nullptr, &profile);
         const std::string text = profile != nullptr ? profile : "none";
         CoTaskMemFree(profile);
         return std::to_string(result) + ":" + text;
     }},
};

std::atomic<int> wrong_answers = 0;

void Check(const Export& entry, const std::string& expected) {
    const std::string answer = entry.call();
    if (answer != expected && ++wrong_answers <= 10) {
        std::fprintf(stderr, "%s answered '%s' instead of '%s'\n", entry.name, answer.c_str(),
                     expected.c_str());
    }
}

long ResidentKibibytes() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        long kibibytes = 0;
        if (std::sscanf(line.c_str(), "VmRSS: %ld kB", &kibibytes) == 1) {
            return kibibytes;
        }
    }
    return 0;
}

// Rounds of all calls that `threads` threads end before the time is up.
long RunRounds(const std::vector<std::string>& expected, int threads, Clock::duration time) {
    const Clock::time_point end = Clock::now() + time;
    std::atomic<long> rounds = 0;
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread) {
        running.emplace_back([&, thread] {
            // Each thread begins at another call.
            for (std::size_t next = static_cast<std::size_t>(thread); Clock::now() < end;
                 ++rounds) {
                for (std::size_t i = 0; i < std::size(kExports); ++i, ++next) {
                    const std::size_t which = next % std::size(kExports);
                    Check(kExports[which], expected[which]);
                }
            }
        });
    }
    for (std::thread& thread : running) {
        thread.join();
    }
    return rounds;
}

void TellThroughput(const std::vector<std::string>& expected) {
    constexpr std::chrono::seconds kTime(3);
    for (const int threads : {1, 2, 4}) {
        const long rounds = RunRounds(expected, threads, kTime);
        std::printf("%d threads: %ld rounds a second and thread\n", threads,
                    rounds / threads / kTime.count());
    }
}

// False when the memory is not level.
bool IsLevel(const char* what, long before, long after) {
    constexpr long kScatter = 1024;  // KiB, of the allocator's own
    std::printf("%s: resident memory %ld KiB, then %ld KiB\n", what, before, after);
    return after <= before + kScatter;
}

bool RunMixed(const std::vector<std::string>& expected, int threads, int seconds) {
    const int warmUp = std::min(10, seconds / 2);
    RunRounds(expected, threads, std::chrono::seconds(warmUp));
    const long before = ResidentKibibytes();
    const long rounds = RunRounds(expected, threads, std::chrono::seconds(seconds - warmUp));
    std::printf("%d threads for %d seconds: %ld rounds after the first %d seconds\n", threads,
                seconds, rounds, warmUp);
    return IsLevel("mixed", before, ResidentKibibytes());
}

bool RunCalls(const std::vector<std::string>& expected, long calls) {
    bool isLevel = true;
    for (std::size_t which = 0; which < std::size(kExports); ++which) {
        if (!kExports[which].isQuery) {
            continue;
        }
        for (long call = 0; call < calls / 100; ++call) {
            Check(kExports[which], expected[which]);
        }
        const long before = ResidentKibibytes();
        for (long call = 0; call < calls; ++call) {
            Check(kExports[which], expected[which]);
        }
        isLevel = IsLevel(kExports[which].name, before, ResidentKibibytes()) && isLevel;
    }
    return isLevel;
}

int Run(int seconds, int threads, long calls) {
    const BenchMachine folders;
    const std::filesystem::path folder =
        std::filesystem::path(std::getenv("BREVIK_MACHINE")).parent_path() / "products";
    const ProductMachine machine(folder, 20);
    machine.AddServices();
    machine.Use();
    for (const Export& entry : kExports) {
        entry.call();  // what is read back is written first
    }
    std::vector<std::string> expected;
    for (const Export& entry : kExports) {
        expected.push_back(entry.call());
        std::printf("%s: %s\n", entry.name, expected.back().c_str());
    }
    TellThroughput(expected);
    bool isLevel = RunMixed(expected, threads, seconds);
    isLevel = RunCalls(expected, calls) && isLevel;
    std::printf("wrong answers: %d\n", wrong_answers.load());
    return wrong_answers == 0 && isLevel ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const auto argument = [&](int place, long usual) {
        return argc > place ? std::atol(argv[place]) : usual;
    };
    try {
        return Run(static_cast<int>(argument(1, 60)), static_cast<int>(argument(2, 20)),
                   argument(3, 1'000'000));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "brevik_stress: %s\n", error.what());
        return 1;
    }
}
