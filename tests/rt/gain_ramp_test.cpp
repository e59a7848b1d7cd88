#include "rt/gain_ramp.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "rt/speakers.h"
#include "tests/support/float_bits.h"

namespace korva::rt {
namespace {

using test::sameBits;

/// Eight wet planes of ones and eight dry planes of a quarter, unless a test says otherwise.
class Planes {
public:
    explicit Planes(std::size_t frameCount) : frames(frameCount) {
        for (std::size_t plane = 0; plane < planeCount; ++plane) {
            wet[plane].assign(frames, 1.0f);
            dry[plane].assign(frames, 0.25f);
            wetPointers[plane] = wet[plane].data();
            dryPointers[plane] = dry[plane].data();
        }
    }

    void apply(GainRampState& state, std::int32_t channels) {
        GainRamp(state, wetPointers.data(), dryPointers.data(), channels, static_cast<std::uint32_t>(frames));
    }

    void expectUntouched() const {
        for (std::size_t plane = 0; plane < planeCount; ++plane) {
            EXPECT_TRUE(sameBits(wet[plane], std::vector<float>(frames, 1.0f))) << "plane " << plane;
            EXPECT_TRUE(sameBits(dry[plane], std::vector<float>(frames, 0.25f))) << "plane " << plane;
        }
    }

    std::size_t frames;
    std::array<std::vector<float>, planeCount> wet;
    std::array<std::vector<float>, planeCount> dry;

private:
    std::array<float*, planeCount> wetPointers{};
    std::array<const float*, planeCount> dryPointers{};
};

/// A ramp at `gain` that moves by `step`, between 0.25 and 1.
GainRampState ramp(float gain, float step) {
    GainRampState state;
    state.floorGain = 0.25f;
    state.gain = gain;
    state.step = step;
    return state;
}

TEST(GainRampState, BeginsWithoutARamp) {
    const GainRampState state;

    EXPECT_EQ(state.rampMilliseconds, 50.0f);
    EXPECT_EQ(state.floorGain, 0.707f);
    EXPECT_EQ(state.ceilingGain, 1.0f);
    EXPECT_EQ(state.gain, 1.0f);
    EXPECT_EQ(state.step, 1.0f);
    EXPECT_EQ(state.crossfade, 0u);
    EXPECT_EQ(state.referenceRate, 44100u);
    EXPECT_FALSE(state.reachedFloor);
    EXPECT_FALSE(state.isRunning());
}

TEST(GainRampState, GrowsFromTheFloorToOneInItsMilliseconds) {
    // (1 / 0.707) ^ (1 / 2205), and 2 minus that.
    EXPECT_FLOAT_EQ(GainRampState().stepUp, 1.000157257f);
    EXPECT_FLOAT_EQ(GainRampState().stepDown, 0.999842743f);
    // (1 / 0.707) ^ (1 / 441)
    EXPECT_FLOAT_EQ(GainRampState(10.0f).stepUp, 1.000786533f);
    EXPECT_EQ(GainRampState(10.0f).rampMilliseconds, 10.0f);
}

TEST(GainRampState, FallsByTheMirroredStepAndNotByTheInverse) {
    // (1 / 0.707) ^ (1 / 44.1) is 1.007893, and its inverse would be 0.992169.
    EXPECT_FLOAT_EQ(GainRampState(1.0f).stepUp, 1.007893225f);
    EXPECT_FLOAT_EQ(GainRampState(1.0f).stepDown, 0.992106775f);
}

TEST(GainRampState, OfNoMillisecondsNeverRamps) {
    for (const float milliseconds : {0.0f, -1.0f}) {
        const GainRampState state(milliseconds);

        EXPECT_EQ(state.stepUp, 1.0f);
        EXPECT_EQ(state.stepDown, 1.0f);
    }
}

TEST(GainRamp, ChangesNothingWhileNoRampRuns) {
    GainRampState state = ramp(0.5f, 1.0f);
    state.floorGain = 0.5f;
    state.crossfade = 1;
    Planes planes(4);

    planes.apply(state, 8);

    planes.expectUntouched();
    EXPECT_EQ(state.gain, 0.5f);
    EXPECT_FALSE(state.reachedFloor);
}

TEST(GainRamp, ChangesNothingOnceARisingRampIsAtOne) {
    for (const float gain : {1.0f, 1.5f}) {
        GainRampState state = ramp(gain, 1.25f);
        state.floorGain = 2.0f;
        Planes planes(4);

        planes.apply(state, 8);

        planes.expectUntouched();
        EXPECT_EQ(state.gain, gain);
        EXPECT_FALSE(state.reachedFloor);
    }
}

TEST(GainRamp, GivesAFrameTheGainBeforeItsStep) {
    GainRampState state = ramp(1.0f, 0.5f);
    Planes planes(3);

    planes.apply(state, 1);

    EXPECT_TRUE(sameBits(planes.wet[0], std::vector<float>{1.0f, 0.5f, 0.25f}));
}

TEST(GainRamp, FallsToItsFloorAndHoldsItInLaterBlocks) {
    GainRampState state = ramp(1.0f, 0.75f);
    Planes first(8);
    Planes second(3);

    first.apply(state, 1);
    EXPECT_TRUE(sameBits(
        first.wet[0], std::vector<float>{1.0f, 0.75f, 0.5625f, 0.421875f, 0.31640625f, 0.25f, 0.25f, 0.25f}));
    EXPECT_TRUE(state.reachedFloor);
    EXPECT_EQ(state.gain, 0.25f);

    second.apply(state, 1);
    EXPECT_TRUE(sameBits(second.wet[0], std::vector<float>(3, 0.25f)));
    EXPECT_EQ(state.gain, 0.25f);
}

TEST(GainRamp, HasNotReachedItsFloorBeforeItsGainIsThere) {
    GainRampState state = ramp(1.0f, 0.75f);
    Planes planes(4);

    planes.apply(state, 1);

    EXPECT_FALSE(state.reachedFloor);
}

TEST(GainRamp, StopsOnItsOwnWhenItHasRisenToOne) {
    GainRampState state = ramp(0.5f, 1.5f);
    Planes first(4);
    Planes second(4);

    first.apply(state, 1);
    EXPECT_TRUE(sameBits(first.wet[0], std::vector<float>{0.5f, 0.75f, 1.0f, 1.0f}));
    EXPECT_EQ(state.gain, 1.0f);
    EXPECT_FALSE(state.isRunning());

    second.apply(state, 1);
    second.expectUntouched();
}

TEST(GainRamp, RisesToOneWhateverTheCeilingOfACrossfade) {
    GainRampState state = ramp(0.5f, 1.5f);
    state.ceilingGain = 0.625f;
    Planes planes(4);

    planes.apply(state, 1);

    EXPECT_EQ(state.gain, 1.0f);
}

TEST(GainRamp, CrossfadesFromTheWetPlanesToTheDry) {
    GainRampState state = ramp(1.0f, 0.5f);
    state.crossfade = 1;
    Planes planes(4);

    planes.apply(state, 1);

    // gain of wet and the rest of dry: 1, 1/2, 1/4, 1/4 of 1.0 and 0.25
    EXPECT_TRUE(sameBits(planes.wet[0], std::vector<float>{1.0f, 0.625f, 0.4375f, 0.4375f}));
    EXPECT_TRUE(sameBits(planes.dry[0], std::vector<float>(4, 0.25f)));
    EXPECT_TRUE(state.reachedFloor);
}

TEST(GainRamp, RoundsEachPartOfACrossfadeBeforeTheSum) {
    GainRampState state = ramp(0.7f, 0.999f);
    state.crossfade = 1;
    Planes planes(1);
    planes.wet[0][0] = 0.1f;
    planes.dry[0][0] = 0.3f;

    planes.apply(state, 1);

    const float dryPart = (1.0f - 0.7f) * 0.3f;
    const float wetPart = 0.7f * 0.1f;
    EXPECT_EQ(planes.wet[0][0], dryPart + wetPart);
}

TEST(GainRamp, CrossfadesUpToItsCeilingAndGoesOnThere) {
    GainRampState state = ramp(0.5f, 1.5f);
    state.crossfade = 1;
    state.ceilingGain = 0.625f;
    Planes first(3);
    Planes second(1);

    first.apply(state, 1);
    second.apply(state, 1);

    const float atCeiling = 0.375f * 0.25f + 0.625f;
    EXPECT_TRUE(sameBits(first.wet[0], std::vector<float>{0.625f, atCeiling, atCeiling}));
    EXPECT_EQ(second.wet[0][0], atCeiling);
    EXPECT_EQ(state.gain, 0.625f);
}

TEST(GainRamp, PutsACeilingBelowTheFloorAboveIt) {
    GainRampState state = ramp(0.5f, 0.5f);
    state.crossfade = 1;
    state.ceilingGain = 0.125f;
    Planes planes(2);

    planes.apply(state, 1);

    EXPECT_EQ(state.gain, 0.125f);
    EXPECT_TRUE(state.reachedFloor);
}

TEST(GainRamp, WalksThePlanesInTheirOrderWithoutAMap) {
    GainRampState state = ramp(0.5f, 0.999f);
    Planes planes(1);

    planes.apply(state, 3);

    for (std::size_t plane = 0; plane < planeCount; ++plane) {
        EXPECT_EQ(planes.wet[plane][0], plane < 3 ? 0.5f : 1.0f) << "plane " << plane;
    }
}

TEST(GainRamp, GivesAllPlanesOfAFrameTheSameGain) {
    GainRampState state = ramp(1.0f, 0.5f);
    Planes planes(2);

    planes.apply(state, 8);

    for (const auto& plane : planes.wet) {
        EXPECT_TRUE(sameBits(plane, std::vector<float>{1.0f, 0.5f}));
    }
}

TEST(GainRamp, MovesOnWithoutAnyChannel) {
    for (const std::int32_t channels : {0, -5}) {
        GainRampState state = ramp(1.0f, 0.5f);
        Planes planes(2);

        planes.apply(state, channels);

        planes.expectUntouched();
        EXPECT_EQ(state.gain, 0.25f) << channels << " channels";
        EXPECT_TRUE(state.reachedFloor);
    }
}

TEST(GainRamp, KeepsToTheEightPlanesForMoreChannels) {
    GainRampState state = ramp(0.5f, 0.999f);
    Planes planes(1);

    planes.apply(state, 10);

    for (const auto& plane : planes.wet) {
        EXPECT_EQ(plane[0], 0.5f);
    }
}

TEST(GainRamp, MovesNothingInAnEmptyBlockButSeesThatItIsAtTheFloor) {
    GainRampState above = ramp(0.5f, 0.5f);
    GainRampState atFloor = ramp(0.25f, 0.5f);
    Planes planes(0);

    planes.apply(above, 8);
    planes.apply(atFloor, 8);

    EXPECT_EQ(above.gain, 0.5f);
    EXPECT_FALSE(above.reachedFloor);
    EXPECT_EQ(atFloor.gain, 0.25f);
    EXPECT_TRUE(atFloor.reachedFloor);
}

}  // namespace
}  // namespace korva::rt
