// Meters, ramp and taps inside a processing call.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

#include "rt/rt_processor.h"
#include "tests/support/block_processors.h"
#include "tests/support/float_bits.h"
#include "tests/support/stream.h"

namespace korva::rt {
namespace {

using published::BUFFER_SILENT;
using test::connectionTo;
using test::formatOf;
using test::sameBits;
using test::ScalingProcessor;
using test::Stream;
using test::withEveryVersion;

using Samples = std::vector<float>;

TEST(RtProcessorMeters, ReadTheInputBeforeTheEngineAndTheOutputAfterIt) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        ScalingProcessor engine(0.25f);
        stream.processor.exchangeEngine(&engine);
        stream.processor.levelMetersEnabled.set(1);

        stream.play(Samples{0.5f, -1.0f});

        EXPECT_EQ(stream.processor.inputPeak[FrontLeft].get(), 0.5f);
        EXPECT_EQ(stream.processor.inputPeak[FrontRight].get(), 1.0f);
        EXPECT_EQ(stream.processor.outputPeak[FrontLeft].get(), 0.125f);
        EXPECT_EQ(stream.processor.outputPeak[FrontRight].get(), 0.25f);
    });
}

TEST(RtProcessorMeters, ReadTheInputBeforeTheFoldAndTheOutputAfterIt) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(6, 0x60F), formatOf(2), kernels);
        stream.processor.levelMetersEnabled.set(1);

        stream.play(Samples{0.5f, 0.25f, 0.5f, 0, 0, 0});

        EXPECT_EQ(stream.processor.inputPeak[FrontLeft].get(), 0.5f);
        EXPECT_EQ(stream.processor.inputPeak[FrontCenter].get(), 0.5f);
        EXPECT_EQ(stream.processor.outputPeak[FrontLeft].get(), 0.75f);
        EXPECT_EQ(stream.processor.outputPeak[FrontRight].get(), 0.5f);
        EXPECT_EQ(stream.processor.outputPeak[FrontCenter].get(), 0.0f);
    });
}

TEST(RtProcessorMeters, ReadTheOutputAfterTheRamp) {
    Stream stream(formatOf(2), formatOf(2));
    stream.processor.levelMetersEnabled.set(1);
    stream.processor.started.set(true);
    stream.processor.gainRamp.floorGain = 0.25f;
    stream.processor.gainRamp.gain = 0.5f;
    stream.processor.gainRamp.step = 0.5f;

    stream.play(Samples{1, 1});

    EXPECT_EQ(stream.processor.inputPeak[FrontLeft].get(), 1.0f);
    EXPECT_EQ(stream.processor.outputPeak[FrontLeft].get(), 0.5f);
}

TEST(RtProcessorMeters, StandStillWhileTheyAreOff) {
    Stream stream(formatOf(2), formatOf(2));

    stream.play(Samples{1, 1});

    EXPECT_EQ(stream.processor.inputPeak[FrontLeft].get(), 0.0f);
    EXPECT_EQ(stream.processor.outputPeak[FrontLeft].get(), 0.0f);
}

TEST(RtProcessorMeters, RunForAnyWordThatIsNotZero) {
    for (const std::uint32_t enabled : {1u, 2u, 0x100u, 0x80000000u}) {
        Stream stream(formatOf(2), formatOf(2));
        stream.processor.levelMetersEnabled.set(enabled);

        stream.play(Samples{1, 1});

        EXPECT_EQ(stream.processor.inputPeak[FrontLeft].get(), 1.0f) << "word " << enabled;
    }
}

TEST(RtProcessorMeters, HoldTheirLastLevelsWhileSoundPassesThrough) {
    Stream stream(formatOf(2), formatOf(2));
    stream.processor.levelMetersEnabled.set(1);
    stream.play(Samples{0.5f, 0.5f});

    stream.processor.passThrough.set(true);
    stream.play(Samples(2000, 1.0f));

    EXPECT_EQ(stream.processor.inputPeak[FrontLeft].get(), 0.5f);
    EXPECT_EQ(stream.processor.outputPeak[FrontLeft].get(), 0.5f);
}

TEST(RtProcessorMeters, FallInSilenceOverBlocksAndCalls) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        stream.processor.levelMetersEnabled.set(1);
        stream.play(Samples{1, 0.5f});
        float peak = 1.0f;
        float step = 0.00001f;

        for (const std::uint32_t frames : {1u, 600u, 3u}) {
            stream.playSilence(frames);
            for (std::uint32_t k = 0; k < frames; ++k) {
                peak -= step;
                step *= 1.0003f;
            }
            EXPECT_EQ(stream.processor.inputPeak[FrontLeft].get(), peak) << "after " << frames;
            EXPECT_EQ(stream.processor.outputPeak[FrontLeft].get(), peak) << "after " << frames;
        }
    });
}

TEST(RtProcessorMeters, UseTheReleaseThatIsSet) {
    Stream stream(formatOf(2), formatOf(2));
    stream.processor.levelMetersEnabled.set(1);
    stream.processor.meterReleaseFloor.set(0.25f);
    stream.processor.meterReleaseGrowth.set(2.0f);
    stream.play(Samples{1, 1});

    stream.playSilence(2);

    EXPECT_EQ(stream.processor.inputPeak[FrontLeft].get(), 0.25f);
}

TEST(RtProcessorMeters, ForgetTheirLevelsAtAReset) {
    Stream stream(formatOf(8), formatOf(8));
    stream.processor.levelMetersEnabled.set(1);
    stream.play(Samples(8, 1.0f));

    stream.processor.resetMeters();
    for (std::size_t plane = 0; plane < planeCount; ++plane) {
        EXPECT_EQ(stream.processor.inputPeak[plane].get(), 0.0f);
        EXPECT_EQ(stream.processor.outputPeak[plane].get(), 0.0f);
    }

    // A follower that went on from where it was would show its level again.
    stream.playSilence(1);
    for (std::size_t plane = 0; plane < planeCount; ++plane) {
        EXPECT_EQ(stream.processor.inputPeak[plane].get(), 0.0f);
        EXPECT_EQ(stream.processor.outputPeak[plane].get(), 0.0f);
    }
}

TEST(RtProcessorRamp, AppliesToWhatTheEngineGave) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        ScalingProcessor engine(2.0f);
        stream.processor.exchangeEngine(&engine);
        stream.processor.started.set(true);
        stream.processor.gainRamp.floorGain = 0.25f;
        stream.processor.gainRamp.step = 0.5f;

        EXPECT_TRUE(sameBits(stream.play(Samples(8, 1.0f)), Samples{2, 2, 1, 1, 0.5f, 0.5f, 0.5f, 0.5f}));
        EXPECT_TRUE(stream.processor.gainRamp.reachedFloor);
    });
}

TEST(RtProcessorRamp, AppliesToTheFold) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        stream.processor.started.set(true);
        stream.processor.gainRamp.floorGain = 0.25f;
        stream.processor.gainRamp.step = 0.5f;

        EXPECT_TRUE(sameBits(stream.play(Samples(4, 1.0f)), Samples{1, 1, 0.5f, 0.5f}));
    });
}

TEST(RtProcessorRamp, CrossfadesWithTheInputAsItCame) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        ScalingProcessor engine(3.0f);
        stream.processor.exchangeEngine(&engine);
        stream.processor.started.set(true);
        stream.processor.gainRamp.floorGain = 0.25f;
        stream.processor.gainRamp.step = 0.5f;
        stream.processor.gainRamp.crossfade = 1;

        EXPECT_TRUE(sameBits(stream.play(Samples(8, 1.0f)), Samples{3, 3, 2, 2, 1.5f, 1.5f, 1.5f, 1.5f}));
    });
}

TEST(RtProcessorRamp, WalksAsManyPlanesAsTheOutputHasChannelsAndNotTheirMap) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(4, 0x603), formatOf(4, 0x603), kernels);
        test::PassingProcessor engine;
        stream.processor.exchangeEngine(&engine);
        stream.processor.started.set(true);
        stream.processor.gainRamp.floorGain = 0.25f;
        stream.processor.gainRamp.gain = 0.5f;
        stream.processor.gainRamp.step = 0.5f;

        // The sides lie on planes 6 and 7, past the four that are walked.
        EXPECT_TRUE(sameBits(stream.play(Samples{1, 1, 1, 1}), Samples{0.5f, 0.5f, 1, 1}));
    });
}

TEST(RtProcessorRamp, IsLeftOutAltogetherInHardwareMode) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        stream.processor.started.set(true);
        stream.processor.hardwareMode.set(true);
        stream.processor.gainRamp.step = 0.5f;

        EXPECT_TRUE(sameBits(stream.play(Samples(8, 1.0f)), Samples(8, 1.0f)));
        EXPECT_EQ(stream.processor.gainRamp.gain, 1.0f);
    });
}

TEST(RtProcessorRamp, StandsStillWhileSoundPassesThrough) {
    Stream stream(formatOf(2), formatOf(2));
    stream.processor.started.set(true);
    stream.processor.passThrough.set(true);
    stream.processor.gainRamp.step = 0.5f;

    EXPECT_TRUE(sameBits(stream.play(Samples(4, 1.0f)), Samples(4, 1.0f)));
    EXPECT_EQ(stream.processor.gainRamp.gain, 1.0f);
}

TEST(RtProcessorStart, PutsAFallingRampOnItsFloorWithTheFirstCallAfterALock) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        stream.processor.gainRamp.floorGain = 0.25f;
        stream.processor.gainRamp.step = 0.5f;

        EXPECT_TRUE(sameBits(stream.play(Samples(4, 1.0f)), Samples(4, 0.25f)));
        EXPECT_TRUE(stream.processor.started.get());

        stream.processor.gainRamp.gain = 1.0f;
        EXPECT_TRUE(sameBits(stream.play(Samples(2, 1.0f)), Samples(2, 1.0f)));

        stream.processor.started.set(false);
        stream.processor.gainRamp.gain = 1.0f;
        EXPECT_TRUE(sameBits(stream.play(Samples(2, 1.0f)), Samples(2, 0.25f)));
    });
}

TEST(RtProcessorStart, LeavesARisingRampAndAStandingOneWhereTheyAre) {
    for (const float step : {1.0f, 1.5f}) {
        Stream stream(formatOf(2), formatOf(2));
        stream.processor.gainRamp.gain = 0.5f;
        stream.processor.gainRamp.step = step;

        stream.play(Samples(2, 1.0f));

        EXPECT_EQ(stream.processor.gainRamp.gain, step == 1.0f ? 0.5f : 0.75f);
        EXPECT_TRUE(stream.processor.started.get());
    }
}

TEST(RtProcessorStart, ComesWithACallThatPassesSoundThroughToo) {
    Stream stream(formatOf(2), formatOf(2));
    stream.processor.passThrough.set(true);
    stream.processor.gainRamp.floorGain = 0.25f;
    stream.processor.gainRamp.step = 0.5f;

    stream.play(Samples(2, 1.0f));

    EXPECT_TRUE(stream.processor.started.get());
    EXPECT_EQ(stream.processor.gainRamp.gain, 0.25f);
}

/// A ring of sevens, attached as a tap.
class Ring {
public:
    explicit Ring(std::size_t capacity) : samples(capacity, 7.0f) {}

    [[nodiscard]] SampleTap tap() {
        return {.samples = samples.data(),
                .writeIndex = &index,
                .capacity = static_cast<std::int32_t>(samples.size())};
    }

    Samples samples;
    std::atomic<std::int32_t> index{0};
};

TEST(RtProcessorTaps, AreNotAttachedAtFirst) {
    const RtProcessor processor;

    EXPECT_EQ(processor.inputTap.samples, nullptr);
    EXPECT_EQ(processor.outputTap.samples, nullptr);
}

TEST(RtProcessorTaps, GetAsManyInputFramesAsTheOutputConnectionHeldBeforeTheCall) {
    Stream stream(formatOf(2), formatOf(2));
    Ring ring(8);
    stream.processor.inputTap = ring.tap();
    const Samples samples = {1, 2, 3, 4, 5, 6};
    Samples target(6);
    auto input = connectionTo(samples, 3);
    auto output = connectionTo(target, 2);

    test::process(stream.processor, input, output, 2);

    EXPECT_TRUE(sameBits(ring.samples, Samples{1, 2, 3, 4, 7, 7, 7, 7}));
    EXPECT_EQ(ring.index, 4);

    // This call left 3 in the output connection, so the next gets three frames.
    test::process(stream.processor, input, output, 2);
    EXPECT_TRUE(sameBits(ring.samples, Samples{5, 6, 3, 4, 1, 2, 3, 4}));
    EXPECT_EQ(ring.index, 2);
}

TEST(RtProcessorTaps, GetZerosOfASilentInput) {
    Stream stream(formatOf(2), formatOf(2));
    Ring ring(4);
    stream.processor.inputTap = ring.tap();
    const Samples samples = {1, 2};
    Samples target(2);
    auto input = connectionTo(samples, 1, BUFFER_SILENT);
    auto output = connectionTo(target, 1);

    test::process(stream.processor, input, output, 2);

    EXPECT_TRUE(sameBits(ring.samples, Samples{0, 0, 7, 7}));
}

TEST(RtProcessorTaps, CountInputSamplesByTheUnclampedChannelCount) {
    Stream stream(formatOf(2), formatOf(2));
    stream.processor.inputChannelCount.set(10);
    Ring ring(32);
    stream.processor.inputTap = ring.tap();
    const Samples samples(10, 1.0f);
    Samples target(8);
    auto input = connectionTo(samples, 1);
    auto output = connectionTo(target, 1);

    test::process(stream.processor, input, output, 2);

    EXPECT_EQ(ring.index, 10);

    stream.processor.inputChannelCount.set(-1);
    output.u32ValidFrameCount = 1;
    test::process(stream.processor, input, output, 2);
    EXPECT_EQ(ring.index, 10);
}

TEST(RtProcessorTaps, GetTheInputBeforeAnInPlaceCallChangesIt) {
    Stream stream(formatOf(2), formatOf(2));
    ScalingProcessor engine(2.0f);
    stream.processor.exchangeEngine(&engine);
    Ring ring(4);
    stream.processor.inputTap = ring.tap();
    Samples samples = {1, 2};
    auto input = connectionTo(samples, 1);
    auto output = connectionTo(samples, 1);

    test::process(stream.processor, input, output, 2);

    EXPECT_TRUE(sameBits(ring.samples, Samples{1, 2, 7, 7}));
    EXPECT_TRUE(sameBits(samples, Samples{2, 4}));
}

TEST(RtProcessorTaps, GetAsManyOutputSamplesAFrameAsTheMaskSaysAsANumber) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        Ring ring(8);
        stream.processor.outputTap = ring.tap();
        const Samples samples = {1, 2, 3, 4};
        Samples target(8, 9.0f);  // the mask 3 counts six samples for two frames of two channels
        auto input = connectionTo(samples, 2);
        auto output = connectionTo(target, 0);

        test::process(stream.processor, input, output, 2);

        EXPECT_TRUE(sameBits(ring.samples, Samples{1, 2, 3, 4, 9, 9, 7, 7}));
        EXPECT_EQ(ring.index, 6);
    });
}

TEST(RtProcessorTaps, GetTheOutputAfterTheEngine) {
    Stream stream(formatOf(2), formatOf(2));
    ScalingProcessor engine(2.0f);
    stream.processor.exchangeEngine(&engine);
    stream.processor.outputChannelMask.set(2);
    Ring ring(4);
    stream.processor.outputTap = ring.tap();

    stream.play(Samples{1, 2});

    EXPECT_TRUE(sameBits(ring.samples, Samples{2, 4, 7, 7}));
}

TEST(RtProcessorTaps, RunWhileSoundPassesThrough) {
    Stream stream(formatOf(2), formatOf(2));
    stream.processor.passThrough.set(true);
    stream.processor.outputChannelMask.set(2);
    Ring inputRing(4);
    Ring outputRing(4);
    stream.processor.inputTap = inputRing.tap();
    stream.processor.outputTap = outputRing.tap();
    const Samples samples = {1, 2};
    Samples target(2);
    auto input = connectionTo(samples, 1);
    auto output = connectionTo(target, 1);

    test::process(stream.processor, input, output, 2);

    EXPECT_TRUE(sameBits(inputRing.samples, Samples{1, 2, 7, 7}));
    EXPECT_TRUE(sameBits(outputRing.samples, Samples{1, 2, 7, 7}));
}

TEST(RtProcessorTaps, GetNothingOfACallThatDoesNothing) {
    Stream stream(formatOf(2), formatOf(2));
    Ring ring(4);
    stream.processor.inputTap = ring.tap();
    const Samples samples = {1, 2};
    Samples target(2);
    auto input = connectionTo(samples, 1, published::BUFFER_INVALID);
    auto output = connectionTo(target, 1);

    test::process(stream.processor, input, output, 2);

    EXPECT_TRUE(sameBits(ring.samples, Samples(4, 7.0f)));
    EXPECT_EQ(ring.index, 0);
}

}  // namespace
}  // namespace korva::rt
