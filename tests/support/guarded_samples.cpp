#include "tests/support/guarded_samples.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "tests/support/float_bits.h"

namespace korva::test {
namespace {

constexpr std::size_t lineSamples = 64 / sizeof(float);
constexpr std::size_t guardSamples = 2 * lineSamples;

std::size_t samplesToNextLine(const float* memory) {
    const auto past = reinterpret_cast<std::uintptr_t>(memory) / sizeof(float) % lineSamples;
    return (lineSamples - past) % lineSamples;
}

}  // namespace

const float GuardedSamples::guard = std::bit_cast<float>(std::uint32_t{0xDEADBEEF});

GuardedSamples::GuardedSamples(std::size_t sampleCount, std::size_t misalignment)
    : memory(sampleCount + misalignment + lineSamples + 2 * guardSamples, guard), count(sampleCount) {
    begin = guardSamples + samplesToNextLine(memory.data() + guardSamples) + misalignment;
}

bool GuardedSamples::guardsAreWhole() const {
    const auto isGuard = [](float value) { return bitsOf(value) == bitsOf(guard); };
    const auto first = memory.begin() + static_cast<std::ptrdiff_t>(begin);
    return std::all_of(memory.begin(), first, isGuard) &&
           std::all_of(first + static_cast<std::ptrdiff_t>(count), memory.end(), isGuard);
}

GuardedBus::GuardedBus(std::size_t frames, std::size_t misalignment) {
    planes.reserve(planePointers.size());
    for (std::size_t index = 0; index < planePointers.size(); ++index) {
        planes.emplace_back(frames, (misalignment + index * (misalignment % 3)) % lineSamples);
        planePointers[index] = planes.back().data();
    }
}

bool GuardedBus::guardsAreWhole() const {
    return std::all_of(planes.begin(), planes.end(),
                       [](const auto& plane) { return plane.guardsAreWhole(); });
}

}  // namespace korva::test
