// The audio object as an audio engine drives it.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "engine/effect_core.h"
#include "framework/dispatcher.h"
#include "framework/ref.h"
#include "korva/process/layouts.h"
#include "params/effect_keys.h"
#include "platform/published/audio_records.h"

namespace korva::tool {

using published::APO_CONNECTION_PROPERTY;

/// Highest levels by plane, linear; full scale is 1.0.
struct Peaks {
    std::array<float, rt::planeCount> input{};
    std::array<float, rt::planeCount> output{};
};

/// The engine that an object has.
struct EngineUse {
    std::string module;     ///< Name of the file, without suffix; empty if the engine needs none.
    bool isLoaded = false;  ///< Whether the module works for it.
    bool onHardware = false;
    bool wantsHardware = false;  ///< Whether the preset asks for it.
    std::string engineId;        ///< Empty without an engine: the object plays without one.
    std::uint32_t built = 0;     ///< How many there were.
    std::uint32_t started = 0;   ///< How often one was started.
};

/// One object with its stream. Nobody else in the tool knows what it is made of. `process` comes between
/// `lock` and `unlock` only. One thread plays the engine's control thread and its audio thread; the object's
/// own thread runs beside it.
class HostedObject {
public:
    /// DSP modules lie in `moduleFolder`. Throws if the environment forces a version of the kernels that this
    /// processor can't run.
    HostedObject(params::EffectKind kind, const std::filesystem::path& moduleFolder);
    ~HostedObject();
    HostedObject(const HostedObject&) = delete;
    HostedObject& operator=(const HostedObject&) = delete;

    /// Tells the object its endpoint: it makes its engine now.
    void initialize(const std::string& endpointId);

    /// Starts a stream: buffers of at most `maxFrames` frames. Both formats have a mask. Throws `ToolError`
    /// if the object, or its module, takes other formats only.
    void lock(const SoundFormat& in, const SoundFormat& out, std::uint32_t maxFrames, bool metered);
    void process(APO_CONNECTION_PROPERTY& input, APO_CONNECTION_PROPERTY& output) noexcept;
    void unlock();

    /// Tells the object that its endpoint's volume has changed, as the system would.
    void notifyVolume(float scalar);

    /// Looks at the object's settings on the thread that they belong to.
    void inspect(const std::function<void(engine::EffectCore&)>& look);

    [[nodiscard]] EngineUse engineUse();

    /// How long the last call took.
    [[nodiscard]] std::uint64_t lastProcessNs() const noexcept;
    /// Raises `peaks` to where the level meters stand.
    void raise(Peaks& peaks) const noexcept;
    /// Name of the instruction set in use.
    [[nodiscard]] std::string_view kernelsName() const noexcept;
    /// Whether the system keeps the code of `process` in memory.
    [[nodiscard]] bool isCodeLocked() const noexcept;

private:
    framework::DispatcherUse worker;
    framework::Held<engine::EffectCore> core;
    bool codeLocked;
    std::uint32_t enginesBuilt = 0;  ///< The worker's.
    std::uint32_t lockedFrames = 0;  ///< Largest buffer; 0 while no stream is locked.
    std::uint32_t samplesPerFrame = 0;
};

}  // namespace korva::tool
