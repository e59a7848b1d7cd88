// The buffers between which an audio engine has an object process.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "korva/host/sound_format.h"
#include "platform/published/audio_records.h"

namespace korva::tool {

/// One buffer for each side of a stream; where both formats agree it is one for both, and the output takes
/// the input's place.
class EngineBuffers {
public:
    /// Both formats have a mask. Buffers hold up to `frames` frames.
    EngineBuffers(const SoundFormat& in, const SoundFormat& out, std::uint32_t frames);

    [[nodiscard]] const SoundFormat& inputFormat() const noexcept { return inFormat; }
    [[nodiscard]] const SoundFormat& outputFormat() const noexcept { return outFormat; }
    [[nodiscard]] std::uint32_t maxFrames() const noexcept { return frameCapacity; }

    // Shapes: frames x channels, interleaved.
    [[nodiscard]] std::span<float> input() noexcept { return inputSamples; }
    [[nodiscard]] std::span<float> output() noexcept {
        return outputSamples.empty() ? std::span(inputSamples) : std::span(outputSamples);
    }
    /// The first `frames` frames of each.
    [[nodiscard]] std::span<const float> input(std::uint32_t frames) noexcept;
    [[nodiscard]] std::span<const float> output(std::uint32_t frames) noexcept;

private:
    const SoundFormat inFormat;
    const SoundFormat outFormat;
    const std::uint32_t frameCapacity;
    std::vector<float> inputSamples;
    std::vector<float> outputSamples;  ///< Empty where the input's are for both.
};

}  // namespace korva::tool
