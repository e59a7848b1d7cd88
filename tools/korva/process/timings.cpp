#include "korva/process/timings.h"

#include <algorithm>
#include <limits>

namespace korva::tool {

void Timings::add(std::uint64_t durationNs) {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint32_t>::max();
    samples.push_back(static_cast<std::uint32_t>(std::min(durationNs, largest)));
    sum += durationNs;
    longest = std::max(longest, durationNs);
}

std::uint64_t Timings::percentileNs(std::uint32_t percent) {
    if (samples.empty()) {
        return 0;
    }
    const std::uint64_t rank = (samples.size() * percent + 99) / 100;
    const auto wanted = samples.begin() + static_cast<std::ptrdiff_t>(std::max<std::uint64_t>(rank, 1) - 1);
    std::ranges::nth_element(samples, wanted);
    return *wanted;
}

}  // namespace korva::tool
