#include <benchmark/benchmark.h>
#include <brevikconfig.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "modules/ComponentObject.h"
#include "modules/ScopedText.h"
#include "product_machine.h"
#include "services/ServiceCall.h"
#include "services/VelmarUpdateService.h"
#include "subjects.h"

namespace {

using CLibraryUtils::ScopedText;

void Ours(benchmark::State& state) {
    for (auto _ : state) {
        if (bvkc_Dispatch_IsUpdateOrMessageAvailable("Product 7", "DEU", 0) != 1) {
            state.SkipWithError("nothing available");
        }
    }
}

CALLS_FOREIGN_OBJECTS
bool IsAvailable(IUpdateServices* service) {
    const ScopedText sku(WIDE("SKU-7"));
    const ScopedText version(WIDE("13.2"));
    VARIANT_BOOL available = VARIANT_FALSE;
    return service->CheckUpdateOrMessage(sku.Get(), version.Get(), 1031, VARIANT_FALSE,
                                         &available) == S_OK &&
           available == VARIANT_TRUE;
}

void Peer(benchmark::State& state) {
    const VelmarUpdateService::Service service = VelmarUpdateService().GetService();
    for (auto _ : state) {
        if (!service || !IsAvailable(service.Get())) {
            state.SkipWithError("nothing available");
        }
    }
}

}  // namespace

void RegisterDispatch() {
    // Without a service the answer would be the same.
    const std::filesystem::path log = ProductMachine::ServiceLog(std::getenv("BREVIK_MACHINE"));
    bvkc_Dispatch_IsUpdateOrMessageAvailable("Product 7", "DEU", 0);
    if (!std::filesystem::exists(log)) {
        throw std::runtime_error("no service was asked");
    }
    benchmark::RegisterBenchmark("ours", Ours)->UseRealTime();
    benchmark::RegisterBenchmark("peer", Peer)->UseRealTime();
}
