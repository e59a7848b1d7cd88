// What the audio thread runs of a module's host.
#include <atomic>
#include <cstdint>

#include "engine/dsp_engine.h"
#include "engine/module_records.h"

namespace korva::engine {
namespace {

/// Counts a call for as long as it lasts, and tells whether it found the way open. Only the audio thread
/// writes the counter, so no step of reading and writing in one is needed; nor one that waits for the
/// processor's store, which would take longer than all the rest of the host. Whoever shuts the way does that
/// for both sides: it raises `blocked`, makes every processor of the process finish its stores (membarrier,
/// FlushProcessWriteBuffers), and only then waits until `busy` is 0.
class CountedCall {
public:
    CountedCall(std::atomic<std::uint32_t>& busyCounter, const std::atomic<std::uint32_t>& blocked) noexcept
        : busy(busyCounter) {
        busy.store(busy.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        std::atomic_signal_fence(std::memory_order_seq_cst);
        isOpen = blocked.load(std::memory_order_acquire) == 0;
    }
    ~CountedCall() { busy.store(busy.load(std::memory_order_relaxed) - 1, std::memory_order_release); }
    CountedCall(const CountedCall&) = delete;
    CountedCall& operator=(const CountedCall&) = delete;

    [[nodiscard]] bool mayGoOn() const noexcept { return isOpen; }

private:
    std::atomic<std::uint32_t>& busy;
    bool isOpen = false;
};

}  // namespace

KORVA_RT_CODE void DspEngine::Process(rt::DspBlock* block) noexcept KORVA_NONBLOCKING {
    if (instance == nullptr || api.Process == nullptr) {
        return;
    }
    const CountedCall call(processBusy, processBlocked);
    if (call.mayGoOn()) {
        instance->table->process(instance, asModuleRecord(*block));
    }
}

KORVA_RT_CODE void DspEngine::Capture(rt::DspBlock* block) noexcept KORVA_NONBLOCKING {
    if (instance == nullptr || api.Capture == nullptr) {
        return;
    }
    const CountedCall call(captureBusy, captureBlocked);
    if (call.mayGoOn()) {
        instance->table->capture(instance, asModuleRecord(*block));
    }
}

}  // namespace korva::engine
