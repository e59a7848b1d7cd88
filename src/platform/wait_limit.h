// A limit of a wait, which the system's calls take in pieces.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>

namespace korva::platform {

/// No limit.
inline constexpr std::int64_t waitForever = std::numeric_limits<std::int64_t>::max();

/// The time that is left of a limit in milliseconds, which begins to pass when this is made. No clock that
/// somebody may set has a part in it.
class WaitLimit {
public:
    /// `waitForever` never passes; nothing is left of a `limitMs` of 0 or less.
    explicit WaitLimit(std::int64_t limitMs) noexcept
        : limit(std::max<std::int64_t>(limitMs, 0)),
          begin(limit == waitForever ? Clock::time_point() : Clock::now()) {}

    [[nodiscard]] bool hasPassed() const noexcept { return leftMs() == 0; }

    /// Milliseconds to wait next: what is left, at most `longestMs`.
    [[nodiscard]] std::int64_t sliceMs(std::int64_t longestMs) const noexcept {
        return std::min(leftMs(), longestMs);
    }

private:
    using Clock = std::chrono::steady_clock;

    /// Whole milliseconds that have passed are taken off, so a wait never ends early.
    [[nodiscard]] std::int64_t leftMs() const noexcept {
        if (limit == waitForever) {
            return waitForever;
        }
        const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
        return std::max<std::int64_t>(limit - passed.count(), 0);
    }

    std::int64_t limit;
    Clock::time_point begin;
};

}  // namespace korva::platform
