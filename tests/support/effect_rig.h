// An effect core with all that it needs, each a test's own.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/effect_core.h"
#include "framework/dispatcher.h"
#include "framework/ref.h"
#include "platform/published/property_types.h"
#include "rt/engine_format.h"
#include "tests/support/engines.h"
#include "tests/support/fake_device.h"
#include "tests/support/own_endpoint.h"
#include "tests/support/own_folder.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/telemetry_base.h"

namespace korva::test {

/// {5AB10000-0000-0000-0000-00000000000n}: GUIDs for effects to have their properties under.
[[nodiscard]] GUID effectGuid(std::uint8_t n);

/// What selects an engine.
struct EngineChoice {
    GUID fxId = effectGuid(1);
    std::uint32_t presetVersion = 1;
    std::uint32_t modeFlags = 0;
    GUID engineId = firstEngine;
};

/// The format of a stream, 48 kHz stereo unless it is said otherwise.
struct StreamFormat {
    std::uint32_t channels = 2;
    std::uint32_t rate = 48000;
    std::uint32_t mask = 0;
};

/// How a rig begins.
struct RigOptions {
    std::string answers{};  ///< The recorder's first ones.
    std::uint32_t effectType = 2;
    bool systemSuppliesStores = false;  ///< The device is asked for a provider first.
    bool hasEnumerator = true;          ///< Else the system has no devices.
    bool hasTelemetry = false;          ///< There is a place where instances show themselves.
};

/// A connection as the audio engine announces it.
class LockedConnection {
public:
    explicit LockedConnection(const StreamFormat& format);
    /// One that tells this format, with this result.
    explicit LockedConnection(const published::UNCOMPRESSEDAUDIOFORMAT& told, HRESULT result = published::ok);

    [[nodiscard]] published::APO_CONNECTION_DESCRIPTOR* get() noexcept { return &descriptor; }

private:
    framework::Ref<published::IAudioMediaType> type;
    published::APO_CONNECTION_DESCRIPTOR descriptor{};
};

/// The core lives on a thread of its own; modules of the three names are the recorder, unless they are taken
/// away. Nothing is installed and no identifier is set at first.
class EffectRig {
public:
    /// The recorder's first answers, and the kind of effect.
    explicit EffectRig(const std::string& answers = {}, std::uint32_t effectType = 2)
        : EffectRig(RigOptions{.answers = answers, .effectType = effectType}) {}
    explicit EffectRig(const RigOptions& options);
    ~EffectRig();
    EffectRig(const EffectRig&) = delete;
    EffectRig& operator=(const EffectRig&) = delete;

    /// Runs on the core's thread, and waits.
    template <class Callable>
    void on(const Callable& callable) {
        worker->runSynchronously(callable);
    }
    /// To be used in `on`; values may be set and read from anywhere.
    [[nodiscard]] engine::EffectCore& core() noexcept { return *held; }
    /// Waits until the core's thread has done what was posted so far.
    void settle() { settleAll(); }
    /// Closes the core and releases it; once.
    void close();
    /// Another reference; null once it is closed.
    [[nodiscard]] framework::Ref<engine::EffectCore> coreRef() const { return held.ref(); }

    // The endpoint's user set, written as another program would.
    void install(const EngineChoice& choice) { installAt(endpoint, choice); }
    void setText(REFPROPERTYKEY key, std::string_view text) { setTextAt(endpoint, key, text); }
    void setNumber(REFPROPERTYKEY key, std::uint32_t number) { setNumberAt(endpoint, key, number); }
    void setBlob(REFPROPERTYKEY key, std::span<const std::byte> bytes);
    void setTexts(REFPROPERTYKEY key, const std::vector<std::string>& texts);
    void remove(REFPROPERTYKEY key);
    /// The same in the set of any endpoint; `install` puts what names the effect's properties last.
    void installAt(const OwnEndpoint& at, const EngineChoice& choice);
    /// The key that names the effect's properties.
    [[nodiscard]] PROPERTYKEY fxIdKey() const;

    /// Sets the identifier, to the own endpoint's if none is given.
    void begin() { begin(endpoint.id()); }
    void begin(const std::string& endpointId);

    void lock(const StreamFormat& in = {}, const StreamFormat& out = {});
    /// With whatever connections; what they have to do with the stream that `play` plays is the caller's.
    [[nodiscard]] HRESULT lockConnections(std::span<published::APO_CONNECTION_DESCRIPTOR* const> inputs,
                                          std::span<published::APO_CONNECTION_DESCRIPTOR* const> outputs);
    void unlock();
    /// One call of the real-time section, on the calling thread: valid samples in, samples out.
    std::vector<float> play(std::span<const float> samples, std::uint32_t outputChannels = 2);

    /// The recorder's calls since the last time, `process` left out; asked for on the core's thread, so that
    /// all calls before are in it.
    [[nodiscard]] std::vector<RecordedCall> newRecords();
    /// Their functions' names.
    [[nodiscard]] std::vector<std::string> newCalls() { return functionsOf(newRecords()); }
    /// Those since the last time in which a module or an instance begins, is tried, or ends: "Load
    /// TANMER64", "Create TANMER64 1", "isHardwareAvailable DRIVOL64 1", ...
    [[nodiscard]] std::vector<std::string> newLifeCalls();
    /// The documents of all engines so far, as their modules got them.
    [[nodiscard]] std::vector<std::string> documents();

    /// How often an enumerator was asked for.
    std::atomic<int> enumerations{0};

    OwnEndpoint endpoint;
    OwnEndpoint otherEndpoint{endpoint, "other"};
    std::optional<TelemetryBase> telemetryBase;
    OwnFolder modules;
    Recording recording;
    framework::Ref<FakeDevice> device;       ///< The own endpoint's.
    framework::Ref<FakeDevice> otherDevice;  ///< The other one's.
    framework::Ref<FakeDevices> devices;     ///< Has both.

private:
    void settleAll();
    static void setValueAt(const OwnEndpoint& at, REFPROPERTYKEY key, std::uint32_t type,
                           std::span<const std::byte> data);
    static void setTextAt(const OwnEndpoint& at, REFPROPERTYKEY key, std::string_view text);
    static void setNumberAt(const OwnEndpoint& at, REFPROPERTYKEY key, std::uint32_t number);

    std::uint32_t type;
    std::size_t seenCalls = 0;
    StreamFormat inFormat;
    framework::DispatcherUse worker = framework::Dispatcher::start();
    framework::Held<engine::EffectCore> held;
};

}  // namespace korva::test
