// The central object of an audio object's instance: from an endpoint's identifier to a module that plays.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/dsp_engine.h"
#include "engine/endpoint_steps.h"
#include "framework/active_object.h"
#include "framework/nested_watch.h"
#include "framework/wiring.h"
#include "params/effects_store_provider.h"
#include "params/fx_store_watcher.h"
#include "platform/host_event.h"
#include "platform/module_library.h"
#include "platform/published/audio_interfaces.h"
#include "platform/published/audio_notifications.h"
#include "platform/published/audio_object_records.h"
#include "platform/published/audio_services.h"
#include "platform/published/device_interfaces.h"
#include "platform/unicode.h"
#include "rt/rt_processor.h"
#include "services/byte_count.h"
#include "services/instance_number_pool.h"
#include "services/instance_record.h"

namespace korva::engine {

/// The system's enumerator of audio devices; null without one.  [any, blocks]
[[nodiscard]] framework::Ref<IMMDeviceEnumerator> systemDeviceEnumerator();

/// What an effect core finds around it.
struct Surroundings {
    std::filesystem::path moduleFolder = platform::ownLibraryFolder();  ///< Where DSP modules lie.
    bool systemSuppliesStores = params::systemSuppliesEffectStores();
    std::function<framework::Ref<IMMDeviceEnumerator>()> newDeviceEnumerator = systemDeviceEnumerator;
};

/// Copies of four parameters of the engine's own, as they were sent last. Nothing reads them so far.
struct EngineControls {
    float parameter27 = 50.0f;
    float parameter28 = 0.707f;
    float parameter31 = 1.0f;
    std::uint32_t parameter32 = 0;

    bool operator==(const EngineControls&) const = default;
};

/// PlaneLevels by plane; linear, full scale is 1.0.
using PlaneLevels = std::array<float, rt::planeCount>;

/// Holds each setting as a value. One of them comes from outside, the endpoint's identifier; the others
/// follow from it, down to the engine, and come apart again when it changes or goes. A step that fails leaves
/// its value unset, and with it all that would follow: the sound passes all the same.
///
///     source              holds
///     endpoint_chain      which value follows from which, and how
///     engine_selection    which engine is built, and when
///     engine_start        what a module is told as it starts and as it stops
///     parameter_traffic   the parameters that it gets meanwhile
///     stream_lock         the formats and the life of a stream
///     notifications       what the system tells
///     telemetry           which values are shown to diagnostic tools
///     diagnostics         what a module is asked for when a tool asks
///     initialization      what the audio engine sets an object up with
///     effects_list        what an object says of its effects
///     effect_core         construction and close
///
/// Thread safety: all is the owner's, which has a dispatcher, but `realtime`, which has its own rules.
class EffectCore final : public framework::ObjectClass<EffectCore, framework::ActiveObject>,
                         public framework::Wiring<EffectCore> {
public:
    /// `type` is an `EffectKind`; of any other number there is no effect, and no engine.
    explicit EffectCore(std::uint32_t type, Surroundings found = {});

    static void describeMembers(framework::ClassInfo& info);

    /// Takes in the record with which the audio engine sets an object up: the endpoint, the stream's mode and
    /// services. `dataSize` tells which generation's record it is; the first one's, and any other size,
    /// changes nothing and is S_OK. May come again, also while a stream runs. What was set before a failure
    /// stays set.
    ///
    /// E_INVALIDARG without a record or its property stores, for a mode that isn't known, and for an object
    /// that is no effect; else what the second generation's store said of the system's switch for effects, or
    /// the third one's work queue of itself.
    [[nodiscard]] HRESULT initializeApo(std::uint32_t dataSize, const BYTE* data);

    /// Lists the types of effects that an object of this kind may run; none for a stream that is to stay raw.
    /// The list never changes, so `changed`, of which a handle of our own is kept until the next call that
    /// brings one, is never signalled. E_POINTER, E_OUTOFMEMORY, or why the event can't be had: the outputs
    /// are untouched in the last case.
    [[nodiscard]] HRESULT getEffectsList(LPGUID* effectIds, UINT* effectCount, HANDLE changed);

    /// Begins a stream with the formats of the first connections, and starts the engine unless it runs at
    /// that rate already. While a stream is locked, its next buffer is taken for its first one again, and
    /// nothing else comes of it. S_OK. Where it raises something, no stream is locked afterwards.
    HRESULT lockForProcess(std::span<published::APO_CONNECTION_DESCRIPTOR* const> inputs,
                           std::span<published::APO_CONNECTION_DESCRIPTOR* const> outputs);
    /// Ends the stream. The engine goes on, ready for the next one.
    void unlockForProcess();

    // Whether a stream may have a format, by the module if there is an engine; see `testFormat`.
    [[nodiscard]] HRESULT isInputFormatSupported(published::IAudioMediaType* opposite,
                                                 published::IAudioMediaType* requested,
                                                 published::IAudioMediaType** supported);
    [[nodiscard]] HRESULT isOutputFormatSupported(published::IAudioMediaType* opposite,
                                                  published::IAudioMediaType* requested,
                                                  published::IAudioMediaType** supported);

    /// Which notifications the object wants: so far none. E_POINTER for a null pointer.
    [[nodiscard]] HRESULT getApoNotificationRegistrationInfo(
        published::APO_NOTIFICATION_DESCRIPTOR** descriptors, DWORD* count) const;

    /// What the system tells. Only what concerns the own endpoint counts.
    void onApoNotification(const published::APO_NOTIFICATION& notification);
    /// An effect property has changed, or may have: repeats are harmless.
    void onEffectsProperty(REFPROPERTYKEY key);

    /// Pulls from the module what tools have asked for in the instance's key since the last time, and shows
    /// it. Comes with each change of the key while a stream is locked; does nothing without an engine.
    void diagnosticsPull();

    /// The real-time section: `Process` is the audio thread's.
    [[nodiscard]] rt::RtProcessor& realtime() noexcept { return processor; }

    /// What the stream is for, as the last record said; all zero before.
    [[nodiscard]] const GUID& streamMode() const noexcept { return processingMode; }
    /// The system's queue for work in real time; 0 if it told none.
    [[nodiscard]] DWORD workQueue() const noexcept { return rtWorkQueue; }
    [[nodiscard]] const framework::Ref<published::IAudioProcessingObjectLoggingService>& logging()
        const noexcept {
        return loggingService;
    }

    [[nodiscard]] const EngineControls& engineControls() const noexcept { return controls; }

    const std::uint32_t effectType;
    const PROPERTYKEY fxIdKey;         ///< Names the effect's own properties; all zero without an effect.
    const std::string effectTypeText;  ///< "SFX", "MFX", "EFX" or empty.

    /// Small, and no other live instance's in this process.
    [[nodiscard]] std::uint32_t instanceNumber() const noexcept { return number.get(); }

    template <class T>
    using Value = framework::Observable<T>;

    // The endpoint, in the order in which one follows from the other.
    Value<platform::WideString> endpointIdStrW{*this};  ///< Set from outside.
    Value<std::string> outEndpointId{*this};            ///< UTF-8, while the object lives.
    Value<std::string> endpointGuidText{*this};
    Value<GUID> endpointGuid{*this};
    Value<framework::Ref<IMMDeviceEnumerator>> deviceEnumerator{*this};
    Value<framework::Ref<IMMDevice>> device{*this};
    Value<framework::Ref<IAudioEndpointVolume>> endpointVolume{*this};  ///< Of an active device only.
    Value<PropertyStore> endpointProperties{*this};
    Value<EffectsStore> effectsStore{*this};
    Value<PropertyStore> defaultStore{*this};
    Value<PropertyStore> userStore{*this};
    Value<PropertyStore> volatileStore{*this};
    Value<GUID> fxId{*this};
    Value<std::string> fxIdText{*this};
    Value<platform::WideString> fxIdTextW{*this};
    Value<std::uint32_t> presetVersion{*this};
    Value<std::uint32_t> modeFlags{*this};
    Value<GUID> engineId{*this};
    Value<std::shared_ptr<const params::ParameterSet>> parameterSet{*this};
    /// Empty for an unknown engine, and unset without one.
    Value<std::shared_ptr<const ChunkReaders>> chunkReaders{*this};
    Value<std::shared_ptr<const std::vector<std::string>>> clientList{*this};
    Value<bool> hasClientList{*this};

    // What steers the engine besides.
    Value<EffectsStore> overrideStore{*this};  ///< Goes first.
    Value<bool> engineAllowed{*this};
    Value<bool> sysFxDisabled{*this};
    Value<float> masterVolumeDb{*this};
    Value<bool> hardwarePulse{*this};
    Value<framework::Held<DspEngine>> dspEngine{*this};

    // The stream.
    Value<bool> locked{*this};
    Value<rt::EngineFormat> inFormat{*this};
    Value<rt::EngineFormat> outFormat{*this};
    Value<std::uint32_t> sampleRate{*this};  ///< Of the last stream; an engine runs at it until the next.
    Value<std::uint32_t> inChannelMask{*this};
    Value<std::uint32_t> inputChannelCount{*this};
    Value<std::uint32_t> outChannelMask{*this};
    Value<std::uint32_t> outputChannelCount{*this};
    Value<std::uint32_t> dspInChannelMask{*this};
    Value<std::uint32_t> dspInputChannelCount{*this};
    Value<std::uint32_t> dspOutChannelMask{*this};
    Value<std::uint32_t> dspOutputChannelCount{*this};

    // What is measured.
    Value<bool> firstInstance{*this};
    Value<bool> lastInstance{*this};
    Value<std::uint64_t> moduleVersion{*this};  ///< This library's: four 16-bit fields.
    Value<std::uint32_t> dspModuleVersion{*this};
    Value<services::ByteCount> presetLoadParamBytesReceivedByDsp{*this};
    Value<std::uint32_t> presetLoadStartTimeMs{*this};  ///< Of the process clock.
    Value<std::uint32_t> presetLoadCount{*this};        ///< How often an engine has started.
    Value<std::uint32_t> presetDspParamBytesSent{*this};

    // What is measured when a tool asks.
    Value<std::uint32_t> dspCycleCount{*this};
    Value<std::uint32_t> dspFrameCount{*this};
    Value<services::ByteCount> paramBytesSentByDsp{*this};
    Value<services::ByteCount> paramBytesReceivedByDsp{*this};
    Value<std::uint32_t> bufferSizeMs{*this};
    Value<std::uint32_t> cpuUsage{*this};  ///< Of the time that a buffer lasts, in tenths of a percent.
    Value<PlaneLevels> inputLevelMeters{*this};
    Value<PlaneLevels> outputLevelMeters{*this};
    Value<PlaneLevels> dspInputLevelMeters{*this};
    Value<PlaneLevels> dspOutputLevelMeters{*this};

private:
    void onClose() override;
    void clearChain();

    // initialization.cpp
    [[nodiscard]] HRESULT initialize(const published::APOInitSystemEffects2& record);
    [[nodiscard]] HRESULT initialize(const published::APOInitSystemEffects3& record);
    [[nodiscard]] HRESULT findWorkQueue(IServiceProvider* services);
    [[nodiscard]] HRESULT takeMode();
    [[nodiscard]] bool isRaw() const noexcept;

    // endpoint_chain.cpp
    void deriveEndpointChain();
    [[nodiscard]] framework::Ref<IMMDeviceEnumerator> newEnumerator(const std::string& endpointId) const;
    [[nodiscard]] EffectsStore openEffectsStores(const framework::Ref<IMMDevice>& ofDevice,
                                                 const EffectsStore& replacement);
    void keepFallbackStore();
    [[nodiscard]] GUID fxIdIn(const PropertyStore& store) const;
    void readClientList();

    // engine_selection.cpp
    void watchForEngine();
    void engineBuild(std::uint32_t flags);
    void engineTeardown();
    [[nodiscard]] framework::Held<DspEngine> engineOnHardware(std::uint32_t flags);
    [[nodiscard]] framework::Held<DspEngine> engineOfMode(std::uint32_t flags);

    // engine_start.cpp
    void engineStart();
    void engineStop();
    void engineWake();
    void readModuleVersion(DspEngine& engine);
    void countParameterBytesAnew(DspEngine& engine);
    void sendSysFxDisabled(bool isDisabled);
    void readMasterVolume(const framework::Ref<IAudioEndpointVolume>& volume);
    void sendMasterVolume(float levelDb);

    // parameter_traffic.cpp
    void startSendingParameters(std::shared_ptr<const ChunkReaders> readers);
    void stopSendingParameters();
    static void onParameter(void* context, framework::ListenedTo& source, framework::ActiveObject& owner,
                            const void* published, void* pending, const void* defaultValue,
                            framework::Reason reason);
    void sendParameter(const params::Parameter& parameter, std::span<const std::byte> bytes);

    // stream_lock.cpp
    void beginStream(const rt::EngineFormat& in, const rt::EngineFormat& out);
    void setFormats(const rt::EngineFormat& in, const rt::EngineFormat& out);

    // telemetry.cpp
    void watchForTelemetry();

    // diagnostics.cpp
    void watchRequests();
    void unwatchRequests();
    static void onRequests(void* context, framework::ListenedTo& source, framework::ActiveObject& owner,
                           const void* published, void* pending, const void* defaultValue,
                           framework::Reason reason);
    [[nodiscard]] bool isRequested(std::string_view name, std::uint32_t& lastSeen) const;
    [[nodiscard]] bool areMetersRequested();
    void resetLevelMeters();
    void pullLevelMeters();
    void publishLoad();

    // notifications.cpp
    [[nodiscard]] bool isOwnEndpoint(IMMDevice* endpoint) const;
    void onVolumeChange(const published::AUDIO_ENDPOINT_VOLUME_CHANGE_NOTIFICATION& change);
    void onEndpointProperty(const published::AUDIO_ENDPOINT_PROPERTY_CHANGE_NOTIFICATION& change);
    void onSystemEffectsProperty(const published::AUDIO_SYSTEMEFFECTS_PROPERTY_CHANGE_NOTIFICATION& change);
    void followFxId();
    void requestChunk(std::uint32_t index);
    [[nodiscard]] framework::TaskHandle postLater(void (EffectCore::*method)());
    void pulseHardware();

    const Surroundings surroundings;
    services::InstanceNumber number;
    framework::Held<params::FxPropertySets> fallbackStore;  ///< The own provider that `effectsStore` is.
    framework::Held<params::FxPropertySets> incomingFallbackStore;  ///< While `effectsStore` changes.

    GUID processingMode{};
    DWORD rtWorkQueue = 0;
    framework::Ref<published::IAudioProcessingObjectLoggingService> loggingService;
    platform::HostEvent effectsChanged;
    /// The device of whose changes the system is to tell. Nothing sets it: the sets of properties are
    /// watched, and a host that sends notifications all the same is listened to.
    framework::Ref<IMMDevice> notifyingDevice;

    framework::Held<DspEngine> rtEngine;              ///< For the real-time section; from start to stop.
    std::shared_ptr<const ChunkReaders> sentReaders;  ///< Those whose parameters are sent.
    EngineControls controls;

    // Cancelled by the next one of a kind, and at the close.
    framework::TaskHandle hardwarePulseTask;
    framework::TaskHandle clientListTask;
    framework::TaskHandle fallbackStoreTask;

    services::InstanceRecord telemetry{number.get(), effectTypeText, volatileStore};
    framework::Held<params::FxStoreWatcher> keyWatcher;  ///< Of the own key, while a stream is locked.

    /// What tools asked for last: any other number asks anew.
    struct LastRequests {
        std::uint32_t cycleCount = 0;
        std::uint32_t frameCount = 0;
        std::uint32_t bytesSent = 0;
        std::uint32_t bytesReceived = 0;
    };
    LastRequests lastRequests;

    framework::NestedWatch clientListReading;
    framework::NestedWatch selecting;  ///< Holds an engine built, and started while there is a rate.
    framework::NestedWatch waking;     ///< These tell it of what changes.
    framework::NestedWatch sendingSysFxDisabled;
    framework::NestedWatch sendingMasterVolume;
    framework::NestedWatch showing;  ///< The telemetry shows the values.

    PlaneLevels dspInputLevels{};  ///< As the module told them last.
    PlaneLevels dspOutputLevels{};

    rt::RtProcessor processor;
};

}  // namespace korva::engine
