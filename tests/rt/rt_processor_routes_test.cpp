// What comes out of a processor for pairs of formats, with and without an engine and before any format is
// set.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "rt/direct_copy.h"
#include "rt/rt_processor.h"
#include "tests/support/block_processors.h"
#include "tests/support/float_bits.h"
#include "tests/support/stream.h"

namespace korva::rt {
namespace {

using published::BUFFER_INVALID;
using published::BUFFER_VALID;
using test::connectionTo;
using test::formatOf;
using test::sameBits;
using test::Stream;
using test::withEveryVersion;

using Samples = std::vector<float>;

constexpr float neighbour = 0.7083f;
constexpr float halved = 0.5f;

/// Plays `input` without an engine, with every version of the loops, and expects `output` of each.
void expectMixed(const EngineFormat& in, const EngineFormat& out, const Samples& input,
                 const Samples& output) {
    withEveryVersion([&](const Kernels& kernels) {
        Stream stream(in, out, kernels);
        EXPECT_TRUE(sameBits(stream.play(input), output));
    });
}

/// As `expectMixed`, with an engine that leaves the planes as they are.
void expectPassed(const EngineFormat& in, const EngineFormat& out, const Samples& input,
                  const Samples& output) {
    withEveryVersion([&](const Kernels& kernels) {
        Stream stream(in, out, kernels);
        test::PassingProcessor engine;
        stream.processor.exchangeEngine(&engine);
        EXPECT_TRUE(sameBits(stream.play(input), output));
    });
}

TEST(BeforeAnyFormat, ACallWritesNoSampleAndStillSetsFlagAndCount) {
    withEveryVersion([](const Kernels& kernels) {
        RtProcessor processor(kernels);
        const Samples samples = {1, 2, 3, 4};
        Samples target(4, 7.0f);
        auto input = connectionTo(samples, 2);
        auto output = connectionTo(target, 0, BUFFER_INVALID);

        test::process(processor, input, output, 2);

        EXPECT_TRUE(sameBits(target, Samples(4, 7.0f)));
        EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
        EXPECT_EQ(output.u32ValidFrameCount, 2u);
        EXPECT_EQ(processor.lastFrames.get(), 2u);
        EXPECT_TRUE(processor.started.get());
    });
}

TEST(WithoutAProcessor, ACopyOfSamplesPerFrameZeroTouchesNothingAndOneOfTheChannelsCopies) {
    const Samples samples = {1, 2, 3, 4};
    Samples target(4, 7.0f);
    auto input = connectionTo(samples, 2);
    auto output = connectionTo(target, 0, BUFFER_INVALID);

    test::copyDirectly(input, output, 0);
    EXPECT_TRUE(sameBits(target, Samples(4, 7.0f)));
    EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
    EXPECT_EQ(output.u32ValidFrameCount, 2u);

    test::copyDirectly(input, output, 2);
    EXPECT_TRUE(sameBits(target, samples));
}

TEST(MixedRoute, StereoToStereoIsUnchanged) {
    const Samples samples = {0.1f, -0.2f, 0.3f, -0.4f, -0.0f, 0.0f};

    // A fold adds silence to each side, which makes a negative zero a positive one.
    expectMixed(formatOf(2), formatOf(2), samples, {0.1f, -0.2f, 0.3f, -0.4f, 0.0f, 0.0f});
}

TEST(MixedRoute, MonoWithoutAMaskReachesBothSidesAtFullLevel) {
    expectMixed(formatOf(1), formatOf(2), {0.5f, -0.25f}, {0.5f, 0.5f, -0.25f, -0.25f});
}

TEST(MixedRoute, MonoWithAStereoMaskReachesTheLeftOnly) {
    expectMixed(formatOf(1, 0x3), formatOf(2), {0.5f, -0.25f}, {0.5f, 0, -0.25f, 0});
}

TEST(MixedRoute, QuadWithSidesToQuadWithBacksFoldsTheSidesToTheFrontAndLeavesTheBackSilent) {
    const Samples quad = {0.1f, 0.2f, 0.3f, 0.4f};

    expectMixed(formatOf(4, 0x603), formatOf(4, 0x33), quad,
                {0.1f + 0.3f * neighbour, 0.2f + 0.4f * neighbour, 0, 0});
}

TEST(MixedRoute, QuadWithBacksToQuadWithSidesMovesTheBacksToTheSidesAtFullLevel) {
    const Samples quad = {0.1f, 0.2f, 0.3f, 0.4f};

    expectMixed(formatOf(4, 0x33), formatOf(4, 0x603), quad, quad);
}

TEST(MixedRoute, SevenPointOneToStereoFoldsAllEightChannels) {
    const Samples in = {0.11f, 0.23f, 0.37f, 0.41f, 0.53f, 0.61f, 0.71f, 0.83f};
    const float left = 0.11f + 0.71f * neighbour + 0.53f * neighbour + 0.37f * halved + 0.41f * halved;
    const float right = 0.23f + 0.83f * neighbour + 0.61f * neighbour + 0.37f * halved + 0.41f * halved;

    expectMixed(formatOf(8), formatOf(2), in, {left, right});
}

TEST(MixedRoute, StereoToMonoAddsBothSidesAtFullLevel) {
    expectMixed(formatOf(2), formatOf(1), {0.5f, 0.25f}, {0.75f});
}

TEST(MixedRoute, StereoInTheSameBufferStaysAudible) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(8), formatOf(2), kernels);
        Samples samples;
        for (int frame = 0; frame < 700; ++frame) {
            const auto value = static_cast<float>(frame + 1);
            samples.insert(samples.end(), {value, -value, 0, 0, 0, 0, 0, 0});
        }
        auto input = connectionTo(samples, 700);
        auto output = connectionTo(samples, 0);

        test::process(stream.processor, input, output, 8);

        for (std::size_t frame = 0; frame < 700; ++frame) {
            ASSERT_EQ(samples[2 * frame], static_cast<float>(frame + 1)) << "frame " << frame;
            ASSERT_EQ(samples[2 * frame + 1], -static_cast<float>(frame + 1)) << "frame " << frame;
        }
    });
}

TEST(PassedRoute, MonoToStereoIsSilentWithAnEngineThatDoesNothing) {
    expectPassed(formatOf(1), formatOf(2), {0.5f, -0.25f}, {0, 0, 0, 0});
}

TEST(PassedRoute, SevenPointOneToStereoDropsSixChannelsWithAnEngineThatDoesNothing) {
    expectPassed(formatOf(8), formatOf(2), {1, 2, 3, 4, 5, 6, 7, 8}, {1, 2});
}

TEST(PassedRoute, StereoIsUnchangedToTheBitWithAnEngineThatDoesNothing) {
    const Samples samples = {0.1f, -0.0f, 1e-42f, 3.0f};

    expectPassed(formatOf(2), formatOf(2), samples, samples);
}

TEST(EngineRoute, AnEngineThatFoldsItselfIsHeardUnmixed) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(8), formatOf(2), kernels);
        test::CallingProcessor engine([](DspBlock& block) {
            for (std::size_t k = 0; k < block.frames; ++k) {
                block.channels[FrontLeft][k] += 0.25f * block.channels[BackLeft][k];
                block.channels[FrontRight][k] += 0.25f * block.channels[BackRight][k];
            }
        });
        stream.processor.exchangeEngine(&engine);

        EXPECT_TRUE(sameBits(stream.play(Samples{1, 2, 3, 4, 5, 6, 7, 8}), Samples{2.25f, 3.5f}));

        // Without it, the fold of the processor is back.
        stream.processor.exchangeEngine(nullptr);
        EXPECT_TRUE(sameBits(stream.play(Samples{1, 0, 0, 0, 0, 0, 0, 0}), Samples{1, 0}));
        EXPECT_TRUE(sameBits(stream.play(Samples{0, 0, 1, 0, 0, 0, 0, 0}), Samples{0.5f, 0.5f}));
    });
}

}  // namespace
}  // namespace korva::rt
