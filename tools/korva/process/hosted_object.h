// The audio object as an audio engine drives it.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "korva/process/layouts.h"
#include "platform/published/audio_records.h"
#include "rt/rt_processor.h"

namespace korva::tool {

using published::APO_CONNECTION_PROPERTY;

/// Highest levels by plane, linear; full scale is 1.0.
struct Peaks {
    std::array<float, rt::planeCount> input{};
    std::array<float, rt::planeCount> output{};
};

/// One object with its stream. Nobody else in the tool knows what it is made of. `process` comes between
/// `lock` and `unlock` only. One thread plays the engine's control thread and its audio thread.
class HostedObject {
public:
    /// Throws if the environment forces a version of the kernels that this processor can't run.
    HostedObject();

    /// Starts a stream: buffers of at most `maxFrames` frames. Both formats have a mask.
    void lock(const SoundFormat& in, const SoundFormat& out, std::uint32_t maxFrames, bool metered);
    void process(APO_CONNECTION_PROPERTY& input, APO_CONNECTION_PROPERTY& output) noexcept;
    void unlock() noexcept;

    /// How long the last call took.
    [[nodiscard]] std::uint64_t lastProcessNs() const noexcept;
    /// Raises `peaks` to where the level meters stand.
    void raise(Peaks& peaks) const noexcept;
    /// Name of the instruction set in use.
    [[nodiscard]] std::string_view kernelsName() const noexcept;
    /// Whether the system keeps the code of `process` in memory.
    [[nodiscard]] bool isCodeLocked() const noexcept;

private:
    rt::RtProcessor processor;
    bool codeLocked;
    std::uint32_t lockedFrames = 0;  ///< Largest buffer; 0 while no stream is locked.
    std::uint32_t samplesPerFrame = 0;
};

}  // namespace korva::tool
