// What a module is told as its engine starts, while it runs, and as it stops.
#include <utility>

#include "engine/effect_core.h"
#include "engine/module_answers.h"
#include "engine/volume_level.h"
#include "korva/dsp_module.h"
#include "platform/process_clock.h"
#include "platform/published/results.h"

namespace korva::engine {

using framework::Held;
using framework::Ref;

// Sound comes last: the module has all its parameters before the first block. Listeners of what is published
// on the way may stop the engine, and start it anew: then the rest is not, or no more, to be done.
void EffectCore::engineStart() {
    const Held<DspEngine> engine = dspEngine.value();
    rtEngine = engine;
    rt::EngineFormat in = inFormat.value();
    rt::EngineFormat out = outFormat.value();
    rt::EngineFormat none;
    engine->Initialize(in, out, none);
    readModuleVersion(*engine);
    countParameterBytesAnew(*engine);
    presetLoadStartTimeMs.set(static_cast<std::uint32_t>(platform::processClockMs()));
    presetLoadCount.set(presetLoadCount.value() + 1);
    if (!rtEngine || sentReaders) {
        return;
    }
    startSendingParameters(chunkReaders.value());
    sendingSysFxDisabled = watch(sysFxDisabled).onEveryValue(&EffectCore::sendSysFxDisabled, nullptr);
    sendingMasterVolume = watch(endpointVolume)
                              .whileSet(&EffectCore::readMasterVolume, nullptr)
                              .then(masterVolumeDb)
                              .onEveryValue(&EffectCore::sendMasterVolume, nullptr);
    if (!rtEngine) {
        sendingMasterVolume.drop();
        return;
    }
    processor.exchangeEngine(rtEngine.get());
}

// After the exchange no call is in the engine, so its share may go.
void EffectCore::engineStop() {
    const Held<DspEngine> engine = std::move(rtEngine);
    processor.exchangeEngine(nullptr);
    stopSendingParameters();
    sendingSysFxDisabled.drop();
    sendingMasterVolume.drop();
    engine->Uninitialize();
}

void EffectCore::engineWake() {
    dspEngine.value()->WakeUp();
}

void EffectCore::readModuleVersion(DspEngine& engine) {
    if (const auto version = askModule<std::uint32_t>(engine, KORVA_DATA_MODULE_VERSION)) {
        dspModuleVersion.set(*version);
    }
}

void EffectCore::countParameterBytesAnew(DspEngine& engine) {
    if (const auto count = askByteCount(engine, KORVA_DATA_BYTES_RECEIVED)) {
        presetLoadParamBytesReceivedByDsp.set(*count);
    }
    const std::uint32_t restart = 0;
    engine.SetGetData(KORVA_BANK_ENGINE, KORVA_DATA_PARAMETER_BYTES, std::as_bytes(std::span(&restart, 1)),
                      {});
}

void EffectCore::sendSysFxDisabled(bool isDisabled) {
    rtEngine->SetParameter(KORVA_BANK_ENGINE, KORVA_PARAMETER_EFFECTS_DISABLED, noIndex, isDisabled);
}

void EffectCore::readMasterVolume(const Ref<IAudioEndpointVolume>& volume) {
    float scalar = 0.0f;
    const bool isRead = published::succeeded(volume->GetMasterVolumeLevelScalar(&scalar));
    masterVolumeDb.set(isRead ? volumeDb(scalar) : 0.0f);
}

// The volume that has just been read may have made a listener stop the engine.
void EffectCore::sendMasterVolume(float levelDb) {
    if (rtEngine) {
        rtEngine->SetParameter(KORVA_BANK_ENDPOINT, KORVA_PARAMETER_VOLUME_DB, noIndex, levelDb);
    }
}

}  // namespace korva::engine
