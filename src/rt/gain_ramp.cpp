#include "rt/gain_ramp.h"

#include <algorithm>
#include <cmath>

#include "rt/dsp_block.h"
#include "rt/realtime.h"
#include "rt/speakers.h"

namespace korva::rt {

GainRampState::GainRampState(float milliseconds) noexcept : rampMilliseconds(milliseconds) {
    if (rampMilliseconds > 0.0f) {
        const double frames = static_cast<double>(rampMilliseconds) * referenceRate / 1000.0;
        stepUp = static_cast<float>(std::pow(1.0 / static_cast<double>(floorGain), 1.0 / frames));
    }
    stepDown = 2.0f - stepUp;
}

KORVA_RT_CODE void GainRamp(GainRampState& state, float* const* wet, const float* const* dry,
                            std::int32_t channels, std::uint32_t frames) noexcept {
    if (!state.isRunning()) {
        return;
    }
    const std::int32_t planes = std::clamp(channels, 0, static_cast<std::int32_t>(planeCount));
    const bool crossfade = state.crossfade != 0;
    const float ceiling = crossfade ? state.ceilingGain : 1.0f;
    float gain = state.gain;
    for (std::uint32_t k = 0; k < frames; ++k) {
        for (std::int32_t p = 0; p < planes; ++p) {
            float& sample = wet[p][k];
            sample = crossfade ? (1.0f - gain) * dry[p][k] + gain * sample : sample * gain;
        }
        gain *= state.step;
        // Two tests and no clamp: the ceiling wins where it lies below the floor.
        if (state.floorGain > gain) {
            gain = state.floorGain;
        }
        if (gain > ceiling) {
            gain = ceiling;
        }
    }
    state.gain = gain;
    if (state.floorGain >= gain) {
        state.reachedFloor = true;
    }
}

}  // namespace korva::rt
