#include "framework/spin.h"

#include <algorithm>
#include <chrono>

#include "platform/processor_count.h"

namespace korva::framework {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::microseconds spinTime{50};
constexpr int looksBetweenClocks = 32;
constexpr int greatestPenalty = 16;

// Lets the core's other thread run, and keeps the loop from filling the core with loads.
void pause() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

bool hasCompany() noexcept {
    static const bool several = platform::processorCount() > 1;
    return several;
}

}  // namespace

bool AdaptiveSpin::isWorthwhile() noexcept {
    const std::uint8_t left = leftOut.load(std::memory_order_relaxed);
    if (left != 0) {
        leftOut.store(static_cast<std::uint8_t>(left - 1), std::memory_order_relaxed);
        return false;
    }
    return hasCompany();
}

bool AdaptiveSpin::spin(Look isReady, const void* ready) noexcept {
    const Clock::time_point end = Clock::now() + spinTime;
    do {
        for (int i = 0; i < looksBetweenClocks; ++i) {
            if (isReady(ready)) {
                penalty.store(0, std::memory_order_relaxed);
                return true;
            }
            pause();
        }
    } while (Clock::now() < end);
    const int former = penalty.load(std::memory_order_relaxed);
    const auto next = static_cast<std::uint8_t>(std::clamp(2 * former, 1, greatestPenalty));
    penalty.store(next, std::memory_order_relaxed);
    leftOut.store(next, std::memory_order_relaxed);
    return false;
}

}  // namespace korva::framework
