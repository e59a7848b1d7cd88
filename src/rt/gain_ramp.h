// A gain or crossfade on the bus that moves exponentially, frame by frame.
#pragma once

#include <cstdint>

namespace korva::rt {

/// A ramp's settings and where it stands. Whoever starts one sets `step` (to `stepUp` or `stepDown`) and
/// `crossfade`; until then it does nothing.
struct GainRampState {
    float rampMilliseconds = 50.0f;
    float floorGain = 0.707f;             ///< Lowest gain.
    float ceilingGain = 1.0f;             ///< Highest gain of a crossfade.
    float gain = 1.0f;                    ///< Gain of the next frame.
    float step = 1.0f;                    ///< Factor a frame; exactly 1.0 means that no ramp runs.
    float stepDown = 1.0f;                ///< 2 - `stepUp`.
    float stepUp = 1.0f;                  ///< (1 / floorGain) ^ (1000 / (rampMilliseconds x 44100)).
    std::uint32_t crossfade = 0;          ///< Non-zero: between the dry and the wet planes.
    std::uint32_t referenceRate = 44100;  ///< Hz. Fixed: a ramp lasts as named at this rate only.
    bool reachedFloor = false;            ///< Set once `gain` has come down to `floorGain`.

    /// Sets the initial values for a ramp of `milliseconds`, and computes the steps.  [owner]
    explicit GainRampState(float milliseconds = 50.0f) noexcept;

    /// Whether `GainRamp` does anything.
    [[nodiscard]] bool isRunning() const noexcept { return step != 1.0f && !(step > 1.0f && gain >= 1.0f); }
};

/// Applies the gain to the first `channels` planes, in plane order and without a channel map; a frame gets
/// the gain as it was before that frame's step. `channels` counts to 8 at most.  [audio, rt]
void GainRamp(GainRampState& state, float* const* wet, const float* const* dry, std::int32_t channels,
              std::uint32_t frames) noexcept;

}  // namespace korva::rt
