// An effect core with all that it needs, each a benchmark's own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "bench/support/temporary_folder.h"
#include "engine/effect_core.h"
#include "framework/dispatcher.h"
#include "framework/ref.h"
#include "platform/published/audio_interfaces.h"
#include "platform/registry.h"
#include "platform/unicode.h"
#include "tests/support/fake_device.h"
#include "tests/support/own_registry.h"

namespace korva::bench {

/// What is around a core: an endpoint with its three sets of properties in a registry of its own, its device,
/// and a folder with a module. The user's set selects the engine, and has a preset of all of its parameters
/// with the bytes that they have by default. Several cores may be on it. Raises std::runtime_error where
/// there can be none. One at a time.
class CoreGround {
public:
    /// `moduleFile` is what all engines find under the name of their module. Cores show themselves to tools
    /// only where `hasTelemetry`.
    CoreGround(const GUID& engineId, const std::string& moduleFile, bool hasTelemetry = false);

    [[nodiscard]] engine::Surroundings surroundings() const;
    [[nodiscard]] const std::string& endpointId() const noexcept { return endpoint; }

    /// Where the user's set is below HKEY_LOCAL_MACHINE, and the set itself.
    [[nodiscard]] const std::string& userSetPath() const noexcept { return userPath; }
    [[nodiscard]] const platform::RegistryKey& userSet() const noexcept { return user; }
    /// The file that the module of the engine is loaded from.
    [[nodiscard]] std::string moduleOf(const GUID& engineId) const;

private:
    void install(const GUID& engineId);

    const std::string endpoint = "{0.0.0.00000000}.{5f0c2d2e-7a57-4c6b-9f0e-3a1b8f6a9d11}";
    test::OwnRegistry registry;
    TemporaryFolder modules;
    framework::Ref<test::FakeDevices> devices;
    std::string userPath;
    platform::RegistryKey user;
};

/// The properties of the effect that the ground's engine belongs to are under this GUID.
inline constexpr GUID benchEffect = {0x5AB10000, 0, 0, {0, 0, 0, 0, 0, 0, 0, 1}};

/// The format of both sides of a stream, 48 kHz stereo, as the audio engine announces it.
class StereoConnection {
public:
    StereoConnection();

    /// What `lockForProcess` takes, for either side.
    [[nodiscard]] std::span<published::APO_CONNECTION_DESCRIPTOR* const> get() const noexcept {
        return {&pointer, 1};
    }

private:
    framework::Ref<published::IAudioMediaType> type;
    published::APO_CONNECTION_DESCRIPTOR descriptor{};
    published::APO_CONNECTION_DESCRIPTOR* const pointer = &descriptor;
};

/// 480 frames of noise in stereo at a tenth of full scale, and room for what becomes of them.
class StereoBuffer {
public:
    static constexpr std::uint32_t frames = 480;

    StereoBuffer();

    /// One call of the real-time section.
    void play(rt::RtProcessor& processor) noexcept;

private:
    alignas(64) std::array<float, std::size_t{2} * frames> input;
    alignas(64) std::array<float, std::size_t{2} * frames> output{};
    published::APO_CONNECTION_PROPERTY in;
    published::APO_CONNECTION_PROPERTY out;
};

/// A core on a thread of its own. It has no identifier at first.
class CoreRig {
public:
    explicit CoreRig(const CoreGround& ground);
    ~CoreRig();
    CoreRig(const CoreRig&) = delete;
    CoreRig& operator=(const CoreRig&) = delete;

    /// Runs on the core's thread, and waits.
    template <class Callable>
    void on(const Callable& callable) {
        worker->runSynchronously(callable);
    }
    /// To be used in `on`; values may be set and read from anywhere.
    [[nodiscard]] engine::EffectCore& core() noexcept { return *held; }

    /// Sets the identifier, to be used in `on`. Raises std::runtime_error unless the engine has a module
    /// then.
    void begin();
    /// Locks both sides; to be used in `on`.
    void lock();

private:
    const platform::WideString identifier;
    const StereoConnection connection;
    framework::DispatcherUse worker;
    framework::Held<engine::EffectCore> held;
};

}  // namespace korva::bench
