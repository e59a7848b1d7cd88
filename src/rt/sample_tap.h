// An optional ring that gets a copy of a stream's samples, for a reader on another thread.
#pragma once

#include <atomic>
#include <cstdint>

namespace korva::rt {

/// A ring of samples, owned by whoever attached it. Null `samples`: there is none.
struct SampleTap {
    float* samples = nullptr;
    std::atomic<std::int32_t>* writeIndex = nullptr;  ///< Next sample to write, 0 to capacity - 1.
    std::int32_t capacity = 0;                        ///< Samples in the ring.
};

/// Writes `count` samples from the ring's index on, wrapping; zeros where `source` is null. The index is
/// published after the samples, so a reader that acquires it sees them. Nothing without a ring.  [audio, rt]
void writeTap(const SampleTap& tap, const float* source, std::uint64_t count) noexcept;

}  // namespace korva::rt
