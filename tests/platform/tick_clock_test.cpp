#include "platform/tick_clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>

#include "tests/support/conversation.h"

namespace korva::platform {
namespace {

using Steady = std::chrono::steady_clock;

/// What one reading may be late or early by: a tick of the slowest clock in use.
constexpr std::int32_t tickMs = 16;

/// Over the point where the clock begins anew, too.
std::int32_t msFrom(std::uint32_t begin, std::uint32_t end) {
    return static_cast<std::int32_t>(end - begin);
}

std::int64_t msSince(Steady::time_point begin) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Steady::now() - begin).count();
}

/// Lets time pass without using the processor.
void waitFor(std::chrono::milliseconds time) {
    std::mutex mutex;
    std::condition_variable neverNotified;
    std::unique_lock lock(mutex);
    neverNotified.wait_until(lock, Steady::now() + time, [] { return false; });
}

TEST(TickClock, RunsAsFastAsTheSteadyClock) {
    const auto outerBegin = Steady::now();
    const std::uint32_t before = tickClockMs();
    const auto innerBegin = Steady::now();

    waitFor(std::chrono::milliseconds(100));

    const std::int64_t inner = msSince(innerBegin);
    const std::int32_t elapsed = msFrom(before, tickClockMs());
    const std::int64_t outer = msSince(outerBegin);
    EXPECT_GE(elapsed, inner - tickMs);
    EXPECT_LE(elapsed, outer + tickMs);
}

TEST(TickClock, NeverRunsBackwards) {
    const auto begin = Steady::now();
    std::uint32_t last = tickClockMs();
    while (msSince(begin) < 50) {
        const std::uint32_t now = tickClockMs();
        ASSERT_GE(msFrom(last, now), 0);
        last = now;
    }
}

TEST(TickClock, IsTheSameInAllProcesses) {
    test::Conversation other(KORVA_SERVICE_COMPANION);
    for (int i = 0; i < 5; ++i) {
        const std::uint32_t before = tickClockMs();
        const auto theirs = static_cast<std::uint32_t>(std::stoul(other.ask("tick")));
        const std::uint32_t after = tickClockMs();
        // The system may count for each process from when it last looked.
        EXPECT_GE(msFrom(before, theirs), -tickMs);
        EXPECT_GE(msFrom(theirs, after), -tickMs);
    }
}

}  // namespace
}  // namespace korva::platform
