#include <benchmark/benchmark.h>
#include <brevikconfig.h>
#include <unicode/uenum.h>
#include <unicode/uloc.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include "subjects.h"

namespace {

void Ours(benchmark::State& state) {
    const bvkc_langid offered[] = {1031, 1033, 1036};
    for (auto _ : state) {
        bvkc_langid selected = 0;
        if (bvkc_GetUserLanguage_Ids(offered, 3, &selected) != 0 || selected != 1033) {
            state.SkipWithError("no language");
        }
    }
}

void Peer(benchmark::State& state) {
    const char* wanted[] = {"en_US"};
    const char* offered[] = {"de_DE", "en_US", "fr_FR"};
    UErrorCode error = U_ZERO_ERROR;
    UEnumeration* list = uenum_openCharStringsEnumeration(offered, 3, &error);
    for (auto _ : state) {
        char selected[ULOC_FULLNAME_CAPACITY] = "";
        UAcceptResult result;
        uenum_reset(list, &error);
        uloc_acceptLanguage(selected, sizeof selected, &result, wanted, 1, list, &error);
        if (U_FAILURE(error) || std::string_view(selected) != "en_US") {
            state.SkipWithError("no language");
        }
    }
    uenum_close(list);
}

bool IsSiblingLoaded() {
    std::ifstream map("/proc/self/maps");
    const std::string text{std::istreambuf_iterator<char>(map), {}};
    return text.find("VelmarHTTPClient13.dll") != std::string::npos;
}

void Register(bool withSibling) {
    const bvkc_langid offered = 1033;
    bvkc_langid selected = 0;
    bvkc_GetUserLanguage_Ids(&offered, 1, &selected);
    if (IsSiblingLoaded() != withSibling) {
        throw std::runtime_error(withSibling ? "the sibling was not found"
                                             : "a sibling was found where none should be");
    }
    benchmark::RegisterBenchmark("ours", Ours);
    benchmark::RegisterBenchmark("peer", Peer);
}

}  // namespace

void RegisterLanguageWithSibling() {
    Register(true);
}

void RegisterLanguageWithoutSibling() {
    Register(false);
}
