// The loops between interleaved samples and planes, for any vector.
#pragma once

#include "rt/kernels/quad.h"
#include "rt/speakers.h"

namespace korva::rt {
namespace {

/// Channels `first` to `first + count` of as many frames as a vector has floats, from frame `at` on.
template <class V, std::uint32_t channels, std::uint32_t first, int count>
KORVA_INLINE void deinterleaveVector(const float* frame, float* const* planes, std::uint32_t at) {
    if constexpr (channels == 1) {
        V::store(planes[0] + at, V::load(frame));
    } else if constexpr (channels == 2) {
        V left = V::load(frame);
        V right = V::load(frame + V::width);
        V::unzip(left, right);
        V::store(planes[0] + at, left);
        V::store(planes[1] + at, right);
    } else {
        // Quad i of row r is frame 4i + r, so transposing the quads gives each channel's frames in order.
        V rows[4];
        for (std::uint32_t r = 0; r < 4; ++r) {
            rows[r] = V::template loadQuads<count>(frame + r * channels + first, std::size_t{4} * channels);
        }
        V::transpose(rows[0], rows[1], rows[2], rows[3]);
        for (std::uint32_t c = 0; c < count; ++c) {
            V::store(planes[first + c] + at, rows[c]);
        }
    }
}

/// One pass over the input for at most four channels, so that the planes' addresses stay in registers.
template <class V, std::uint32_t channels, std::uint32_t first, std::uint32_t count>
KORVA_INLINE void deinterleavePass(const float* input, float* const* planes, std::uint32_t frames) {
    std::uint32_t k = 0;
    for (; frames - k >= V::width; k += V::width) {
        deinterleaveVector<V, channels, first, count>(input + std::size_t{k} * channels, planes, k);
    }
    for (; k < frames; ++k) {
        for (std::uint32_t c = first; c < first + count; ++c) {
            planes[c][k] = input[std::size_t{k} * channels + c];
        }
    }
}

/// Channels in rising order: of two on one plane the later one stands.
template <class V, std::uint32_t channels>
KORVA_INLINE void deinterleaveChannels(const float* input, float* const* planes, std::uint32_t frames) {
    if constexpr (channels <= 4) {
        deinterleavePass<V, channels, 0, channels>(input, planes, frames);
    } else {
        deinterleavePass<V, channels, 0, 4>(input, planes, frames);
        deinterleavePass<V, channels, 4, channels - 4>(input, planes, frames);
    }
}

template <class V>
KORVA_INLINE void silence(float* plane, std::uint32_t frames) {
    std::uint32_t k = 0;
    for (; frames - k >= V::width; k += V::width) {
        V::store(plane + k, V::zero());
    }
    for (; k < frames; ++k) {
        plane[k] = 0.0f;
    }
}

template <class V>
KORVA_INLINE void copy(const float* from, float* to, std::uint32_t frames) {
    std::uint32_t k = 0;
    for (; frames - k >= V::width; k += V::width) {
        V::store(to + k, V::load(from + k));
    }
    for (; k < frames; ++k) {
        to[k] = from[k];
    }
}

template <class V>
KORVA_INLINE void deinterleaveBus(const float* input, std::uint32_t channels, float* const* planeOf,
                                  std::uint32_t frames) {
    switch (channels) {
        case 1:
            return deinterleaveChannels<V, 1>(input, planeOf, frames);
        case 2:
            return deinterleaveChannels<V, 2>(input, planeOf, frames);
        case 3:
            return deinterleaveChannels<V, 3>(input, planeOf, frames);
        case 4:
            return deinterleaveChannels<V, 4>(input, planeOf, frames);
        case 5:
            return deinterleaveChannels<V, 5>(input, planeOf, frames);
        case 6:
            return deinterleaveChannels<V, 6>(input, planeOf, frames);
        case 7:
            return deinterleaveChannels<V, 7>(input, planeOf, frames);
        default:
            return deinterleaveChannels<V, 8>(input, planeOf, frames);
    }
}

/// `Kernels::deinterleave`.
template <class V>
KORVA_INLINE void deinterleaveWith(const float* input, std::uint32_t channels,
                                   const std::uint8_t* planeOfChannel, float* const* wet, float* const* dry,
                                   std::uint32_t frames) {
    float* planeOf[planeCount];
    std::uint32_t written = 0;
    for (std::uint32_t c = 0; input != nullptr && c < channels; ++c) {
        planeOf[c] = wet[planeOfChannel[c]];
        written |= 1u << planeOfChannel[c];
    }
    if (written != 0) {
        deinterleaveBus<V>(input, channels, planeOf, frames);
    }
    // Only what no channel fills is zeroed: half the stores for a full bus, and the same result. The dry bus
    // is copied plane by plane: few streams of stores, and it leaves the wet planes in the first-level cache
    // for what comes next.
    for (std::uint32_t plane = 0; plane < planeCount; ++plane) {
        const bool filled = (written & (1u << plane)) != 0;
        if (!filled) {
            silence<V>(wet[plane], frames);
        }
        if (dry != nullptr) {
            filled ? copy<V>(wet[plane], dry[plane], frames) : silence<V>(dry[plane], frames);
        }
    }
}

/// Channels `first` to `first + count` of as many frames as a vector has floats.
template <class V, std::uint32_t channels, std::uint32_t first, int count>
KORVA_INLINE void interleaveGroup(const float* const* planes, float* frame, std::uint32_t at) {
    V rows[4];
    for (std::uint32_t c = 0; c < 4; ++c) {
        rows[c] = c < count ? V::load(planes[first + c] + at) : V::zero();
    }
    V::transpose(rows[0], rows[1], rows[2], rows[3]);
    for (std::uint32_t r = 0; r < 4; ++r) {
        V::template storeQuads<count>(frame + r * channels + first, std::size_t{4} * channels, rows[r]);
    }
}

template <class V, std::uint32_t channels>
KORVA_INLINE void interleaveVector(const float* const* planes, float* frame, std::uint32_t at) {
    if constexpr (channels == 1) {
        V::store(frame, V::load(planes[0] + at));
    } else if constexpr (channels == 2) {
        V low = V::load(planes[0] + at);
        V high = V::load(planes[1] + at);
        V::zip(low, high);
        V::store(frame, low);
        V::store(frame + V::width, high);
    } else if constexpr (channels <= 4) {
        interleaveGroup<V, channels, 0, channels>(planes, frame, at);
    } else {
        interleaveGroup<V, channels, 0, 4>(planes, frame, at);
        interleaveGroup<V, channels, 4, channels - 4>(planes, frame, at);
    }
}

template <class V, std::uint32_t channels>
KORVA_INLINE void interleaveChannels(const float* const* planes, float* output, std::uint32_t frames) {
    std::uint32_t k = 0;
    for (; frames - k >= V::width; k += V::width) {
        interleaveVector<V, channels>(planes, output + std::size_t{k} * channels, k);
    }
    for (; k < frames; ++k) {
        for (std::uint32_t c = 0; c < channels; ++c) {
            output[std::size_t{k} * channels + c] = planes[c][k];
        }
    }
}

/// `Kernels::interleave`.
template <class V>
KORVA_INLINE void interleaveWith(const float* const* planes, const std::uint8_t* planeOfChannel,
                                 std::uint32_t channels, float* output, std::uint32_t frames) {
    const float* planeOf[planeCount];
    for (std::uint32_t c = 0; c < channels; ++c) {
        planeOf[c] = planes[planeOfChannel[c]];
    }
    switch (channels) {
        case 0:
            return;
        case 1:
            return interleaveChannels<V, 1>(planeOf, output, frames);
        case 2:
            return interleaveChannels<V, 2>(planeOf, output, frames);
        case 3:
            return interleaveChannels<V, 3>(planeOf, output, frames);
        case 4:
            return interleaveChannels<V, 4>(planeOf, output, frames);
        case 5:
            return interleaveChannels<V, 5>(planeOf, output, frames);
        case 6:
            return interleaveChannels<V, 6>(planeOf, output, frames);
        case 7:
            return interleaveChannels<V, 7>(planeOf, output, frames);
        default:
            return interleaveChannels<V, 8>(planeOf, output, frames);
    }
}

}  // namespace
}  // namespace korva::rt
