// Peak followers: one for each plane and side, with a release that accelerates.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "rt/engine_format.h"

namespace korva::rt {

struct Kernels;

/// The followers of one side, by plane. Linear, full scale is 1.0.
struct MeterState {
    std::array<float, planeCount> peak{};   ///< Current level.
    std::array<float, planeCount> slope{};  ///< Current release step for each sample.
};

/// How fast a level falls after its last peak.
struct MeterRelease {
    float floor = 0.0f;   ///< First and least step a sample: 0.00001 of full scale at 48 kHz.
    float growth = 0.0f;  ///< Factor of the step a sample: 1.0003 at 48 kHz.

    /// Both scale with 48000 / rate. The growth does too, and not with a root: at 96 kHz it is about a half,
    /// the step stays at its floor and the level falls linearly.  [owner]
    [[nodiscard]] static MeterRelease forSampleRate(std::uint32_t sampleRate) noexcept;
};

/// Runs the follower of each channel of `layout` over its plane. Planes without a channel keep their state;
/// a plane with two channels is followed twice. A sample that is no number counts as silence.  [audio, rt]
void LevelMeter(MeterState& state, const MeterRelease& release, const float* const* planes,
                std::uint32_t frames, const EngineFormat& layout) noexcept;

/// One follower's state and the samples that it runs over.
struct MeterLane {
    const float* samples;
    float* peak;
    float* slope;
};

/// The followers of one side or of both, to be run side by side: each is a chain of dependent operations,
/// so several cost little more than one.  [audio, rt]
class MeterLanes {
public:
    /// Adds a lane for each channel of `layout`, at most eight. Two sides at most.
    void add(MeterState& state, const float* const* planes, const EngineFormat& layout) noexcept;
    void follow(const MeterRelease& release, std::uint32_t frames, const Kernels& kernels) const noexcept;

private:
    std::array<MeterLane, std::size_t{2} * planeCount> lanes;  // filled up to `count`
    std::uint32_t count = 0;
    bool shared = false;  ///< Two lanes have one state: they must run one after the other.
};

}  // namespace korva::rt
