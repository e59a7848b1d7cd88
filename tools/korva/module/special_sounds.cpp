#include "korva/module/special_sounds.h"

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

}  // namespace

std::vector<SpecialSound> specialSounds(unsigned planes, std::size_t frames, std::uint32_t seed) {
    std::mt19937 generator(seed);
    const auto make = [&](const SampleSource& source) { return makeSound(planes, frames, source); };
    const auto all = [&](float value) {
        return make([value](std::size_t, std::size_t frame) { return alternating(value, frame); });
    };
    return {
        {"silence", make([](std::size_t, std::size_t) { return 0.0F; })},
        {"an impulse", make([](std::size_t, std::size_t frame) { return frame == 0 ? 1.0F : 0.0F; })},
        {"full scale", all(1.0F)},
        {"full scale that stands", make([](std::size_t, std::size_t) { return 1.0F; })},
        {"denormals", all(1e-39F)},
        {"the smallest denormals", all(Limits::denorm_min())},
        {"negative zeros", make([](std::size_t, std::size_t) { return -0.0F; })},
        {"a tail that decays to denormals", make([frames](std::size_t, std::size_t frame) {
             const double share = static_cast<double>(frame) / static_cast<double>(frames);
             return alternating(static_cast<float>(std::pow(10.0, -46.0 * share)), frame);
         })},
        {"the largest numbers", all(Limits::max()), true, true},
        {"infinities", all(Limits::infinity()), false, true},
        {"NaNs", make([](std::size_t, std::size_t) { return Limits::quiet_NaN(); }), false, true},
        {"a single NaN",
         make([](std::size_t, std::size_t frame) { return frame == 0 ? Limits::quiet_NaN() : 0.0F; }), false,
         true},
        {"numbers of any kind", make([&](std::size_t, std::size_t) {
             return std::bit_cast<float>(static_cast<std::uint32_t>(generator()));
         }),
         false, true},
    };
}

}  // namespace korva::tool
