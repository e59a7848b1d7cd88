// Sample memory at any alignment, between guard words that show a write past either end.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "rt/speakers.h"

namespace korva::test {

/// `count` samples that begin `misalignment` samples after a cache line's start. They are first filled with
/// the guard word, which no test uses as a sample, so that it also shows which samples were never written.
class GuardedSamples {
public:
    explicit GuardedSamples(std::size_t count, std::size_t misalignment = 0);

    [[nodiscard]] std::span<float> samples() { return {memory.data() + begin, count}; }
    [[nodiscard]] std::span<const float> samples() const { return {memory.data() + begin, count}; }
    [[nodiscard]] float* data() { return memory.data() + begin; }

    /// Whether nothing was written before or after the samples.
    [[nodiscard]] bool guardsAreWhole() const;

    static const float guard;

private:
    std::vector<float> memory;
    std::size_t begin = 0;
    std::size_t count;
};

/// Eight planes, each with guards of its own and another misalignment than its neighbours.
class GuardedBus {
public:
    GuardedBus(std::size_t frames, std::size_t misalignment);

    [[nodiscard]] float* const* pointers() const { return planePointers.data(); }
    [[nodiscard]] std::span<float> plane(std::size_t index) { return planes[index].samples(); }
    [[nodiscard]] std::span<const float> plane(std::size_t index) const { return planes[index].samples(); }
    [[nodiscard]] bool guardsAreWhole() const;

private:
    std::vector<GuardedSamples> planes;
    std::array<float*, rt::planeCount> planePointers{};
};

}  // namespace korva::test
