#include "rt/channel_mixer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "rt/kernels/kernels.h"
#include "tests/support/float_bits.h"
#include "tests/support/random_samples.h"
#include "tests/support/reference_fold.h"
#include "tests/support/stream.h"

namespace korva::rt {
namespace {

using test::sameBits;
using test::withEveryVersion;

constexpr float neighbour = 0.7083f;
constexpr float halved = 0.5f;

/// One value for each plane: all frames of a plane are alike.
using Levels = std::array<float, planeCount>;

constexpr Levels apart = {0.11f, 0.23f, 0.37f, 0.41f, 0.53f, 0.61f, 0.71f, 0.83f};

/// Eight planes of a few frames, folded as a block.
class Bus {
public:
    explicit Bus(const Levels& levels, std::uint32_t frameCount = 3) : frames(frameCount) {
        for (std::size_t plane = 0; plane < planeCount; ++plane) {
            planes[plane].assign(frames, levels[plane]);
            pointers[plane] = planes[plane].data();
        }
    }

    void fold(std::uint32_t inMask, std::uint32_t outMask, const Kernels& kernels) {
        EngineFormat in;
        EngineFormat out;
        in.channelMask = inMask;
        out.channelMask = outMask;
        DspBlock block = asBlock();
        ChannelMixer(block, in, out, kernels);
    }

    void copySamplesOf(const Bus& other) {
        for (std::size_t plane = 0; plane < planeCount; ++plane) {
            planes[plane].assign(other.planes[plane].begin(), other.planes[plane].end());
        }
    }

    [[nodiscard]] DspBlock asBlock() const { return {.channels = pointers.data(), .frames = frames}; }

    void expect(const Levels& levels) const {
        for (std::size_t plane = 0; plane < planeCount; ++plane) {
            const std::vector<float> expected(frames, levels[plane]);
            EXPECT_TRUE(sameBits(planes[plane], expected)) << "in plane " << plane;
        }
    }

    std::array<std::vector<float>, planeCount> planes;
    std::array<float*, planeCount> pointers{};
    std::uint32_t frames;
};

/// Folds `before` with every version of the loops, and expects each to leave `after`.
void expectFold(std::uint32_t inMask, std::uint32_t outMask, const Levels& before, const Levels& after) {
    withEveryVersion([&](const Kernels& kernels) {
        Bus bus(before);
        bus.fold(inMask, outMask, kernels);
        bus.expect(after);
    });
}

TEST(ChannelMixer, LeavesStereoOnStereoAsItIs) {
    constexpr Levels stereo = {0.25f, -0.75f};

    expectFold(0x3, 0x3, stereo, stereo);
}

TEST(ChannelMixer, FoldsEveryOtherPlaneToItsSideOfStereo) {
    Levels folded = apart;
    folded[FrontLeft] = apart[FrontLeft] + apart[SideLeft] * neighbour + apart[BackLeft] * neighbour +
                        apart[FrontCenter] * halved + apart[LowFrequency] * halved;
    folded[FrontRight] = apart[FrontRight] + apart[SideRight] * neighbour + apart[BackRight] * neighbour +
                         apart[FrontCenter] * halved + apart[LowFrequency] * halved;

    expectFold(0x3, 0x3, apart, folded);
    expectFold(0x63F, 0x3, apart, folded);
}

TEST(ChannelMixer, LeavesSevenPointOneOnSevenPointOneAsItIs) {
    expectFold(0x63F, 0x63F, apart, apart);
}

TEST(ChannelMixer, PrefersTheFrontToTheBackForAnAbsentSide) {
    Levels folded = apart;
    folded[FrontLeft] = apart[FrontLeft] + apart[SideLeft] * neighbour;
    folded[FrontRight] = apart[FrontRight] + apart[SideRight] * neighbour;

    expectFold(0x63F, 0x3F, apart, folded);
}

TEST(ChannelMixer, PrefersTheSideToTheFrontForAnAbsentBack) {
    Levels folded = apart;
    folded[SideLeft] = apart[SideLeft] + apart[BackLeft] * neighbour;
    folded[SideRight] = apart[SideRight] + apart[BackRight] * neighbour;

    expectFold(0x63F, 0x60F, apart, folded);
}

TEST(ChannelMixer, FoldsAnAbsentCentreToBothSidesAtFullLevel) {
    expectFold(0x4, 0x3, {0, 0, 0.8f}, {0.8f, 0.8f, 0.8f});
}

TEST(ChannelMixer, FoldsStereoToACentreThatTheInputLacksAtFullLevel) {
    expectFold(0x3, 0x4, {0.5f, 0.25f}, {0.5f, 0.25f, 0.75f});
}

TEST(ChannelMixer, FoldsStereoToACentreThatTheInputHasAtHalf) {
    expectFold(0x7, 0x4, {0.5f, 0.25f, 0.125f}, {0.5f, 0.25f, 0.125f + 0.25f + 0.125f});
}

TEST(ChannelMixer, FoldsAllPlanesToAnOnlyLowFrequencyThatTheInputHas) {
    Levels folded = apart;
    folded[LowFrequency] = apart[LowFrequency] + apart[FrontLeft] * halved + apart[FrontRight] * halved +
                           apart[SideLeft] * halved + apart[SideRight] * halved + apart[BackLeft] * halved +
                           apart[BackRight] * halved + apart[FrontCenter] * neighbour;

    expectFold(0x63F, 0x8, apart, folded);
}

TEST(ChannelMixer, FoldsAllPlanesToAnOnlyLowFrequencyThatTheInputLacksAtFullLevel) {
    Levels folded = apart;
    folded[LowFrequency] = apart[LowFrequency] + apart[FrontLeft] + apart[FrontRight] + apart[SideLeft] +
                           apart[SideRight] + apart[BackLeft] + apart[BackRight] + apart[FrontCenter];

    expectFold(0x637, 0x8, apart, folded);
}

TEST(ChannelMixer, DropsEverySourceForAnOutputOfUnknownSpeakersOnly) {
    for (const std::uint32_t unknown : {0x40u, 0x80u, 0x100u, 0x800u, 0x20000u, 0x80000000u}) {
        SCOPED_TRACE(unknown);
        expectFold(0x63F, unknown, apart, apart);
    }
}

TEST(ChannelMixer, AddsTheRightToTheLeftAtFullLevelForAnEmptyOutput) {
    Levels folded = apart;
    folded[FrontLeft] = apart[FrontLeft] + apart[FrontRight];

    for (const std::uint32_t inMask : {0x0u, 0x1u, 0x2u, 0x3u, 0x63Fu, 0xFFFFFFFFu}) {
        SCOPED_TRACE(inMask);
        expectFold(inMask, 0, apart, folded);
    }
}

TEST(ChannelMixer, NeverFoldsALeftPlaneToTheRightNorTheReverse) {
    Levels folded = apart;
    folded[FrontRight] = apart[FrontRight] + apart[SideRight] * neighbour + apart[BackRight] * neighbour +
                         apart[FrontCenter] * halved + apart[LowFrequency] * halved;

    expectFold(0x63F, 0x2, apart, folded);
}

TEST(ChannelMixer, FoldsAPairWithOneSpeakerPresentToThatOneOnly) {
    Levels folded = {};
    folded[FrontCenter] = 0.5f;
    folded[SideLeft] = 0.5f * neighbour;

    expectFold(0x204, 0x200, {0, 0, 0.5f}, folded);
}

TEST(ChannelMixer, TestsTheInputForEachDestinationOfAPairApart) {
    expectFold(0x5, 0x3, {0.25f, 0, 0.5f}, {0.25f + 0.5f * halved, 0.5f, 0.5f});
}

TEST(ChannelMixer, FoldsTwoSourcesIntoAnEmptyPlaneAtFullLevelEach) {
    expectFold(0x600, 0x4, {0, 0, 0, 0, 0, 0, 0.75f, 0.5f}, {0, 0, 1.25f, 0, 0, 0, 0.75f, 0.5f});
}

TEST(ChannelMixer, MovesABackPairToASidePairThatTheInputLacksAtFullLevel) {
    constexpr Levels backs = {0.1f, 0.2f, 0, 0, 0.3f, 0.4f};

    expectFold(0x33, 0x603, backs, {0.1f, 0.2f, 0, 0, 0.3f, 0.4f, 0.3f, 0.4f});
}

TEST(ChannelMixer, FoldsASidePairToTheFrontAndLeavesTheBackSilent) {
    Levels folded = {0.1f, 0.2f, 0, 0, 0, 0, 0.3f, 0.4f};
    folded[FrontLeft] = 0.1f + 0.3f * neighbour;
    folded[FrontRight] = 0.2f + 0.4f * neighbour;

    expectFold(0x603, 0x33, {0.1f, 0.2f, 0, 0, 0, 0, 0.3f, 0.4f}, folded);
}

TEST(ChannelMixer, AddsSourcesInTheirFixedOrder) {
    // Side, back and centre meet in the front left. Only in this order does the small one survive.
    Levels before = {};
    before[SideLeft] = 1e8f;
    before[BackLeft] = -1e8f;
    before[FrontCenter] = 1.0f;
    Levels after = before;
    after[FrontLeft] = 1.0f;

    expectFold(0, 0x1, before, after);
}

TEST(ChannelMixer, RoundsTheProductBeforeTheSum) {
    // The destination holds the rounded product's opposite, so one rounding instead of two leaves a rest.
    const float source = 0.1f;
    const float product = source * neighbour;
    Levels before = {-product, 0};
    before[SideLeft] = source;
    Levels after = before;
    after[FrontLeft] = 0.0f;

    ASSERT_NE(static_cast<double>(product), static_cast<double>(source) * static_cast<double>(neighbour));
    expectFold(0x203, 0x3, before, after);
}

TEST(ChannelMixer, NeitherNormalisesNorClips) {
    const float sum = 1.0f + neighbour + neighbour + halved + halved;

    expectFold(0x63F, 0x3, {1, 1, 1, 1, 1, 1, 1, 1}, {sum, sum, 1, 1, 1, 1, 1, 1});
}

TEST(ChannelMixer, TouchesNoSampleOfAnEmptyBlock) {
    withEveryVersion([](const Kernels& kernels) {
        Bus bus(apart);
        bus.frames = 0;
        bus.fold(0x63F, 0x3, kernels);
        bus.frames = 3;
        bus.expect(apart);
    });
}

TEST(ChannelMixer, TouchesNoSampleAfterTheBlock) {
    withEveryVersion([](const Kernels& kernels) {
        Bus bus(apart, 512);
        bus.frames = 37;
        bus.fold(0x63F, 0x4, kernels);
        for (std::size_t k = 37; k < 512; ++k) {
            ASSERT_EQ(bus.planes[FrontCenter][k], apart[FrontCenter]) << "frame " << k;
        }
    });
}

TEST(ChannelMixer, ReadsNothingOfTheFormatsButTheirMasks) {
    withEveryVersion([](const Kernels& kernels) {
        EngineFormat in{.channelMask = 0x4, .channelCount = -3, .sampleRate = 7};
        EngineFormat out{.channelMask = 0x3, .channelCount = 99, .sampleRate = 1};
        in.planeOfChannel.fill(7);
        out.planeOfChannel.fill(7);
        out.speakerOfPlane.fill(7);
        Bus bus({0, 0, 0.5f});
        DspBlock block = bus.asBlock();
        block.inChannels = 0;
        block.outChannels = 0;

        ChannelMixer(block, in, out, kernels);

        bus.expect({0.5f, 0.5f, 0.5f});
    });
}

TEST(ChannelMixer, RunsTheChosenLoopsWhenNoneAreNamed) {
    EngineFormat in{.channelMask = 0x4};
    EngineFormat out{.channelMask = 0x3};
    Bus bus({0, 0, 0.5f});
    DspBlock block = bus.asBlock();

    ChannelMixer(block, in, out);

    bus.expect({0.5f, 0.5f, 0.5f});
}

/// Every pair of speaker sets, with `unknownIn` and `unknownOut` added to the masks, as the rows say.
void expectEveryPairOfMasks(std::uint32_t unknownIn, std::uint32_t unknownOut) {
    constexpr std::uint32_t frames = 19;
    test::RandomSamples random;
    Bus source({}, frames);
    for (auto& plane : source.planes) {
        random.fill(plane, test::Content::ordinary);
    }
    Bus expected({}, frames);
    Bus actual({}, frames);
    for (std::uint32_t pair = 0; pair < 0x10000; ++pair) {
        const std::uint32_t inMask = test::maskOfPlanes(pair & 0xFF) | unknownIn;
        const std::uint32_t outMask = test::maskOfPlanes(pair >> 8) | unknownOut;
        expected.copySamplesOf(source);
        test::foldByRows(expected.pointers.data(), inMask, outMask, frames);
        for (const Kernels* kernels : supportedKernels()) {
            actual.copySamplesOf(source);
            actual.fold(inMask, outMask, *kernels);
            for (std::size_t plane = 0; plane < planeCount; ++plane) {
                ASSERT_TRUE(sameBits(actual.planes[plane], expected.planes[plane]))
                    << kernels->name << ", plane " << plane << ", masks 0x" << std::hex << inMask << " to 0x"
                    << outMask;
            }
        }
    }
}

TEST(ChannelMixer, FoldsEveryPairOfSpeakerSetsByItsRows) {
    expectEveryPairOfMasks(0, 0);
}

TEST(ChannelMixer, IgnoresUnknownSpeakersOfBothSidesInEveryPair) {
    expectEveryPairOfMasks(0xFFFFF9C0, 0x80000040);
}

}  // namespace
}  // namespace korva::rt
