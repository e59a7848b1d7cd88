// How the owner takes the module's host away from the audio thread, without the audio thread ever waiting.
#pragma once

#include <atomic>
#include <cstdint>

namespace korva::rt {

/// Two counters with one writer each. The audio thread says that it is inside, then asks whether the owner
/// holds the gate; the owner says that it holds the gate, then asks whether the audio thread is inside. Each
/// side writes its own counter before it reads the other's, and these two writes and two reads are
/// sequentially consistent: of two that cross, at least one sees the other. (With acquire and release alone
/// both could miss.) Leaving and opening need less: they only release what was done before.
class EngineGate {
public:
    /// Enters a call. True if the gate is open: then what the gate guards stays until `leave`.  [audio, rt]
    [[nodiscard]] bool enter() noexcept {
        engineGateBusy.store(engineGateBusy.load(std::memory_order_relaxed) + 1, std::memory_order_seq_cst);
        // Sees a 0 that `lower` released together with all that the owner changed under the gate.
        return engineGateRequest.load(std::memory_order_seq_cst) == 0;
    }

    /// Leaves the call.  [audio, rt]
    void leave() noexcept {
        // Releases the call's last use of what the gate guards; pairs with the load in `raise`.
        engineGateBusy.store(engineGateBusy.load(std::memory_order_relaxed) - 1, std::memory_order_release);
    }

    /// Shuts the gate, and waits until no call is inside that found it open. May be nested.  [owner, blocks]
    void raise() noexcept;

    /// Opens the gate that the matching `raise` shut.  [owner]
    void lower() noexcept {
        // Releases the owner's changes; pairs with the load in `enter`.
        engineGateRequest.store(engineGateRequest.load(std::memory_order_relaxed) - 1,
                                std::memory_order_release);
    }

private:
    std::atomic<std::int32_t> engineGateRequest{0};  ///< Owner: above 0 while the gate is shut.
    std::atomic<std::int32_t> engineGateBusy{0};     ///< Audio: 1 while a call is inside.
};

}  // namespace korva::rt
