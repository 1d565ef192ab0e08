#include "trace/TraceState.h"

namespace UTrace {
namespace {

// Hosts may call on while the process ends and statics are gone already.
constinit std::atomic<bool> state_alive = false;

struct LivingState : TraceState {
    LivingState() { state_alive = true; }
};

// Built while the library loads, gone when it is unloaded.
LivingState state;

}  // namespace

TraceState::~TraceState() {
    started = false;
    state_alive = false;
}

TraceState& State() {
    return state;
}

unsigned& Depth() {
    static thread_local unsigned depth_at_exit = 0;
    return state_alive.load(std::memory_order_relaxed) ? state.depth[0] : depth_at_exit;
}

}  // namespace UTrace
