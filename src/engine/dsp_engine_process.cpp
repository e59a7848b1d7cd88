// What the audio thread runs of a module's host.
#include "engine/dsp_engine.h"
#include "engine/module_records.h"

namespace korva::engine {
namespace {

/// Counts a call for as long as it lasts. Only the audio thread writes, so no read and write in one is
/// needed.
class BusyCall {
public:
    explicit BusyCall(std::atomic<std::uint32_t>& busyCounter) noexcept : counter(busyCounter) {
        counter.store(counter.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
    ~BusyCall() { counter.store(counter.load(std::memory_order_relaxed) - 1, std::memory_order_release); }
    BusyCall(const BusyCall&) = delete;
    BusyCall& operator=(const BusyCall&) = delete;

private:
    std::atomic<std::uint32_t>& counter;
};

}  // namespace

KORVA_RT_CODE void DspEngine::Process(rt::DspBlock* block) noexcept KORVA_NONBLOCKING {
    if (instance == nullptr || api.Process == nullptr) {
        return;
    }
    const BusyCall call(processBusy);
    if (processBlocked.load(std::memory_order_relaxed) == 0) {
        instance->table->process(instance, asModuleRecord(*block));
    }
}

KORVA_RT_CODE void DspEngine::Capture(rt::DspBlock* block) noexcept KORVA_NONBLOCKING {
    if (instance == nullptr || api.Capture == nullptr) {
        return;
    }
    const BusyCall call(captureBusy);
    if (captureBlocked.load(std::memory_order_relaxed) == 0) {
        instance->table->capture(instance, asModuleRecord(*block));
    }
}

}  // namespace korva::engine
