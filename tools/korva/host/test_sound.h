// Sounds that need no file.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "korva/host/host_line.h"
#include "korva/host/sound_format.h"

namespace korva::tool {

/// Fills `samples` (whole frames, interleaved) with the sound's part from `firstFrame` on: on the n-th
/// channel a sine of n x 110 Hz at half of full scale, or on all of them one frame of full scale at the
/// beginning.
void fillWith(TestSound sound, const SoundFormat& format, std::uint64_t firstFrame, std::span<float> samples);

/// Raises the level of each channel to the highest one in `samples`.
void raiseLevels(std::vector<float>& levels, std::span<const float> samples);

}  // namespace korva::tool
