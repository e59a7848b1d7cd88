#include "rt/fold_plan.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "tests/support/float_bits.h"
#include "tests/support/random_samples.h"
#include "tests/support/reference_fold.h"

namespace korva::rt {
namespace {

using Frame = std::array<float, planeCount>;

Frame foldedByPlan(Frame frame, std::uint32_t inMask, std::uint32_t outMask) {
    FoldPlan plan;
    std::memset(&plan, 0xA5, sizeof(plan));
    makeFoldPlan(inMask, outMask, plan);
    for (std::uint32_t d = 0; d < plan.destinationCount; ++d) {
        const FoldPlan::Destination& destination = plan.destinations[d];
        for (std::uint32_t s = 0; s < destination.sourceCount; ++s) {
            frame[destination.plane] +=
                frame[destination.sources[s].plane] * destination.sources[s].coefficient;
        }
    }
    return frame;
}

Frame foldedByRows(Frame frame, std::uint32_t inMask, std::uint32_t outMask) {
    std::array<float*, planeCount> planes{};
    for (std::size_t plane = 0; plane < planeCount; ++plane) {
        planes[plane] = &frame[plane];
    }
    test::foldByRows(planes.data(), inMask, outMask, 1);
    return frame;
}

TEST(FoldPlan, HasNoDestinationWhereNothingIsFolded) {
    FoldPlan plan;

    makeFoldPlan(0x63F, 0x63F, plan);

    EXPECT_EQ(plan.destinationCount, 0u);
}

TEST(FoldPlan, GathersTheSourcesOfADestinationInTheOrderOfTheirSum) {
    FoldPlan plan;

    makeFoldPlan(0x1, 0x1, plan);

    ASSERT_EQ(plan.destinationCount, 1u);
    const FoldPlan::Destination& left = plan.destinations[0];
    EXPECT_EQ(left.plane, FrontLeft);
    ASSERT_EQ(left.sourceCount, 4u);
    EXPECT_EQ(left.sources[0].plane, SideLeft);
    EXPECT_EQ(left.sources[1].plane, BackLeft);
    EXPECT_EQ(left.sources[2].plane, FrontCenter);
    EXPECT_EQ(left.sources[3].plane, LowFrequency);
    EXPECT_EQ(left.sources[0].coefficient, 0.7083f);
    EXPECT_EQ(left.sources[3].coefficient, 0.5f);
}

TEST(FoldPlan, NamesEachDestinationOnce) {
    for (std::uint32_t outMask = 0; outMask < 0x800; ++outMask) {
        FoldPlan plan;
        makeFoldPlan(0x63F, outMask, plan);
        std::uint32_t seen = 0;
        for (std::uint32_t d = 0; d < plan.destinationCount; ++d) {
            const std::uint32_t bit = 1u << plan.destinations[d].plane;
            EXPECT_EQ(seen & bit, 0u) << "mask " << outMask;
            seen |= bit;
        }
    }
}

TEST(FoldPlan, GivesWhatTheRowsGiveForEveryPairOfMasks) {
    test::RandomSamples random;
    Frame frame{};
    random.fill(frame, test::Content::ordinary);
    for (std::uint32_t pair = 0; pair < 0x10000; ++pair) {
        const std::uint32_t inMask = test::maskOfPlanes(pair & 0xFF);
        const std::uint32_t outMask = test::maskOfPlanes(pair >> 8);
        const Frame expected = foldedByRows(frame, inMask, outMask);
        const Frame actual = foldedByPlan(frame, inMask, outMask);
        ASSERT_TRUE(test::sameBits(actual, expected)) << inMask << " to " << outMask;
    }
}

}  // namespace
}  // namespace korva::rt
