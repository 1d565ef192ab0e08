#include <benchmark/benchmark.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/null_sink.h>

#include <memory>

#include "subjects.h"
#include "trace/UTrace.h"

namespace {

constexpr const char* kArgument = "BrevikKit:GetUserLanguage_Ids";

void Ours(benchmark::State& state) {
    int number = 0;
    for (auto _ : state) {
        UTrace::Info("Selected Lang = %d in %s", ++number, kArgument);
    }
}

void Peer(benchmark::State& state) {
    spdlog::logger logger("BREVIK KIT", std::make_shared<spdlog::sinks::null_sink_mt>());
    int number = 0;
    for (auto _ : state) {
        logger.info("Selected Lang = {} in {}", ++number, kArgument);
    }
}

bool Filter(int, const char*, const char* message) {
    benchmark::DoNotOptimize(message);
    return true;
}

}  // namespace

void RegisterTrace() {
    // As the library starts it in a host.
    UTrace::Initialize();
    UTrace::SetClientName("BREVIK KIT");
    UTrace::SetLevel(4);
    benchmark::RegisterBenchmark("ours", Ours);
    benchmark::RegisterBenchmark("peer", Peer);
}

void RegisterTraceFilter() {
    RegisterTrace();
    UTrace::SetFilter(Filter);
}
