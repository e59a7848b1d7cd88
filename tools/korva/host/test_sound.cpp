#include "korva/host/test_sound.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace korva::tool {
namespace {

float sineAt(const SoundFormat& format, std::uint64_t frame, std::uint32_t channel) {
    constexpr double lowest = 110.0;
    const double turns = lowest * (channel + 1) * static_cast<double>(frame) / format.sampleRate;
    return static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * turns));
}

}  // namespace

void fillWith(TestSound sound, const SoundFormat& format, std::uint64_t firstFrame,
              std::span<float> samples) {
    for (std::size_t at = 0; at < samples.size(); ++at) {
        const std::uint64_t frame = firstFrame + at / format.channels;
        const auto channel = static_cast<std::uint32_t>(at % format.channels);
        samples[at] = sound == TestSound::sine ? sineAt(format, frame, channel) : (frame == 0 ? 1.0F : 0.0F);
    }
}

void raiseLevels(std::vector<float>& levels, std::span<const float> samples) {
    for (std::size_t at = 0; at < samples.size(); ++at) {
        float& level = levels[at % levels.size()];
        level = std::max(level, std::fabs(samples[at]));
    }
}

}  // namespace korva::tool
