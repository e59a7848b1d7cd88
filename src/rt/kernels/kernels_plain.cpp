// The definition of every loop: what the faster versions must equal to the bit.
#include <cmath>

#include "rt/fold_rows.h"
#include "rt/kernels/instruction_sets.h"
#include "rt/realtime.h"

namespace korva::rt {
namespace {

KORVA_RT_CODE void deinterleaveOne(const float* input, std::uint32_t channels,
                                   const std::uint8_t* planeOfChannel, float* const* planes,
                                   std::uint32_t frames) noexcept {
    for (std::uint32_t plane = 0; plane < planeCount; ++plane) {
        for (std::uint32_t k = 0; k < frames; ++k) {
            planes[plane][k] = 0.0f;
        }
    }
    for (std::uint32_t c = 0; c < channels; ++c) {
        const std::uint8_t plane = planeOfChannel[c];
        for (std::uint32_t k = 0; k < frames; ++k) {
            planes[plane][k] = input != nullptr ? input[c + k * channels] : 0.0f;
        }
    }
}

KORVA_RT_CODE void deinterleaveBoth(const float* input, std::uint32_t channels,
                                    const std::uint8_t* planeOfChannel, float* const* wet, float* const* dry,
                                    std::uint32_t frames) noexcept {
    for (std::uint32_t plane = 0; plane < planeCount; ++plane) {
        for (std::uint32_t k = 0; k < frames; ++k) {
            wet[plane][k] = 0.0f;
            dry[plane][k] = 0.0f;
        }
    }
    for (std::uint32_t c = 0; c < channels; ++c) {
        const std::uint8_t plane = planeOfChannel[c];
        for (std::uint32_t k = 0; k < frames; ++k) {
            const float sample = input != nullptr ? input[c + k * channels] : 0.0f;
            wet[plane][k] = sample;
            dry[plane][k] = sample;
        }
    }
}

KORVA_RT_CODE void deinterleave(const float* input, std::uint32_t channels,
                                const std::uint8_t* planeOfChannel, float* const* wet, float* const* dry,
                                std::uint32_t frames) noexcept {
    if (dry != nullptr) {
        deinterleaveBoth(input, channels, planeOfChannel, wet, dry, frames);
    } else {
        deinterleaveOne(input, channels, planeOfChannel, wet, frames);
    }
}

KORVA_RT_CODE void foldPlanes(float* const* planes, std::uint32_t inMask, std::uint32_t outMask,
                              std::uint32_t frames) noexcept {
    forEachFold(inMask, outMask, [&](Plane source, Plane target, float coefficient) {
        for (std::uint32_t k = 0; k < frames; ++k) {
            planes[target][k] += planes[source][k] * coefficient;
        }
    });
}

/// Comparisons are written so that a NaN loses them: a level recovers from one.
KORVA_RT_CODE void followLane(const MeterLane& lane, const MeterRelease& release,
                              std::uint32_t frames) noexcept {
    float peak = *lane.peak;
    float slope = *lane.slope;
    for (std::uint32_t k = 0; k < frames; ++k) {
        const float level = std::fabs(lane.samples[k]);
        peak = peak - slope;
        slope = slope * release.growth;
        peak = peak > 0.0f ? peak : 0.0f;
        if (level > peak) {
            peak = level;
            slope = release.floor;
        } else {
            slope = slope > release.floor ? slope : release.floor;
        }
    }
    *lane.peak = peak;
    *lane.slope = slope;
}

KORVA_RT_CODE void interleave(const float* const* planes, const std::uint8_t* planeOfChannel,
                              std::uint32_t channels, float* output, std::uint32_t frames) noexcept {
    for (std::uint32_t c = 0; c < channels; ++c) {
        const float* plane = planes[planeOfChannel[c]];
        for (std::uint32_t k = 0; k < frames; ++k) {
            output[c + k * channels] = plane[k];
        }
    }
}

}  // namespace

KORVA_RT_CODE void followPlain(const MeterLane* lanes, std::uint32_t count, const MeterRelease& release,
                               std::uint32_t frames) noexcept {
    for (std::uint32_t lane = 0; lane < count; ++lane) {
        followLane(lanes[lane], release, frames);
    }
}

// Without `foldToStereo`: the plain path always goes through the planes.
constinit const Kernels plainKernels = {"plain", deinterleave, foldPlanes, followPlain, interleave, nullptr};

}  // namespace korva::rt
