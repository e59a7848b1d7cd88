#include "rt/engine_gate.h"

#include <thread>

namespace korva::rt {

void EngineGate::raise() noexcept {
    engineGateRequest.store(engineGateRequest.load(std::memory_order_relaxed) + 1, std::memory_order_seq_cst);
    // Lasts at most one processing call. The owner gives its core away, which the call may be waiting for.
    while (engineGateBusy.load(std::memory_order_seq_cst) != 0) {
        std::this_thread::yield();
    }
}

}  // namespace korva::rt
