#include "korva/process/timings.h"

#include <gtest/gtest.h>

namespace korva::tool {
namespace {

TEST(Timings, WithoutCallsAreZero) {
    Timings timings;
    EXPECT_EQ(timings.count(), 0u);
    EXPECT_EQ(timings.totalNs(), 0u);
    EXPECT_EQ(timings.maximumNs(), 0u);
    EXPECT_EQ(timings.percentileNs(50), 0u);
}

TEST(Timings, APercentileIsTheDurationThatSoManyDoNotExceed) {
    Timings timings;
    for (std::uint64_t ns = 200; ns >= 1; --ns) {
        timings.add(ns);
    }
    EXPECT_EQ(timings.percentileNs(50), 100u);
    EXPECT_EQ(timings.percentileNs(99), 198u);
    EXPECT_EQ(timings.percentileNs(100), 200u);
    EXPECT_EQ(timings.percentileNs(1), 2u);
}

TEST(Timings, OfOneCallAreThatCalls) {
    Timings timings;
    timings.add(7);
    EXPECT_EQ(timings.percentileNs(50), 7u);
    EXPECT_EQ(timings.percentileNs(99), 7u);
    EXPECT_EQ(timings.maximumNs(), 7u);
    EXPECT_EQ(timings.totalNs(), 7u);
}

TEST(Timings, AVeryLongCallKeepsItsLengthInMaximumAndSum) {
    Timings timings;
    timings.add(1);
    timings.add(5'000'000'000);
    EXPECT_EQ(timings.maximumNs(), 5'000'000'000u);
    EXPECT_EQ(timings.totalNs(), 5'000'000'001u);
    EXPECT_EQ(timings.percentileNs(50), 1u);
}

}  // namespace
}  // namespace korva::tool
