// Which engine is built, and when.
#include <utility>

#include "engine/effect_core.h"
#include "engine/engine_config_document.h"

namespace korva::engine {

using framework::Held;
using framework::Ref;

// Whatever of these changes, the engine is put together anew; one that would be the same stays.
void EffectCore::watchForEngine() {
    selecting = watch(presetVersion)
                    .whileSet()
                    .then(chunkReaders)
                    .whileSet()
                    .then(engineAllowed)
                    .whileSet()
                    .then(modeFlags)
                    .onEveryValue(&EffectCore::engineBuild, &EffectCore::engineTeardown)
                    .then(sampleRate)
                    .whileSet(&EffectCore::engineStart, &EffectCore::engineStop);
}

// The engine that was there goes as the value changes: a new module is up before the old one is unloaded.
void EffectCore::engineBuild(std::uint32_t flags) {
    processor.hardwareMode.set(false);
    Held<DspEngine> engine = (flags & modeHardware) != 0 ? engineOnHardware(flags) : nullptr;
    dspEngine.set(engine ? std::move(engine) : engineOfMode(0));
    if (closedCounter()->get() != 0) {
        return;  // by a listener of the engine: nothing would end this
    }
    waking = watch(hasClientList).whileSet(&EffectCore::engineWake, nullptr);
}

void EffectCore::engineTeardown() {
    waking.drop();
}

// One that was made for this goes again if the hardware isn't there, before another module is loaded.
Held<DspEngine> EffectCore::engineOnHardware(std::uint32_t flags) {
    Held<DspEngine> engine = engineOfMode(flags);
    if (!engine->isHardwareAvailable()) {
        return nullptr;
    }
    processor.hardwareMode.set(true);
    return engine;
}

// The one that runs, if it would be the same.
Held<DspEngine> EffectCore::engineOfMode(std::uint32_t flags) {
    Ref<const EngineConfigDocument> document =
        buildEngineConfigDocument(flags, engineId.value(), presetVersion.value(), outEndpointId.value());
    const Held<DspEngine>& current = dspEngine.value();
    if (current && !documentsDiffer(current->document(), *document)) {
        return current;
    }
    return Held<DspEngine>::first(createDspEngine(std::move(document), surroundings.moduleFolder));
}

}  // namespace korva::engine
