#include "korva/module/check/special_sounds.h"

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace korva::tool {
namespace {

using Limits = std::numeric_limits<float>;

float alternating(float value, std::size_t frame) {
    return frame % 2 == 0 ? value : -value;
}

SampleSource steady(float value) {
    return [value](std::size_t, std::size_t) { return value; };
}
SampleSource alternately(float value) {
    return [value](std::size_t, std::size_t frame) { return alternating(value, frame); };
}
SampleSource atFirst(float value) {
    return [value](std::size_t, std::size_t frame) { return frame == 0 ? value : 0.0F; };
}

/// Down to the smallest denormals, and past them to zeros.
SampleSource decaying(std::size_t frames) {
    return [frames](std::size_t, std::size_t frame) {
        const double share = static_cast<double>(frame) / static_cast<double>(frames);
        return alternating(static_cast<float>(std::pow(10.0, -46.0 * share)), frame);
    };
}

SampleSource anyBits(std::uint32_t seed) {
    return [generator = std::mt19937(seed)](std::size_t, std::size_t) mutable {
        return std::bit_cast<float>(static_cast<std::uint32_t>(generator()));
    };
}

}  // namespace

std::vector<SpecialSound> specialSounds(unsigned planes, std::size_t frames, std::uint32_t seed) {
    const auto make = [&](const SampleSource& source) { return makeSound(planes, frames, source); };
    return {
        {"silence", make(steady(0.0F)), true},
        {"negative zeros", make(steady(-0.0F)), true},
        {"an impulse", make(atFirst(1.0F)), true},
        {"full scale", make(alternately(1.0F)), true},
        {"full scale that stands", make(steady(1.0F)), true},
        {"denormals", make(alternately(1e-39F)), true},
        {"the smallest denormals", make(alternately(Limits::denorm_min())), true},
        {"a tail that decays to denormals", make(decaying(frames)), true},
        {"the largest numbers", make(alternately(Limits::max())), false},
        {"infinities", make(alternately(Limits::infinity())), false},
        {"NaNs", make(steady(Limits::quiet_NaN())), false},
        {"a single NaN", make(atFirst(Limits::quiet_NaN())), false},
        {"numbers of any kind", make(anyBits(seed)), false},
    };
}

}  // namespace korva::tool
