// The loops over samples, in one version for each instruction set.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "rt/level_meter.h"

namespace korva::rt {

/// One version of each loop. The plain version is the definition; every other gives the same result to the
/// bit (where two NaNs meet, which of the two comes out is open). Buffers need no alignment, and nothing past
/// `frames` is read or written.  [audio, rt]
struct Kernels {
    /// Lower-case name of the instruction set, as KORVA_KERNELS takes it.
    std::string_view name;

    /// Writes `frames` samples of all eight planes of both buses: channel c of `input` (shape frames x
    /// channels, interleaved; null is silence) to plane `planeOfChannel[c]`, of channels on one plane the
    /// last, and silence to planes without a channel. `channels` is at most 8. Null `dry`: nobody reads that
    /// bus, so it is left out, and half of the stores with it.
    void (*deinterleave)(const float* input, std::uint32_t channels, const std::uint8_t* planeOfChannel,
                         float* const* wet, float* const* dry, std::uint32_t frames) noexcept;

    /// `ChannelMixer` on eight planes.
    void (*fold)(float* const* planes, std::uint32_t inMask, std::uint32_t outMask,
                 std::uint32_t frames) noexcept;

    /// Runs each lane's follower over `frames` samples. No two lanes have one state.
    void (*follow)(const MeterLane* lanes, std::uint32_t count, const MeterRelease& release,
                   std::uint32_t frames) noexcept;

    /// Writes channel c of `output` (frames x channels, interleaved) from plane `planeOfChannel[c]`.
    void (*interleave)(const float* const* planes, const std::uint8_t* planeOfChannel, std::uint32_t channels,
                       float* output, std::uint32_t frames) noexcept;

    /// What deinterleave, fold and interleave give together for stereo, 5.1 or 7.1 (2, 6 or 8 channels in
    /// the published order) folded to stereo, without the planes. Output may lie on the input's start, else
    /// apart from it.
    void (*foldToStereo)(const float* input, std::uint32_t channels, float* output,
                         std::uint32_t frames) noexcept;
};

/// The versions that this processor can run, plain first, fastest last.  [any]
[[nodiscard]] std::span<const Kernels* const> supportedKernels() noexcept;

/// The supported version of that name, or null.  [any]
[[nodiscard]] const Kernels* findKernels(std::string_view name) noexcept;

/// The version in use: the one that the environment variable KORVA_KERNELS names, if it is supported, else
/// the fastest. Chosen once, when the library is loaded; static objects that are made before get the plain
/// one.  [any, rt]
[[nodiscard]] const Kernels& chosenKernels() noexcept;

}  // namespace korva::rt
