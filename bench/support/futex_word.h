// The least that tells another process of something.
#pragma once

#include <atomic>
#include <cstdint>

namespace korva::bench {

/// A count that stands in memory which processes share, and what they sleep on.  [any]
class FutexWord {
public:
    [[nodiscard]] std::uint32_t count() const noexcept { return word.load(std::memory_order_acquire); }

    /// Counts one up and wakes who sleeps.
    void raise() noexcept;

    /// Sleeps at once while the count is `seen`. False if it still is after so many seconds.  [blocks]
    [[nodiscard]] bool waitWhile(std::uint32_t seen, std::int64_t limitSeconds) const noexcept;

private:
    std::atomic<std::uint32_t> word{0};
};

}  // namespace korva::bench
