#include "rt/rt_processor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <vector>

#include "tests/support/block_processors.h"
#include "tests/support/float_bits.h"
#include "tests/support/stream.h"

namespace korva::rt {
namespace {

using published::APO_BUFFER_FLAGS;
using published::BUFFER_INVALID;
using published::BUFFER_SILENT;
using published::BUFFER_VALID;
using test::CallingProcessor;
using test::connectionTo;
using test::formatOf;
using test::process;
using test::RecordingProcessor;
using test::sameBits;
using test::Stream;
using test::withEveryVersion;

/// Samples that count up from 1, so that each is found again wherever it goes.
std::vector<float> counting(std::size_t count) {
    std::vector<float> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<float>(i + 1);
    }
    return samples;
}

TEST(RtProcessor, ReportsAsManyFramesOutAsInAndBack) {
    for (const std::uint32_t frames : {0u, 1u, 480u, 0xFFFFFFFFu}) {
        EXPECT_EQ(RtProcessor::CalcInputFrames(frames), frames);
        EXPECT_EQ(RtProcessor::CalcOutputFrames(frames), frames);
    }
}

TEST(RtProcessor, CutsAThousandFramesIntoABlockOf512AndOneOf488) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        RecordingProcessor engine;
        stream.processor.exchangeEngine(&engine);
        const auto samples = counting(2000);

        const auto output = stream.play(samples);

        ASSERT_EQ(engine.blocks.size(), 2u);
        EXPECT_EQ(engine.blocks[0].record.frames, 512u);
        EXPECT_EQ(engine.blocks[1].record.frames, 488u);
        EXPECT_EQ(engine.blocks[1].planes[FrontLeft][0], samples[1024]);
        EXPECT_EQ(engine.blocks[1].planes[FrontRight][487], samples[1999]);
        EXPECT_TRUE(sameBits(output, samples));
    });
}

TEST(RtProcessor, RunsOneBlockForExactly512FramesAndNoneForNone) {
    Stream stream(formatOf(2), formatOf(2));
    RecordingProcessor engine;
    stream.processor.exchangeEngine(&engine);

    stream.play(counting(1024));
    ASSERT_EQ(engine.blocks.size(), 1u);
    EXPECT_EQ(engine.blocks[0].record.frames, 512u);

    std::vector<float> samples(2, 5.0f);
    auto input = connectionTo(samples, 0);
    auto output = connectionTo(samples, 0);
    process(stream.processor, input, output);
    EXPECT_EQ(engine.blocks.size(), 1u);
}

TEST(RtProcessor, SetsFlagAndCountForNoFrames) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        std::vector<float> samples(2, 5.0f);
        auto input = connectionTo(samples, 0);
        auto output = connectionTo(samples, 99, BUFFER_INVALID);

        process(stream.processor, input, output);

        EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
        EXPECT_EQ(output.u32ValidFrameCount, 0u);
        EXPECT_EQ(stream.processor.lastFrames.get(), 0u);
        EXPECT_TRUE(sameBits(samples, std::vector<float>(2, 5.0f)));
    });
}

TEST(RtProcessor, TellsTheEngineWhatABlockHolds) {
    Stream stream(formatOf(6, 0x3F), formatOf(2));
    RecordingProcessor engine;
    stream.processor.exchangeEngine(&engine);

    stream.play(counting(6));

    ASSERT_EQ(engine.blocks.size(), 1u);
    const DspBlock& block = engine.blocks[0].record;
    EXPECT_EQ(block.maxChannels, 8u);
    EXPECT_EQ(block.maxFrames, 512u);
    EXPECT_EQ(block.inChannels, 6u);
    EXPECT_EQ(block.outChannels, 2u);
    EXPECT_EQ(block.frames, 1u);
    EXPECT_EQ(block.reserved, 0u);
}

TEST(RtProcessor, PutsEachChannelOnItsPlaneAndSilenceOnTheRest) {
    Stream stream(formatOf(4, 0x603), formatOf(2));
    RecordingProcessor engine;
    stream.processor.exchangeEngine(&engine);

    stream.play(std::vector<float>{1, 2, 3, 4});

    const auto& planes = engine.blocks.at(0).planes;
    const std::array<float, planeCount> expected = {1, 2, 0, 0, 0, 0, 3, 4};
    for (std::size_t plane = 0; plane < planeCount; ++plane) {
        EXPECT_EQ(planes[plane][0], expected[plane]) << "plane " << plane;
    }
}

TEST(RtProcessor, LetsTheLaterOfTwoChannelsOnOnePlaneWin) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(4, 0x107), formatOf(3, 0x7), kernels);

        const auto output = stream.play(std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8});

        EXPECT_TRUE(sameBits(output, std::vector<float>{1, 2, 4, 5, 6, 8}));
    });
}

TEST(RtProcessor, GivesTheSamePlaneToEachOutputChannelOnIt) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(3, 0x7), formatOf(4, 0x107), kernels);

        const auto output = stream.play(std::vector<float>{1, 2, 3, 4, 5, 6});

        EXPECT_TRUE(sameBits(output, std::vector<float>{1, 2, 3, 3, 4, 5, 6, 6}));
    });
}

TEST(RtProcessor, HandsOverSilentPlanesWhateverTheLastBlockLeftThere) {
    Stream stream(formatOf(1, 0x1), formatOf(2));
    float largest = -1.0f;
    CallingProcessor engine([&](DspBlock& block) {
        for (std::size_t plane = 0; plane < planeCount; ++plane) {
            for (std::size_t k = 0; k < block.frames; ++k) {
                largest = std::max(largest, block.channels[plane][k]);
                block.channels[plane][k] = 99.0f;
            }
        }
    });
    stream.processor.exchangeEngine(&engine);

    stream.play(std::vector<float>(700, 0.0f));
    stream.play(std::vector<float>(512, 0.0f));

    EXPECT_EQ(largest, 0.0f);
}

TEST(RtProcessor, ProcessesASilentInputAsZerosAndCallsTheOutputValid) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        RecordingProcessor engine;
        for (BlockProcessor* host :
             {static_cast<BlockProcessor*>(nullptr), static_cast<BlockProcessor*>(&engine)}) {
            stream.processor.exchangeEngine(host);
            std::vector<float> garbage(20, 3.0f);
            std::vector<float> target(20, 7.0f);
            auto input = connectionTo(garbage, 10, BUFFER_SILENT);
            auto output = connectionTo(target, 0);

            process(stream.processor, input, output, 2);

            EXPECT_TRUE(sameBits(target, std::vector<float>(20, 0.0f)));
            EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
            EXPECT_EQ(output.u32ValidFrameCount, 10u);
        }
        ASSERT_EQ(engine.blocks.size(), 1u);
        EXPECT_TRUE(sameBits(engine.blocks[0].planes[FrontLeft], std::vector<float>(10, 0.0f)));
    });
}

TEST(RtProcessor, LetsTheEngineSoundOverASilentInput) {
    Stream stream(formatOf(2), formatOf(2));
    CallingProcessor engine([](DspBlock& block) { block.channels[FrontLeft][0] = 0.5f; });
    stream.processor.exchangeEngine(&engine);

    EXPECT_TRUE(sameBits(stream.playSilence(2), std::vector<float>{0.5f, 0, 0, 0}));
    EXPECT_EQ(stream.output.u32BufferFlags, BUFFER_VALID);
}

TEST(RtProcessor, TakesAnInputWithoutABufferForSilence) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        std::vector<float> target(6, 7.0f);
        auto input = connectionTo({}, 3);
        auto output = connectionTo(target, 0);

        process(stream.processor, input, output, 2);

        EXPECT_TRUE(sameBits(target, std::vector<float>(6, 0.0f)));
        EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
    });
}

TEST(RtProcessor, SkipsProcessingForASilentOutputAndZerosIt) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        RecordingProcessor engine;
        stream.processor.exchangeEngine(&engine);
        const auto samples = counting(6);
        std::vector<float> target(8, 7.0f);
        auto input = connectionTo(samples, 3);
        auto output = connectionTo(target, 0, BUFFER_SILENT);

        process(stream.processor, input, output, 2);

        EXPECT_TRUE(sameBits(target, std::vector<float>{0, 0, 0, 0, 0, 0, 7, 7}));
        EXPECT_EQ(output.u32BufferFlags, BUFFER_SILENT);
        EXPECT_EQ(output.u32ValidFrameCount, 3u);
        EXPECT_TRUE(engine.blocks.empty());
    });
}

TEST(RtProcessor, SkipsProcessingForAnOutputWithoutABuffer) {
    Stream stream(formatOf(2), formatOf(2));
    RecordingProcessor engine;
    stream.processor.exchangeEngine(&engine);
    const auto samples = counting(6);
    auto input = connectionTo(samples, 3);
    auto output = connectionTo({}, 0);

    process(stream.processor, input, output, 2);

    EXPECT_EQ(output.u32BufferFlags, BUFFER_SILENT);
    EXPECT_EQ(output.u32ValidFrameCount, 3u);
    EXPECT_TRUE(engine.blocks.empty());
}

TEST(RtProcessor, ZerosNoSilentOutputThatIsTheInputsBuffer) {
    Stream stream(formatOf(2), formatOf(2));
    auto samples = counting(6);
    auto input = connectionTo(samples, 3);
    auto output = connectionTo(samples, 0, BUFFER_SILENT);

    process(stream.processor, input, output, 2);

    EXPECT_TRUE(sameBits(samples, counting(6)));
    EXPECT_EQ(output.u32BufferFlags, BUFFER_SILENT);
}

TEST(RtProcessor, WritesNoSampleOfASilentOutputWithoutSamplesPerFrame) {
    Stream stream(formatOf(2), formatOf(2));
    const auto samples = counting(6);
    std::vector<float> target(6, 7.0f);
    auto input = connectionTo(samples, 3);
    auto output = connectionTo(target, 0, BUFFER_SILENT);

    process(stream.processor, input, output, 0);

    EXPECT_TRUE(sameBits(target, std::vector<float>(6, 7.0f)));
    EXPECT_EQ(output.u32BufferFlags, BUFFER_SILENT);
}

TEST(RtProcessor, CopiesWhatPassesThroughByTheSamplesPerFrame) {
    Stream stream(formatOf(8), formatOf(2));
    RecordingProcessor engine;
    stream.processor.exchangeEngine(&engine);
    stream.processor.passThrough.set(true);
    const auto samples = counting(8);
    std::vector<float> target(8, 7.0f);
    auto input = connectionTo(samples, 2);
    auto output = connectionTo(target, 0, BUFFER_INVALID);

    process(stream.processor, input, output, 3);

    EXPECT_TRUE(sameBits(target, std::vector<float>{1, 2, 3, 4, 5, 6, 7, 7}));
    EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
    EXPECT_EQ(output.u32ValidFrameCount, 2u);
    EXPECT_TRUE(engine.blocks.empty());
}

TEST(RtProcessor, ZerosTheOutputOfASilentInputThatPassesThrough) {
    Stream stream(formatOf(2), formatOf(2));
    stream.processor.passThrough.set(true);
    const auto samples = counting(4);
    std::vector<float> target(4, 7.0f);
    auto input = connectionTo(samples, 2, BUFFER_SILENT);
    auto output = connectionTo(target, 0);

    process(stream.processor, input, output, 2);

    EXPECT_TRUE(sameBits(target, std::vector<float>(4, 0.0f)));
    EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
}

TEST(RtProcessor, SetsOnlyFlagAndCountForWhatPassesThroughInPlace) {
    Stream stream(formatOf(2), formatOf(2));
    stream.processor.passThrough.set(true);
    auto samples = counting(4);
    for (const auto flags : {BUFFER_VALID, BUFFER_SILENT}) {
        auto input = connectionTo(samples, 2, flags);
        auto output = connectionTo(samples, 9, BUFFER_INVALID);

        process(stream.processor, input, output, 2);

        EXPECT_TRUE(sameBits(samples, counting(4)));
        EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
        EXPECT_EQ(output.u32ValidFrameCount, 2u);
    }
}

TEST(RtProcessor, ChangesNothingForAnInputThatIsNeitherValidNorSilent) {
    for (const std::uint32_t flags : {0u, 3u, 4u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(flags);
        Stream stream(formatOf(2), formatOf(2));
        RecordingProcessor engine;
        stream.processor.exchangeEngine(&engine);
        stream.processor.lastFrames.set(123);
        stream.processor.lastProcessNs.set(456);
        const auto samples = counting(4);
        std::vector<float> target(4, 7.0f);
        auto input = connectionTo(samples, 2, static_cast<APO_BUFFER_FLAGS>(flags));
        auto output = connectionTo(target, 9, BUFFER_INVALID);

        process(stream.processor, input, output, 2);

        EXPECT_TRUE(sameBits(target, std::vector<float>(4, 7.0f)));
        EXPECT_EQ(output.u32BufferFlags, BUFFER_INVALID);
        EXPECT_EQ(output.u32ValidFrameCount, 9u);
        EXPECT_EQ(stream.processor.lastFrames.get(), 123u);
        EXPECT_EQ(stream.processor.lastProcessNs.get(), 456u);
        EXPECT_FALSE(stream.processor.started.get());
        EXPECT_TRUE(engine.blocks.empty());
    }
}

TEST(RtProcessor, ChangesNothingWithoutAConnection) {
    Stream stream(formatOf(2), formatOf(2));
    stream.processor.lastFrames.set(123);
    const auto samples = counting(4);
    std::vector<float> target(4, 7.0f);
    auto input = connectionTo(samples, 2);
    auto output = connectionTo(target, 9, BUFFER_INVALID);
    APO_CONNECTION_PROPERTY* inputs[] = {&input};
    APO_CONNECTION_PROPERTY* outputs[] = {&output};

    stream.processor.Process(0, inputs, 1, outputs, 2);
    stream.processor.Process(1, inputs, 0, outputs, 2);
    stream.processor.Process(0, nullptr, 0, nullptr, 2);

    EXPECT_TRUE(sameBits(target, std::vector<float>(4, 7.0f)));
    EXPECT_EQ(output.u32BufferFlags, BUFFER_INVALID);
    EXPECT_EQ(stream.processor.lastFrames.get(), 123u);
    EXPECT_FALSE(stream.processor.started.get());
}

TEST(RtProcessor, ReadsTheFirstConnectionOfEachSideOnly) {
    Stream stream(formatOf(2), formatOf(2));
    const auto samples = counting(4);
    std::vector<float> target(4, 7.0f);
    std::vector<float> otherTarget(4, 8.0f);
    auto input = connectionTo(samples, 2);
    auto output = connectionTo(target, 0);
    auto otherInput = connectionTo(samples, 1, BUFFER_INVALID);
    auto otherOutput = connectionTo(otherTarget, 9, BUFFER_INVALID);
    APO_CONNECTION_PROPERTY* inputs[] = {&input, &otherInput};
    APO_CONNECTION_PROPERTY* outputs[] = {&output, &otherOutput};

    stream.processor.Process(2, inputs, 2, outputs, 2);

    EXPECT_TRUE(sameBits(target, samples));
    EXPECT_TRUE(sameBits(otherTarget, std::vector<float>(4, 8.0f)));
    EXPECT_EQ(otherOutput.u32ValidFrameCount, 9u);
}

TEST(RtProcessor, NeverReadsASignature) {
    Stream stream(formatOf(2), formatOf(2));
    const auto samples = counting(4);
    std::vector<float> target(4, 7.0f);
    auto input = connectionTo(samples, 2);
    auto output = connectionTo(target, 0);
    input.u32Signature = 0;
    output.u32Signature = 1;

    process(stream.processor, input, output, 2);

    EXPECT_TRUE(sameBits(target, samples));
    EXPECT_EQ(output.u32Signature, 1u);
}

TEST(RtProcessor, ClampsMoreThanEightChannelsAndStridesByTheClampedCount) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(10, 0x63F), formatOf(12, 0x63F), kernels);
        stream.processor.inFormat.set(formatOf(8));
        stream.processor.outFormat.set(formatOf(8));
        RecordingProcessor engine;
        stream.processor.exchangeEngine(&engine);
        const auto samples = counting(30);
        std::vector<float> target(36, 7.0f);
        auto input = connectionTo(samples, 3);
        auto output = connectionTo(target, 0);

        process(stream.processor, input, output, 10);

        auto expected = counting(24);
        expected.resize(36, 7.0f);
        EXPECT_TRUE(sameBits(target, expected));
        EXPECT_EQ(engine.blocks.at(0).record.inChannels, 8u);
        EXPECT_EQ(engine.blocks.at(0).record.outChannels, 8u);
    });
}

TEST(RtProcessor, TakesNegativeCountsForNoChannels) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        stream.processor.inputChannelCount.set(-2);
        EXPECT_TRUE(sameBits(stream.play(counting(4)), std::vector<float>(4, 0.0f)));

        stream.processor.inputChannelCount.set(2);
        stream.processor.outputChannelCount.set(-1);
        EXPECT_TRUE(sameBits(stream.play(counting(4)), std::vector<float>(4, Stream::untouched)));
        EXPECT_EQ(stream.output.u32BufferFlags, BUFFER_VALID);
    });
}

TEST(RtProcessor, TakesTheChannelCountsFromTheirOwnWordsAndNotFromTheFormats) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        stream.processor.inputChannelCount.set(1);
        stream.processor.outputChannelCount.set(1);
        std::vector<float> samples = {1, 2, 3};
        std::vector<float> target(4, 7.0f);
        auto input = connectionTo(samples, 3);
        auto output = connectionTo(target, 0);

        process(stream.processor, input, output, 2);

        EXPECT_TRUE(sameBits(target, std::vector<float>{1, 2, 3, 7}));
    });
}

TEST(RtProcessor, KeepsTheFrameCountOfTheLastInput) {
    Stream stream(formatOf(2), formatOf(2));

    stream.play(counting(20));
    EXPECT_EQ(stream.processor.lastFrames.get(), 10u);

    stream.playSilence(700);
    EXPECT_EQ(stream.processor.lastFrames.get(), 700u);

    stream.processor.passThrough.set(true);
    stream.play(counting(6));
    EXPECT_EQ(stream.processor.lastFrames.get(), 3u);
}

TEST(RtProcessor, MeasuresHowLongACallTook) {
    using Clock = std::chrono::steady_clock;
    Stream stream(formatOf(2), formatOf(2));
    CallingProcessor engine([](DspBlock&) {
        const auto begin = Clock::now();
        while (Clock::now() - begin < std::chrono::microseconds(200)) {
        }
    });
    stream.processor.exchangeEngine(&engine);

    const auto before = Clock::now();
    stream.play(counting(4));
    const auto elapsed = Clock::now() - before;

    EXPECT_GE(stream.processor.lastProcessNs.get(), 200'000u);
    EXPECT_LE(
        stream.processor.lastProcessNs.get(),
        static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(elapsed).count()));
}

TEST(RtProcessor, GivesBackTheEngineThatItHad) {
    RtProcessor processor;
    RecordingProcessor first;
    RecordingProcessor second;

    EXPECT_EQ(processor.exchangeEngine(&first), nullptr);
    EXPECT_EQ(processor.exchangeEngine(&second), &first);
    EXPECT_EQ(processor.exchangeEngine(nullptr), &second);
    EXPECT_EQ(processor.exchangeEngine(nullptr), nullptr);
}

TEST(RtProcessor, RunsTheEngineThatItWasGivenLast) {
    Stream stream(formatOf(2), formatOf(2));
    RecordingProcessor first;
    RecordingProcessor second;
    stream.processor.exchangeEngine(&first);
    stream.play(counting(2));

    stream.processor.exchangeEngine(&second);
    stream.play(counting(2));
    stream.play(counting(2));

    EXPECT_EQ(first.blocks.size(), 1u);
    EXPECT_EQ(second.blocks.size(), 2u);
}

TEST(RtProcessor, MapsTheChannelsOfTheFormatThatIsSetAtEachCall) {
    withEveryVersion([](const Kernels& kernels) {
        Stream stream(formatOf(2), formatOf(2), kernels);
        EXPECT_TRUE(sameBits(stream.play(counting(4)), std::vector<float>{1, 2, 3, 4}));

        EngineFormat swapped = formatOf(2);
        swapped.planeOfChannel = {1, 0};
        stream.processor.outFormat.set(swapped);

        EXPECT_TRUE(sameBits(stream.play(counting(4)), std::vector<float>{2, 1, 4, 3}));
    });
}

}  // namespace
}  // namespace korva::rt
