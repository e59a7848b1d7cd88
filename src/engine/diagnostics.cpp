// What a module is asked for when a tool asks: by a value in the instance's key that differs from the last
// one.
#include <optional>
#include <system_error>
#include <utility>

#include "engine/buffer_load.h"
#include "engine/effect_core.h"
#include "engine/module_answers.h"
#include "korva/dsp_module.h"

namespace korva::engine {
namespace {

constexpr std::int64_t pauseMs = 1;  // a request that others follow at once is looked at with them

PlaneLevels levelsOf(const std::array<rt::SharedWord<float>, rt::planeCount>& peaks) noexcept {
    PlaneLevels levels;
    for (std::size_t plane = 0; plane < levels.size(); ++plane) {
        levels[plane] = peaks[plane].get();
    }
    return levels;
}

}  // namespace

// Without an event left in the system a stream goes without requests.
void EffectCore::watchRequests() {
    unwatchRequests();
    if (!telemetry.key.isOpen()) {
        return;
    }
    try {
        keyWatcher = framework::Held<params::FxStoreWatcher>::first(
            framework::create<params::FxStoreWatcher>(telemetry.key.path(), pauseMs));
    } catch (const std::system_error&) {
        return;
    }
    keyWatcher->published.subscribe(this, nullptr, &EffectCore::onRequests);
}

// The watcher's thread may be in a call to this object, and comes in while it is waited for.
void EffectCore::unwatchRequests() {
    if (const framework::Held<params::FxStoreWatcher> ending = std::move(keyWatcher)) {
        ending->published.unsubscribe(this, nullptr, &EffectCore::onRequests);
    }
}

void EffectCore::onRequests(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*,
                            void*, const void*, framework::Reason) {
    static_cast<EffectCore*>(context)->diagnosticsPull();
}

// What this writes to the key brings it here once more; then it finds nothing new, and writes nothing.
void EffectCore::diagnosticsPull() {
    const framework::Held<DspEngine> engine = dspEngine.value();
    if (!engine) {
        return;
    }
    const auto publish = [](auto& value, const auto& answer) {
        if (answer) {
            value.set(*answer);
        }
    };
    if (isRequested("CaptureDSPCycleCount", lastRequests.cycleCount)) {
        publish(dspCycleCount, askModule<std::uint32_t>(*engine, KORVA_DATA_CYCLE_COUNT));
    }
    if (isRequested("CaptureDSPFrameCount", lastRequests.frameCount)) {
        publish(dspFrameCount, askModule<std::uint32_t>(*engine, KORVA_DATA_FRAME_COUNT));
    }
    if (isRequested("CaptureParamBytesSentByDSP", lastRequests.bytesSent)) {
        publish(paramBytesSentByDsp, askByteCount(*engine, KORVA_DATA_BYTES_SENT));
    }
    if (isRequested("CaptureParamBytesReceivedByDSP", lastRequests.bytesReceived)) {
        publish(paramBytesReceivedByDsp, askByteCount(*engine, KORVA_DATA_BYTES_RECEIVED));
    }
    if (areMetersRequested()) {
        pullLevelMeters();
        publishLoad();
    }
    publish(presetDspParamBytesSent, askModule<std::uint32_t>(*engine, KORVA_DATA_PARAMETER_BYTES));
}

bool EffectCore::isRequested(std::string_view name, std::uint32_t& lastSeen) const {
    const std::optional<std::uint32_t> request = telemetry.key.readDword(name);
    return request && std::exchange(lastSeen, *request) != *request;
}

// This request is the switch of the meters, too.
bool EffectCore::areMetersRequested() {
    std::uint32_t lastSeen = processor.levelMetersEnabled.get();
    const bool areRequested = isRequested("CaptureLevelMeters", lastSeen);
    processor.levelMetersEnabled.set(lastSeen);
    return areRequested;
}

// A stream begins in silence, whatever the one before left. What the module told last stays for the next
// pull: it may not tell again.
void EffectCore::resetLevelMeters() {
    processor.resetMeters();
    inputLevelMeters.reset();
    outputLevelMeters.reset();
    dspInputLevelMeters.reset();
    dspOutputLevelMeters.reset();
}

// Whatever a module leaves of its levels counts, so an answer that is too short mends nothing.
void EffectCore::pullLevelMeters() {
    if (const framework::Held<DspEngine> engine = dspEngine.value()) {
        const auto isEnabled = static_cast<std::byte>(processor.levelMetersEnabled.get() != 0 ? 1 : 0);
        engine->SetGetData(KORVA_BANK_ENGINE, KORVA_DATA_METERS_ENABLED, std::span(&isEnabled, 1), {});
        engine->SetGetData(KORVA_BANK_ENGINE, KORVA_DATA_INPUT_METERS, {},
                           std::as_writable_bytes(std::span(dspInputLevels)));
        engine->SetGetData(KORVA_BANK_ENGINE, KORVA_DATA_OUTPUT_METERS, {},
                           std::as_writable_bytes(std::span(dspOutputLevels)));
    }
    inputLevelMeters.set(levelsOf(processor.inputPeak));
    outputLevelMeters.set(levelsOf(processor.outputPeak));
    dspInputLevelMeters.set(dspInputLevels);
    dspOutputLevelMeters.set(dspOutputLevels);
}

void EffectCore::publishLoad() {
    const BufferLoad load =
        bufferLoadOf(processor.lastFrames.get(), sampleRate.value(), processor.lastProcessNs.get());
    bufferSizeMs.set(load.bufferSizeMs);
    cpuUsage.set(load.cpuUsage);
}

}  // namespace korva::engine
