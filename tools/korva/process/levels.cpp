#include "korva/process/levels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace korva::tool {
namespace {

rt::EngineFormat layoutOf(const SoundFormat& format) noexcept {
    rt::EngineFormat layout;
    layout.Assign(format.sampleRate, static_cast<std::int32_t>(format.channels), format.mask);
    return layout;
}

/// One frame on the planes, as bits: a NaN is the same as itself.
using Frame = std::array<std::uint32_t, rt::planeCount>;

Frame onPlanes(const rt::EngineFormat& layout, std::span<const float> frame) noexcept {
    Frame planes{};
    for (std::size_t channel = 0; channel < frame.size(); ++channel) {
        planes[layout.planeOfChannel[channel]] = std::bit_cast<std::uint32_t>(frame[channel]);
    }
    return planes;
}

bool isOnPlanes(const rt::EngineFormat& layout, const Frame& planes, std::span<const float> frame) noexcept {
    for (std::size_t channel = 0; channel < frame.size(); ++channel) {
        if (planes[layout.planeOfChannel[channel]] != std::bit_cast<std::uint32_t>(frame[channel])) {
            return false;
        }
    }
    return true;
}

}  // namespace

HighestLevels::HighestLevels(const SoundFormat& format) noexcept : layout(layoutOf(format)) {}

void HighestLevels::follow(std::span<const float> samples) noexcept {
    const auto channels = static_cast<std::size_t>(layout.channelCount);
    for (std::size_t at = 0; at < samples.size(); ++at) {
        float& level = highest[layout.planeOfChannel[at % channels]];
        level = std::max(level, std::fabs(samples[at]));  // the first of the two where the other is no number
    }
}

bool isCarriedOver(const SoundFormat& in, std::span<const float> input, const SoundFormat& out,
                   std::span<const float> output) {
    const rt::EngineFormat from = layoutOf(in);
    const rt::EngineFormat to = layoutOf(out);
    const std::size_t frames = input.size() / in.channels;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const Frame planes = onPlanes(from, input.subspan(frame * in.channels, in.channels));
        if (!isOnPlanes(to, planes, output.subspan(frame * out.channels, out.channels))) {
            return false;
        }
    }
    return true;
}

}  // namespace korva::tool
