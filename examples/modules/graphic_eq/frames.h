// Sound of all planes together: what is a plane in a block is a lane of a vector here, so that one
// instruction works on all of them.
#pragma once

#include <cstdint>

#include "korva/dsp_module.h"

namespace equaliser {

/// A sample of each plane at one moment.
struct alignas(32) Frame {
    float planes[KORVA_PLANES];
};

/// As many frames as are worked on together: few enough to stay in the nearest cache.
inline constexpr std::uint32_t framesAtOnce = 64;
using Frames = Frame[framesAtOnce];

/// Copies `count` frames from the planes, or to them, from frame `begin` on, which is a multiple of 4. They
/// work on four frames at a time: up to three frames more are read, and written as they were.  [audio, rt]
void gather(const DspBlock& block, std::uint32_t begin, std::uint32_t count, Frames& frames);
void scatter(const Frames& frames, const DspBlock& block, std::uint32_t begin, std::uint32_t count);

}  // namespace equaliser
