// Which streams may be folded to stereo without the planes.
#pragma once

#include <cstdint>

#include "rt/engine_format.h"

namespace korva::rt {

/// Whether both formats are such that `Kernels::foldToStereo` gives what the planes would: stereo, 5.1 (back
/// or side) or 7.1, each channel on its own speaker's plane, to stereo.  [audio, rt]
[[nodiscard]] bool isStereoFold(const EngineFormat& in, std::uint32_t inChannels, const EngineFormat& out,
                                std::uint32_t outChannels) noexcept;

/// Whether the two buffers don't overlap, or begin together and the output doesn't run ahead of the input:
/// then folding frame by frame reads nothing that it has overwritten.  [audio, rt]
[[nodiscard]] bool isApartOrInPlace(const float* input, std::uint32_t inChannels, const float* output,
                                    std::uint32_t outChannels, std::uint32_t frames) noexcept;

}  // namespace korva::rt
