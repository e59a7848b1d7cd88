// A measure that an interruption doesn't spoil.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace korva::bench {

/// The median of what so many calls of `measure` give. Where a thread is interrupted by another program, one
/// call takes as long as thousands: their mean would tell of that program.
template <class Measure>
double medianOf(std::size_t count, const Measure& measure) {
    std::vector<double> results(count);
    for (double& result : results) {
        result = measure();
    }
    const auto middle = results.begin() + static_cast<std::ptrdiff_t>(count / 2);
    std::nth_element(results.begin(), middle, results.end());
    return *middle;
}

}  // namespace korva::bench
