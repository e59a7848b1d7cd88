#include "tests/support/reference_kernels.h"

#include <array>
#include <cmath>
#include <cstddef>

#include "rt/speakers.h"
#include "tests/support/reference_fold.h"

namespace korva::test {
namespace {

using rt::planeCount;

void deinterleave(const float* input, std::uint32_t channels, const std::uint8_t* planeOfChannel,
                  float* const* wet, float* const* dry, std::uint32_t frames) noexcept {
    for (std::uint32_t k = 0; k < frames; ++k) {
        std::array<float, planeCount> frame{};
        for (std::uint32_t c = 0; c < channels && input != nullptr; ++c) {
            frame[planeOfChannel[c]] = input[std::size_t{k} * channels + c];
        }
        for (std::size_t plane = 0; plane < planeCount; ++plane) {
            wet[plane][k] = frame[plane];
            if (dry != nullptr) {
                dry[plane][k] = frame[plane];
            }
        }
    }
}

void fold(float* const* planes, std::uint32_t inMask, std::uint32_t outMask, std::uint32_t frames) noexcept {
    foldByRows(planes, inMask, outMask, frames);
}

void followOne(const rt::MeterLane& lane, const rt::MeterRelease& release, float sample) {
    const float level = std::fabs(sample);
    *lane.peak -= *lane.slope;
    *lane.slope *= release.growth;
    if (!(*lane.peak > 0.0f)) {
        *lane.peak = 0.0f;
    }
    if (level > *lane.peak) {
        *lane.peak = level;
        *lane.slope = release.floor;
    } else if (!(*lane.slope > release.floor)) {
        *lane.slope = release.floor;
    }
}

void follow(const rt::MeterLane* lanes, std::uint32_t count, const rt::MeterRelease& release,
            std::uint32_t frames) noexcept {
    for (std::uint32_t k = 0; k < frames; ++k) {
        for (std::uint32_t lane = 0; lane < count; ++lane) {
            followOne(lanes[lane], release, lanes[lane].samples[k]);
        }
    }
}

void interleave(const float* const* planes, const std::uint8_t* planeOfChannel, std::uint32_t channels,
                float* output, std::uint32_t frames) noexcept {
    for (std::uint32_t k = 0; k < frames; ++k) {
        for (std::uint32_t c = 0; c < channels; ++c) {
            output[std::size_t{k} * channels + c] = planes[planeOfChannel[c]][k];
        }
    }
}

}  // namespace

// Without `foldToStereo`, as the loops that define the sound: it stands for three of the others.
const rt::Kernels referenceKernels = {"reference", deinterleave, fold, follow, interleave, nullptr};

}  // namespace korva::test
