#include "rt/level_meter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "rt/kernels/kernels.h"
#include "tests/support/float_bits.h"
#include "tests/support/stream.h"

namespace korva::rt {
namespace {

using test::bitsOf;
using test::formatOf;

constexpr float floorAt48 = 0.00001f;
constexpr float growthAt48 = 1.0003f;
constexpr float infinity = std::numeric_limits<float>::infinity();

/// Eight planes that all hold the same samples, and the meter over them.
class Meter {
public:
    explicit Meter(MeterRelease meterRelease = MeterRelease::forSampleRate(48000)) : release(meterRelease) {}

    void run(const std::vector<float>& samples, const EngineFormat& layout = formatOf(1, 0x1)) {
        std::array<const float*, planeCount> planes{};
        planes.fill(samples.data());
        LevelMeter(state, release, planes.data(), static_cast<std::uint32_t>(samples.size()), layout);
    }

    MeterState state;
    MeterRelease release;
};

TEST(MeterRelease, IsTheNamedStepAndGrowthAt48Kilohertz) {
    const auto release = MeterRelease::forSampleRate(48000);

    EXPECT_EQ(release.floor, 0.00001f);
    EXPECT_EQ(release.growth, 1.0003f);
}

TEST(MeterRelease, ScalesStepAndGrowthWithTheRateAndNotWithItsRoot) {
    EXPECT_EQ(MeterRelease::forSampleRate(96000).floor, 0.000005f);
    EXPECT_EQ(MeterRelease::forSampleRate(96000).growth, 0.50015f);
    EXPECT_EQ(MeterRelease::forSampleRate(192000).floor, 0.0000025f);
    EXPECT_EQ(MeterRelease::forSampleRate(192000).growth, 0.250075f);
    EXPECT_EQ(MeterRelease::forSampleRate(24000).growth, 2.0006f);
}

TEST(MeterRelease, GrowsWithinOneUnitOfItsLastPlaceAt441Kilohertz) {
    const auto release = MeterRelease::forSampleRate(44100);

    constexpr std::uint32_t expected = 0x3F8B5C8E;
    EXPECT_GE(bitsOf(release.growth), expected - 1);
    EXPECT_LE(bitsOf(release.growth), expected + 1);
    EXPECT_FLOAT_EQ(release.floor, 0.0000108843537f);
}

TEST(LevelMeter, AFullSampleAfterSilenceGivesPeakOneAndTheLeastRelease) {
    Meter meter;

    meter.run({0.0f, 0.0f, 1.0f});

    EXPECT_EQ(meter.state.peak[FrontLeft], 1.0f);
    EXPECT_EQ(meter.state.slope[FrontLeft], floorAt48);
}

TEST(LevelMeter, FallsFasterWithEachSampleOfSilence) {
    Meter meter;
    meter.run({1.0f});

    meter.run({0.0f});
    const float first = 1.0f - floorAt48;
    EXPECT_EQ(meter.state.peak[FrontLeft], first);

    meter.run({0.0f});
    const float second = first - floorAt48 * growthAt48;
    EXPECT_EQ(meter.state.peak[FrontLeft], second);

    meter.run({0.0f});
    EXPECT_EQ(meter.state.peak[FrontLeft], second - floorAt48 * growthAt48 * growthAt48);
}

TEST(LevelMeter, FallsLinearlyAt96Kilohertz) {
    Meter meter(MeterRelease::forSampleRate(96000));
    meter.run({1.0f});
    float expected = 1.0f;

    for (int frame = 0; frame < 1000; ++frame) {
        meter.run({0.0f});
        expected -= 0.000005f;
        ASSERT_EQ(meter.state.peak[FrontLeft], expected) << "frame " << frame;
        ASSERT_EQ(meter.state.slope[FrontLeft], 0.000005f) << "frame " << frame;
    }
}

TEST(LevelMeter, NeverFallsBelowZero) {
    Meter meter;
    meter.run({0.001f});

    meter.run(std::vector<float>(500, 0.0f));

    EXPECT_EQ(bitsOf(meter.state.peak[FrontLeft]), bitsOf(0.0f));
}

TEST(LevelMeter, TakesANegativeSampleByItsSize) {
    Meter meter;

    meter.run({-0.5f});

    EXPECT_EQ(meter.state.peak[FrontLeft], 0.5f);
}

TEST(LevelMeter, ComparesASampleWithTheLevelAfterItsFall) {
    Meter meter({0.125f, 2.0f});
    meter.state.peak[FrontLeft] = 0.5f;
    meter.state.slope[FrontLeft] = 0.25f;

    meter.run({0.375f});

    EXPECT_EQ(meter.state.peak[FrontLeft], 0.375f);
    EXPECT_EQ(meter.state.slope[FrontLeft], 0.125f);
}

TEST(LevelMeter, GoesOnReleasingOnASampleThatEqualsTheLevel) {
    Meter meter({0.125f, 2.0f});
    meter.state.peak[FrontLeft] = 0.5f;
    meter.state.slope[FrontLeft] = 0.25f;

    meter.run({0.25f});

    EXPECT_EQ(meter.state.peak[FrontLeft], 0.25f);
    EXPECT_EQ(meter.state.slope[FrontLeft], 0.5f);
}

TEST(LevelMeter, RaisesTheReleaseStepToItsFloor) {
    Meter meter({0.125f, 0.5f});
    meter.state.peak[FrontLeft] = 1.0f;
    meter.state.slope[FrontLeft] = 0.125f;

    meter.run({0.0f});

    EXPECT_EQ(meter.state.peak[FrontLeft], 0.875f);
    EXPECT_EQ(meter.state.slope[FrontLeft], 0.125f);
}

TEST(LevelMeter, ReachesZeroAndRecoversWhenTheReleaseStepIsInfinite) {
    Meter meter(MeterRelease::forSampleRate(44100));
    meter.run({1.0f});

    meter.run(std::vector<float>(3000, 0.0f));
    EXPECT_EQ(meter.state.slope[FrontLeft], infinity);
    EXPECT_EQ(bitsOf(meter.state.peak[FrontLeft]), bitsOf(0.0f));

    meter.run({0.25f});
    EXPECT_EQ(meter.state.peak[FrontLeft], 0.25f);
    EXPECT_EQ(meter.state.slope[FrontLeft], meter.release.floor);
}

TEST(LevelMeter, CountsASampleThatIsNoNumberAsSilence) {
    Meter meter({0.125f, 2.0f});
    meter.run({0.5f});

    meter.run({std::nanf("")});

    EXPECT_EQ(meter.state.peak[FrontLeft], 0.375f);
    EXPECT_EQ(meter.state.slope[FrontLeft], 0.25f);
}

TEST(LevelMeter, RecoversFromAnInfiniteSampleAfterASilenceLongEnough) {
    Meter meter({0.125f, 2.0f});
    meter.run({infinity});
    EXPECT_EQ(meter.state.peak[FrontLeft], infinity);

    // Once the release step is infinite too, their difference is no number, and counts as zero.
    meter.run(std::vector<float>(200, 0.0f));

    EXPECT_EQ(meter.state.peak[FrontLeft], 0.0f);
}

TEST(LevelMeter, LeavesLevelAndReleaseAsTheyAreOnNoFrames) {
    Meter meter;
    meter.state.peak.fill(0.5f);
    meter.state.slope.fill(0.25f);

    meter.run({}, formatOf(8));

    EXPECT_EQ(meter.state.peak[FrontLeft], 0.5f);
    EXPECT_EQ(meter.state.slope[FrontLeft], 0.25f);
}

TEST(LevelMeter, ChangesNothingForALayoutWithoutChannels) {
    for (const std::int32_t channels : {0, -1, INT32_MIN}) {
        Meter meter;
        meter.state.peak.fill(0.5f);
        meter.state.slope.fill(0.25f);
        EngineFormat layout = formatOf(8);
        layout.channelCount = channels;

        meter.run({1.0f, 1.0f}, layout);

        for (std::size_t plane = 0; plane < planeCount; ++plane) {
            EXPECT_EQ(meter.state.peak[plane], 0.5f) << channels << " channels, plane " << plane;
            EXPECT_EQ(meter.state.slope[plane], 0.25f) << channels << " channels, plane " << plane;
        }
    }
}

TEST(LevelMeter, MetersThePlanesOfTheLayoutAndLeavesTheOthersTheirLevels) {
    Meter meter;
    meter.state.peak.fill(0.5f);

    meter.run({1.0f}, formatOf(4, 0x603));

    EXPECT_EQ(meter.state.peak, (std::array<float, 8>{1, 1, 0.5f, 0.5f, 0.5f, 0.5f, 1, 1}));
}

TEST(LevelMeter, FollowsAPlaneOfTwoChannelsTwice) {
    Meter meter({0.125f, 2.0f});
    const EngineFormat layout = formatOf(4, 0x107);

    meter.run({1.0f, 0.0f}, layout);

    // The first run leaves 0.875 and a step of 0.25; the second meets 1.0 again, then falls anew.
    EXPECT_EQ(meter.state.peak[FrontCenter], 0.875f);
    EXPECT_EQ(meter.state.slope[FrontCenter], 0.25f);

    meter.run({0.0f}, layout);
    EXPECT_EQ(meter.state.peak[FrontCenter], 0.875f - 0.25f - 0.5f);
    EXPECT_EQ(meter.state.slope[FrontCenter], 1.0f);
    EXPECT_EQ(meter.state.peak[FrontLeft], 0.875f - 0.25f);
}

TEST(LevelMeter, RunsOneChannelOverAllFramesBeforeTheNextOnTheSamePlane) {
    Meter meter({0.125f, 2.0f});

    // Frame by frame the last zero would be met twice, and the level would end at 0.125.
    meter.run({0.25f, 0.5f, 0.0f}, formatOf(4, 0x107));

    EXPECT_EQ(meter.state.peak[FrontCenter], 0.375f);
    EXPECT_EQ(meter.state.slope[FrontCenter], 0.25f);
}

TEST(LevelMeter, MetersTheFirstPlaneForEachChannelWithoutASpeaker) {
    Meter meter({0.125f, 2.0f});

    // Seven channels on five speakers: the last two are mapped to the front left.
    meter.run({0.0f}, formatOf(7));
    EXPECT_EQ(meter.state.slope[FrontLeft], 0.125f * 2.0f * 2.0f);
    EXPECT_EQ(meter.state.slope[FrontRight], 0.125f);
}

TEST(LevelMeter, GivesTheSameInOneBlockAsInMany) {
    std::vector<float> samples;
    samples.reserve(480);
    for (int k = 0; k < 480; ++k) {
        samples.push_back(std::sin(static_cast<float>(k) * 0.1f) * std::exp(static_cast<float>(-k) * 0.02f));
    }
    Meter whole;
    Meter pieces;

    whole.run(samples);
    for (std::size_t k = 0; k < samples.size(); k += 7) {
        const std::size_t end = std::min(k + 7, samples.size());
        pieces.run({samples.begin() + static_cast<std::ptrdiff_t>(k),
                    samples.begin() + static_cast<std::ptrdiff_t>(end)});
    }

    EXPECT_EQ(bitsOf(whole.state.peak[FrontLeft]), bitsOf(pieces.state.peak[FrontLeft]));
    EXPECT_EQ(bitsOf(whole.state.slope[FrontLeft]), bitsOf(pieces.state.slope[FrontLeft]));
}

TEST(MeterLanes, RunTwoSidesAsIfOneAfterTheOther) {
    test::withEveryVersion([](const Kernels& kernels) {
        const std::vector<float> loud = {0.25f, 1.0f, 0.0f};
        const std::vector<float> quiet = {0.125f, 0.0f, -0.25f};
        std::array<const float*, planeCount> loudPlanes{};
        std::array<const float*, planeCount> quietPlanes{};
        loudPlanes.fill(loud.data());
        quietPlanes.fill(quiet.data());
        MeterState input;
        MeterState output;

        MeterLanes lanes;
        lanes.add(input, loudPlanes.data(), formatOf(8));
        lanes.add(output, quietPlanes.data(), formatOf(4, 0x107));  // two channels on the centre
        lanes.follow({0.0625f, 2.0f}, 3, kernels);

        for (std::size_t plane = 0; plane < planeCount; ++plane) {
            EXPECT_EQ(input.peak[plane], 0.9375f) << "plane " << plane;
            EXPECT_EQ(input.slope[plane], 0.125f) << "plane " << plane;
        }
        EXPECT_EQ(output.peak, (std::array<float, 8>{0.25f, 0.25f, 0.25f}));
        EXPECT_EQ(output.slope, (std::array<float, 8>{0.0625f, 0.0625f, 0.0625f}));
    });
}

}  // namespace
}  // namespace korva::rt
