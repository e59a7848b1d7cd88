// The fallback signal path: folds planes without a speaker in the output into those that have one.
#pragma once

#include <array>
#include <cstdint>

#include "rt/dsp_block.h"
#include "rt/engine_format.h"

namespace korva::rt {

struct Kernels;

/// Adds each plane that `out` has no speaker for to the first of its choices that it has, with the choice's
/// coefficient if `in` has that speaker too, else with 1.0: a fold into an empty plane loses no level.
/// Reads both channel masks and the block's planes and frames, nothing else. Sources stay as they are; the
/// sum is neither normalised nor clipped, so it can exceed full scale. Planes don't overlap.  [audio, rt]
void ChannelMixer(DspBlock& block, const EngineFormat& in, const EngineFormat& out) noexcept;
void ChannelMixer(DspBlock& block, const EngineFormat& in, const EngineFormat& out,
                  const Kernels& kernels) noexcept;

}  // namespace korva::rt
