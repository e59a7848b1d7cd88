#include "rt/sample_tap.h"

#include <algorithm>

#include "rt/realtime.h"

namespace korva::rt {

KORVA_RT_CODE void writeTap(const SampleTap& tap, const float* source, std::uint64_t count) noexcept {
    if (tap.samples == nullptr || tap.writeIndex == nullptr || tap.capacity <= 0) {
        return;
    }
    const auto capacity = static_cast<std::uint64_t>(tap.capacity);
    // Only the audio thread moves the index, so it reads its own last word; a foreign word is wrapped.
    std::uint64_t index =
        static_cast<std::uint32_t>(tap.writeIndex->load(std::memory_order_relaxed)) % capacity;
    while (count != 0) {
        const std::uint64_t run = std::min(count, capacity - index);
        if (source != nullptr) {
            std::copy_n(source, run, tap.samples + index);
            source += run;
        } else {
            std::fill_n(tap.samples + index, run, 0.0f);
        }
        index = (index + run) % capacity;
        count -= run;
    }
    // Releases the samples to a reader that acquires the index.
    tap.writeIndex->exchange(static_cast<std::int32_t>(index), std::memory_order_release);
}

}  // namespace korva::rt
