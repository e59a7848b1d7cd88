#include "platform/wait_limit.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>

namespace korva::platform {
namespace {

constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();

TEST(WaitLimit, HasPassedAtOnceIfItIsZeroOrLess) {
    for (const std::int64_t limitMs : {std::int64_t{0}, std::int64_t{-1}, lowest}) {
        const WaitLimit limit(limitMs);
        EXPECT_TRUE(limit.hasPassed());
        EXPECT_EQ(limit.sliceMs(1000), 0);
    }
}

TEST(WaitLimit, IsCutIntoSlicesNoLongerThanAsked) {
    const WaitLimit limit(1'000'000);
    EXPECT_EQ(limit.sliceMs(10), 10);
    EXPECT_GT(limit.sliceMs(2'000'000), 10);
    EXPECT_LE(limit.sliceMs(2'000'000), 1'000'000);
    EXPECT_FALSE(limit.hasPassed());
}

TEST(WaitLimit, TakesTheLargestNumbers) {
    const WaitLimit limit(waitForever - 1);
    EXPECT_EQ(limit.sliceMs(4'000'000'000), 4'000'000'000);
    EXPECT_LT(limit.sliceMs(waitForever), waitForever);
    EXPECT_FALSE(limit.hasPassed());
}

TEST(WaitLimit, NeverPassesIfItIsForEver) {
    const WaitLimit limit(waitForever);
    EXPECT_EQ(limit.sliceMs(waitForever), waitForever);
    EXPECT_FALSE(limit.hasPassed());
}

TEST(WaitLimit, PassesAfterItsTimeAndNotBefore) {
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    const WaitLimit limit(30);

    std::int64_t left = 30;
    while (!limit.hasPassed()) {
        const std::int64_t now = limit.sliceMs(30);
        ASSERT_LE(now, left);
        left = now;
    }

    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(30));
    EXPECT_EQ(limit.sliceMs(30), 0);
}

}  // namespace
}  // namespace korva::platform
