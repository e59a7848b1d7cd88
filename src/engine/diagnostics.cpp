// What a module is asked for while it runs.
#include "engine/effect_core.h"
#include "korva/dsp_module.h"

namespace korva::engine {
namespace {

PlaneLevels levelsOf(const std::array<rt::SharedWord<float>, rt::planeCount>& peaks) noexcept {
    PlaneLevels levels;
    for (std::size_t plane = 0; plane < levels.size(); ++plane) {
        levels[plane] = peaks[plane].get();
    }
    return levels;
}

}  // namespace

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

}  // namespace korva::engine
