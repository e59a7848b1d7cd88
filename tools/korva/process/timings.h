// How long the processing calls took.
#pragma once

#include <cstdint>
#include <vector>

namespace korva::tool {

/// Collects the duration of each call, in 4 bytes: calls over 4.29 s count as that long in the middle values,
/// not in the maximum and the sum.
class Timings {
public:
    void add(std::uint64_t durationNs);

    [[nodiscard]] std::uint64_t count() const { return samples.size(); }
    [[nodiscard]] std::uint64_t totalNs() const { return sum; }
    [[nodiscard]] std::uint64_t maximumNs() const { return longest; }
    /// The shortest duration that `percent` (1 to 100) of the calls don't exceed; 0 without calls. Reorders
    /// the samples.
    [[nodiscard]] std::uint64_t percentileNs(std::uint32_t percent);

private:
    std::vector<std::uint32_t> samples;
    std::uint64_t sum = 0;
    std::uint64_t longest = 0;
};

}  // namespace korva::tool
