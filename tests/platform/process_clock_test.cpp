#include "platform/process_clock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <ctime>
#include <mutex>
#include <thread>
#include <vector>

namespace korva::platform {
namespace {

using Steady = std::chrono::steady_clock;

const Steady::time_point programBegan = Steady::now();

/// What one reading of a clock may be late or early by: a tick of the slowest clock in use.
constexpr std::int64_t tickMs = 16;

std::int64_t nowMs() {
    return static_cast<std::int64_t>(processClockMs());
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

TEST(ProcessClock, RunsOnWhileTheProcessWaitsWithoutUsingTheProcessor) {
    const std::int64_t before = nowMs();

    waitFor(std::chrono::milliseconds(120));

    EXPECT_GE(nowMs() - before, 120 - tickMs);
}

TEST(ProcessClock, RunsAsFastAsTheSteadyClock) {
    const auto outerBegin = Steady::now();
    const std::int64_t before = nowMs();
    const auto innerBegin = Steady::now();

    waitFor(std::chrono::milliseconds(100));

    const std::int64_t inner = msSince(innerBegin);
    const std::int64_t elapsed = nowMs() - before;
    const std::int64_t outer = msSince(outerBegin);
    EXPECT_GE(elapsed, inner - tickMs);
    EXPECT_LE(elapsed, outer + tickMs);
}

TEST(ProcessClock, CountsFromTheStartOfTheProcess) {
    const std::int64_t sinceProgram = msSince(programBegan);
    const std::int64_t now = nowMs();

    EXPECT_GE(now, sinceProgram - tickMs);
    // Loading a program takes a while on a busy machine, but no minute; a system runs for longer.
    EXPECT_LE(now, msSince(programBegan) + 60'000);
}

TEST(ProcessClock, IsNeverBehindTheProcessorTimeUsed) {
    const auto usedMs = [] { return static_cast<std::int64_t>(std::clock()) * 1000 / CLOCKS_PER_SEC; };
    const std::int64_t before = usedMs();
    while (usedMs() - before < 50) {
    }
    const std::int64_t used = usedMs();

    EXPECT_GE(nowMs(), used - tickMs);
    EXPECT_GE(nowMs(), 50 - tickMs);
}

TEST(ProcessClock, NeverRunsBackwards) {
    std::int64_t last = nowMs();
    const auto begin = Steady::now();

    while (msSince(begin) < 50) {
        const std::int64_t now = nowMs();
        ASSERT_GE(now, last);
        last = now;
    }
}

TEST(ProcessClock, GivesEveryThreadTheSameTime) {
    std::vector<std::int64_t> times(4);
    std::vector<std::thread> threads;
    threads.reserve(times.size());
    const std::int64_t before = nowMs();
    for (std::int64_t& time : times) {
        threads.emplace_back([&time] { time = nowMs(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::int64_t after = nowMs();

    EXPECT_GE(*std::min_element(times.begin(), times.end()), before);
    EXPECT_LE(*std::max_element(times.begin(), times.end()), after);
}

}  // namespace
}  // namespace korva::platform
