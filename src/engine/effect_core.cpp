#include "engine/effect_core.h"

#include <utility>

#include "framework/describe_members.h"
#include "params/effect_keys.h"
#include "platform/audio_devices.h"
#include "platform/published/results.h"

namespace korva::engine {
namespace {

constexpr std::uint64_t ownVersion = 0x0002'0001'0002'0011;  // 2.1.2.17

constexpr std::array<std::string_view, 4> typeTexts = {"", "SFX", "MFX", "EFX"};

PROPERTYKEY selectionKeyOf(std::uint32_t type) noexcept {
    return params::isEffectKind(type) ? params::selectionKey(static_cast<params::EffectKind>(type))
                                      : PROPERTYKEY{};
}

}  // namespace

framework::Ref<IMMDeviceEnumerator> systemDeviceEnumerator() {
    IMMDeviceEnumerator* enumerator = nullptr;
    return published::succeeded(platform::createDeviceEnumerator(&enumerator))
               ? framework::Ref<IMMDeviceEnumerator>::adopt(enumerator)
               : nullptr;
}

EffectCore::EffectCore(std::uint32_t type, Surroundings found)
    : effectType(type),
      fxIdKey(selectionKeyOf(type)),
      effectTypeText(type < typeTexts.size() ? typeTexts[type] : ""),
      surroundings(std::move(found)) {
    deriveEndpointChain();
    engineAllowed.set(true);
    firstInstance.set(number.wasFirst());
    moduleVersion.set(ownVersion);
    clientListReading =
        watch(userStore).whileSet(&EffectCore::readClientList, [this] { clientList.reset(); });
    watchForEngine();
    watchForTelemetry();
}

void EffectCore::describeMembers(framework::ClassInfo& info) {
    using framework::describe;
    describe(info, "EndpointIdStrW", &EffectCore::endpointIdStrW);
    describe(info, "OutEndpointId", &EffectCore::outEndpointId);
    describe(info, "endpointGuidText", &EffectCore::endpointGuidText);
    describe(info, "endpointGuid", &EffectCore::endpointGuid);
    describe(info, "deviceEnumerator", &EffectCore::deviceEnumerator);
    describe(info, "device", &EffectCore::device);
    describe(info, "endpointVolume", &EffectCore::endpointVolume);
    describe(info, "endpointProperties", &EffectCore::endpointProperties);
    describe(info, "effectsStore", &EffectCore::effectsStore);
    describe(info, "defaultStore", &EffectCore::defaultStore);
    describe(info, "userStore", &EffectCore::userStore);
    describe(info, "volatileStore", &EffectCore::volatileStore);
    describe(info, "fxId", &EffectCore::fxId);
    describe(info, "fxIdText", &EffectCore::fxIdText);
    describe(info, "fxIdTextW", &EffectCore::fxIdTextW);
    describe(info, "presetVersion", &EffectCore::presetVersion);
    describe(info, "modeFlags", &EffectCore::modeFlags);
    describe(info, "engineId", &EffectCore::engineId);
    describe(info, "parameterSet", &EffectCore::parameterSet);
    describe(info, "chunkReaders", &EffectCore::chunkReaders);
    describe(info, "clientList", &EffectCore::clientList);
    describe(info, "hasClientList", &EffectCore::hasClientList);
    describe(info, "overrideStore", &EffectCore::overrideStore);
    describe(info, "engineAllowed", &EffectCore::engineAllowed);
    describe(info, "sysFxDisabled", &EffectCore::sysFxDisabled);
    describe(info, "masterVolumeDb", &EffectCore::masterVolumeDb);
    describe(info, "hardwarePulse", &EffectCore::hardwarePulse);
    describe(info, "dspEngine", &EffectCore::dspEngine);
    describe(info, "locked", &EffectCore::locked);
    describe(info, "inFormat", &EffectCore::inFormat);
    describe(info, "outFormat", &EffectCore::outFormat);
    describe(info, "SampleRate", &EffectCore::sampleRate);
    describe(info, "InChannelMask", &EffectCore::inChannelMask);
    describe(info, "InputChannelCount", &EffectCore::inputChannelCount);
    describe(info, "OutChannelMask", &EffectCore::outChannelMask);
    describe(info, "OutputChannelCount", &EffectCore::outputChannelCount);
    describe(info, "DSPInChannelMask", &EffectCore::dspInChannelMask);
    describe(info, "DSPInputChannelCount", &EffectCore::dspInputChannelCount);
    describe(info, "DSPOutChannelMask", &EffectCore::dspOutChannelMask);
    describe(info, "DSPOutputChannelCount", &EffectCore::dspOutputChannelCount);
    describe(info, "firstInstance", &EffectCore::firstInstance);
    describe(info, "lastInstance", &EffectCore::lastInstance);
    describe(info, "ModuleVersion", &EffectCore::moduleVersion);
    describe(info, "DSPModuleVersion", &EffectCore::dspModuleVersion);
    describe(info, "PresetLoad_ParamBytesReceivedByDSP", &EffectCore::presetLoadParamBytesReceivedByDsp);
    describe(info, "PresetLoadStartTimeMS", &EffectCore::presetLoadStartTimeMs);
    describe(info, "PresetLoadCount", &EffectCore::presetLoadCount);
    describe(info, "PresetDSPParamBytesSent", &EffectCore::presetDspParamBytesSent);
    describe(info, "DSPCycleCount", &EffectCore::dspCycleCount);
    describe(info, "DSPFrameCount", &EffectCore::dspFrameCount);
    describe(info, "ParamBytesSentByDSP", &EffectCore::paramBytesSentByDsp);
    describe(info, "ParamBytesReceivedByDSP", &EffectCore::paramBytesReceivedByDsp);
    describe(info, "BufferSizeMS", &EffectCore::bufferSizeMs);
    describe(info, "CPUUsage", &EffectCore::cpuUsage);
    describe(info, "InputLevelMeters", &EffectCore::inputLevelMeters);
    describe(info, "OutputLevelMeters", &EffectCore::outputLevelMeters);
    describe(info, "DSPInputLevelMeters", &EffectCore::dspInputLevelMeters);
    describe(info, "DSPOutputLevelMeters", &EffectCore::dspOutputLevelMeters);
}

// From the outside in: the stream, the engine, then the chain that it hung on.
void EffectCore::onClose() {
    lastInstance.set(number.giveBack());
    unlockForProcess();
    hardwarePulseTask = {};
    clientListTask = {};
    fallbackStoreTask = {};
    clientListReading.drop();
    selecting.drop();
    showing.drop();
    dspEngine.reset();
    processor.hardwareMode.set(false);
    telemetry.key.remove();
    fallbackStore = nullptr;
    ActiveObject::onClose();
    // A change among whose listeners this is goes through first, and sets what has just been cleared.
    if (dspEngine.pending() || !outEndpointId.pending().empty()) {
        postAndForget([self = framework::WeakRef<EffectCore>(*this)] {
            if (const framework::Ref<EffectCore> core = self.lock()) {
                core->clearChain();
            }
        });
    }
}

void EffectCore::clearChain() {
    dspEngine.reset();
    processor.hardwareMode.set(false);
    outEndpointId.reset();
}

}  // namespace korva::engine
