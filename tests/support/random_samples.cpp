#include "tests/support/random_samples.h"

#include <array>
#include <bit>
#include <cstdlib>
#include <iostream>
#include <string>

namespace korva::test {
namespace {

std::uint32_t chooseSeed() {
    const char* given = std::getenv("KORVA_TEST_SEED");
    const std::uint32_t seed =
        given != nullptr ? static_cast<std::uint32_t>(std::stoul(given)) : std::random_device{}();
    std::cout << "KORVA_TEST_SEED=" << seed << '\n' << std::flush;
    return seed;
}

std::uint32_t seedOfRun() {
    static const std::uint32_t seed = chooseSeed();
    return seed;
}

constexpr std::array<std::uint32_t, 14> specialBits = {
    0x00000000, 0x80000000,  // zeros
    0xFFC00000,              // the NaN that the processor itself makes
    0x7F800000, 0xFF800000,  // infinities
    0x00000001, 0x80000001,  // smallest denormals
    0x007FFFFF, 0x807FFFFF,  // largest denormals
    0x00800000, 0x80800000,  // smallest normal numbers
    0x7F7FFFFF, 0xFF7FFFFF,  // largest numbers
    0x3F800000               // 1
};

}  // namespace

RandomSamples::RandomSamples(std::uint32_t stream) : generator(seedOfRun() + stream) {}

std::uint32_t RandomSamples::below(std::uint32_t count) {
    return word() % count;
}

float RandomSamples::sample(Content content) {
    if (content == Content::strangeNaNs && below(6) == 0) {
        return strangeNaN();
    }
    if (content != Content::ordinary && below(3) == 0) {
        return special();
    }
    // 24 bits, so that each value is exact.
    return static_cast<float>(static_cast<std::int32_t>(word() >> 7) - (1 << 24)) /
           static_cast<float>(1 << 24);
}

void RandomSamples::fill(std::span<float> samples, Content content) {
    for (float& value : samples) {
        value = sample(content);
    }
}

float RandomSamples::special() {
    return std::bit_cast<float>(specialBits[below(specialBits.size())]);
}

float RandomSamples::strangeNaN() {
    const std::uint32_t payload = word() & 0x807FFFFF;
    return std::bit_cast<float>(payload | 0x7F800001);
}

}  // namespace korva::test
