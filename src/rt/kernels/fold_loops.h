// The fold of planes, and the fold to stereo without them, for any vector.
#pragma once

#include "rt/fold_plan.h"
#include "rt/fold_rows.h"
#include "rt/kernels/quad.h"

namespace korva::rt {
namespace {

/// Adds all sources to one destination in one pass: its plane is loaded and stored once.
template <class V, std::uint32_t sourceCount>
KORVA_INLINE void addSources(float* const* planes, const FoldPlan::Destination& destination,
                             std::uint32_t frames) {
    float* const target = planes[destination.plane];
    const float* sources[sourceCount];
    V coefficients[sourceCount];
    for (std::uint32_t s = 0; s < sourceCount; ++s) {
        sources[s] = planes[destination.sources[s].plane];
        coefficients[s] = V::all(destination.sources[s].coefficient);
    }
    std::uint32_t k = 0;
    for (; frames - k >= V::width; k += V::width) {
        V sum = V::load(target + k);
        for (std::uint32_t s = 0; s < sourceCount; ++s) {
            sum = V::add(sum, V::mul(V::load(sources[s] + k), coefficients[s]));
        }
        V::store(target + k, sum);
    }
    for (; k < frames; ++k) {
        float sum = target[k];
        for (std::uint32_t s = 0; s < sourceCount; ++s) {
            sum += sources[s][k] * destination.sources[s].coefficient;
        }
        target[k] = sum;
    }
}

/// `Kernels::fold`.
template <class V>
KORVA_INLINE void foldWith(float* const* planes, std::uint32_t inMask, std::uint32_t outMask,
                           std::uint32_t frames) {
    FoldPlan plan;
    makeFoldPlan(inMask, outMask, plan);
    for (std::uint32_t d = 0; d < plan.destinationCount; ++d) {
        const FoldPlan::Destination& destination = plan.destinations[d];
        switch (destination.sourceCount) {
            case 1:
                addSources<V, 1>(planes, destination, frames);
                break;
            case 2:
                addSources<V, 2>(planes, destination, frames);
                break;
            case 3:
                addSources<V, 3>(planes, destination, frames);
                break;
            case 4:
                addSources<V, 4>(planes, destination, frames);
                break;
            case 5:
                addSources<V, 5>(planes, destination, frames);
                break;
            case 6:
                addSources<V, 6>(planes, destination, frames);
                break;
            default:
                addSources<V, 7>(planes, destination, frames);
                break;
        }
    }
}

/// One frame to stereo. The order of the sum is the fold's: own, side, back, centre, low frequency.
template <std::uint32_t channels>
KORVA_INLINE void foldFrame(const float* frame, float* out) {
    float sums[2] = {frame[0], frame[1]};
    for (std::uint32_t side = 0; side < 2; ++side) {
        float& sum = sums[side];
        if constexpr (channels == 8) {
            sum += frame[6 + side] * foldTo::minus3dB;
        }
        if constexpr (channels >= 6) {
            sum += frame[4 + side] * foldTo::minus3dB;
            sum += frame[2] * foldTo::minus6dB;
            sum += frame[3] * foldTo::minus6dB;
        }
        if constexpr (channels < 8) {
            sum += 0.0f;
        }
    }
    out[0] = sums[0];
    out[1] = sums[1];
}

/// Half as many frames as a vector has floats. Channels of a pair stay together, so the sum comes out as
/// interleaved stereo.
template <class V, std::uint32_t channels>
KORVA_INLINE void foldVector(const float* frame, float* out) {
    const V minus3dB = V::all(foldTo::minus3dB);
    V sum = V::load(frame);
    V middle = V::zero();
    if constexpr (channels == 6) {
        V rear = V::load(frame + 2 * V::width);
        middle = V::load(frame + V::width);
        V::unzipPairs(sum, middle, rear);
        sum = V::add(sum, V::mul(rear, minus3dB));
    } else if constexpr (channels == 8) {
        // Quad i holds frame 2i or 2i + 1; taking pairs of both restores the order.
        const V even = V::template loadQuads<4>(frame, 2 * channels);
        const V odd = V::template loadQuads<4>(frame + channels, 2 * channels);
        const V evenRear = V::template loadQuads<4>(frame + 4, 2 * channels);
        const V oddRear = V::template loadQuads<4>(frame + channels + 4, 2 * channels);
        middle = V::secondPairs(even, odd);
        sum = V::firstPairs(even, odd);
        sum = V::add(sum, V::mul(V::secondPairs(evenRear, oddRear), minus3dB));
        sum = V::add(sum, V::mul(V::firstPairs(evenRear, oddRear), minus3dB));
    }
    if constexpr (channels >= 6) {
        middle = V::mul(middle, V::all(foldTo::minus6dB));
        sum = V::add(sum, V::firstTwice(middle));
        sum = V::add(sum, V::secondTwice(middle));
    }
    if constexpr (channels < 8) {
        // Planes that no channel fills are folded too, as +0: all that it changes is a sum of -0.
        sum = V::add(sum, V::zero());
    }
    V::store(out, sum);
}

template <class V, std::uint32_t channels>
KORVA_INLINE void foldFrames(const float* input, float* output, std::uint32_t frames) {
    constexpr std::uint32_t step = V::width / 2;
    std::uint32_t k = 0;
    for (; frames - k >= step; k += step) {
        foldVector<V, channels>(input + std::size_t{k} * channels, output + std::size_t{k} * 2);
    }
    for (; k < frames; ++k) {
        foldFrame<channels>(input + std::size_t{k} * channels, output + std::size_t{k} * 2);
    }
}

/// `Kernels::foldToStereo`.
template <class V>
KORVA_INLINE void foldToStereoWith(const float* input, std::uint32_t channels, float* output,
                                   std::uint32_t frames) {
    switch (channels) {
        case 2:
            return foldFrames<V, 2>(input, output, frames);
        case 6:
            return foldFrames<V, 6>(input, output, frames);
        default:
            return foldFrames<V, 8>(input, output, frames);
    }
}

}  // namespace
}  // namespace korva::rt
