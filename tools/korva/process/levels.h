// The highest levels of a stream's sound.
#pragma once

#include <array>
#include <span>

#include "korva/host/sound_format.h"
#include "rt/engine_format.h"

namespace korva::tool {

/// By plane, linear; full scale is 1.0.
using Levels = std::array<float, rt::planeCount>;

/// Follows one side of a stream from its beginning.
class HighestLevels {
public:
    /// `format` has a mask, which says where channels land.
    explicit HighestLevels(const SoundFormat& format) noexcept;

    /// Looks at interleaved samples, whole frames of them. One that is no number counts as silence.
    void follow(std::span<const float> samples) noexcept;

    /// 0 for planes that no channel lands on.
    [[nodiscard]] const Levels& levels() const noexcept { return highest; }

private:
    rt::EngineFormat layout;
    Levels highest{};
};

/// Where a stream that nobody changed on its way over the planes brings samples: what lands on a plane that
/// the output has too is there, all else is silent.
[[nodiscard]] bool isCarriedOver(const SoundFormat& in, std::span<const float> input, const SoundFormat& out,
                                 std::span<const float> output);

}  // namespace korva::tool
