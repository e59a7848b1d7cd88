#include "korva/process/pace.h"

#include "korva/interruption.h"

namespace korva::tool {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

Pace::Pace(std::uint32_t sampleRate) noexcept : rate(sampleRate) {}

void Pace::waitFor(std::uint64_t frames) const {
    // Whole seconds apart, so that the product fits for any length.
    const auto due = start + std::chrono::seconds(frames / rate) +
                     std::chrono::nanoseconds(frames % rate * 1'000'000'000 / rate);
    const auto left = std::chrono::ceil<milliseconds>(due - steady_clock::now());
    if (left > milliseconds::zero()) {
        pauseFor(static_cast<int>(left.count()));
    }
}

}  // namespace korva::tool
