#include "trace/TraceState.h"

#include <exception>
#include <optional>

#include "text/tls_data.h"
#include "trace/TraceOutput.h"

namespace UTrace {
namespace {

constinit TraceState state;

constinit std::atomic<bool> resources_alive = false;

// Built while the library loads, gone when it is unloaded or the process ends.
struct Resources {
    Resources() {
        // A host that has used up all thread-local slots still gets the library, without
        // indentation of its own for each thread.
        try {
            depth.emplace(1u, 0u);
        } catch (const std::exception&) {
        }
        resources_alive = true;
    }
    ~Resources() {
        if (state.lost != 0) {
            constexpr UINT kLastChance = 50;  // milliseconds
            const VelmarAutoCriticalSection hold(&lock);
            ReportLostLines(kLastChance);
        }
        state.started = false;
        resources_alive = false;
    }

    VelmarCriticalSection lock;
    std::optional<tls_data<unsigned>> depth;
};

Resources resources;

}  // namespace

TraceState& State() {
    return state;
}

BaseCriticalSection* Lock() {
    return resources_alive.load(std::memory_order_relaxed) ? &resources.lock : nullptr;
}

unsigned& Depth() {
    static thread_local unsigned spare = 0;
    if (!resources_alive.load(std::memory_order_relaxed) || !resources.depth) {
        return spare;
    }
    const KeepLastError keep;
    return (*resources.depth)[0];
}

}  // namespace UTrace
