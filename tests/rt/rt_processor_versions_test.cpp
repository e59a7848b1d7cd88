// Whole processing calls of every version of the loops, against the call written down step by step.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "rt/rt_processor.h"
#include "tests/support/block_processors.h"
#include "tests/support/float_bits.h"
#include "tests/support/guarded_samples.h"
#include "tests/support/process_model.h"
#include "tests/support/random_samples.h"
#include "tests/support/stream.h"

namespace korva::rt {
namespace {

using published::BUFFER_SILENT;
using published::BUFFER_VALID;
using test::connectionTo;
using test::Content;
using test::GuardedSamples;
using test::RandomSamples;
using test::sameBits;

struct Layout {
    std::int32_t channels;
    std::uint32_t mask;
};

constexpr std::array<Layout, 17> layouts = {{{1, 0x4},
                                             {1, 0x3},
                                             {2, 0x3},
                                             {2, 0x30},
                                             {2, 0x40},
                                             {3, 0x7},
                                             {4, 0x603},
                                             {4, 0x33},
                                             {4, 0x107},
                                             {5, 0x607},
                                             {6, 0x3F},
                                             {6, 0x60F},
                                             {7, 0},
                                             {8, 0x63F},
                                             {8, 0xFF},
                                             {8, 0x1B07},
                                             {2, 0x63F}}};

/// One call's circumstances, drawn at random but for what a test sets.
struct Circumstances {
    explicit Circumstances(RandomSamples& random)
        : frames(random.below(1031)),
          silentInput(random.below(5) == 0),
          nullInput(random.below(7) == 0),
          silentOutput(random.below(9) == 0),
          inPlace(random.below(3) == 0),
          shift(random.below(4) == 0 ? random.below(mostShift + 1) : 0),
          passThrough(random.below(6) == 0),
          engine(random.below(3) == 0),
          meters(random.coin()),
          hardwareMode(random.below(4) == 0),
          newRamp(random.below(4) == 0) {}

    static constexpr std::uint32_t mostShift = 40;

    std::uint32_t frames;
    bool silentInput;
    bool nullInput;
    bool silentOutput;
    bool inPlace;
    std::uint32_t shift;  ///< How many samples after the input's start an output in its buffer begins.
    bool passThrough;
    bool engine;
    bool meters;
    bool hardwareMode;
    bool newRamp;
};

/// One stream that runs twice, in a processor and in the model of one, over the same calls.
class TwoStreams {
public:
    TwoStreams(const Kernels& kernels, const EngineFormat& in, const EngineFormat& out,
               RandomSamples& generator)
        : processor(kernels), random(generator) {
        test::lockStream(processor, in, out);
        model.inFormat = in;
        model.outFormat = out;
        model.inputChannelCount = in.channelCount;
        model.outputChannelCount = out.channelCount;
        model.meterReleaseFloor = processor.meterReleaseFloor.get();
        model.meterReleaseGrowth = processor.meterReleaseGrowth.get();
    }

    void call(const Circumstances& now, Content content) {
        set(now);
        Buffers actual(*this, now, random.below(16));
        random.fill(actual.in.samples(), content);
        random.fill(actual.out.samples(), Content::ordinary);
        Buffers expected = actual;
        runProcessor(actual, now);
        runModel(expected, now);
        ASSERT_TRUE(sameBits(actual.out.samples(), expected.out.samples())) << "output";
        ASSERT_TRUE(sameBits(actual.in.samples(), expected.in.samples())) << "input buffer";
        ASSERT_TRUE(actual.out.guardsAreWhole() && actual.in.guardsAreWhole());
        expectSameState();
    }

private:
    struct Buffers {
        Buffers(const TwoStreams& stream, const Circumstances& now, std::size_t misalignment)
            : in(now.frames * std::max(stream.inChannels(), stream.outChannels()) + now.shift, misalignment),
              out(now.frames * std::max(stream.inChannels(), stream.outChannels()), 15 - misalignment) {}
        GuardedSamples in;
        GuardedSamples out;
    };

    [[nodiscard]] std::size_t inChannels() const { return static_cast<std::size_t>(model.inputChannelCount); }
    [[nodiscard]] std::size_t outChannels() const {
        return static_cast<std::size_t>(model.outputChannelCount);
    }

    void set(const Circumstances& now) {
        processor.passThrough.set(model.passThrough = now.passThrough);
        processor.hardwareMode.set(model.hardwareMode = now.hardwareMode);
        model.levelMetersEnabled = now.meters;
        processor.levelMetersEnabled.set(now.meters ? 4 : 0);
        model.engine = now.engine ? &engine : nullptr;
        processor.exchangeEngine(model.engine);
        if (now.newRamp) {
            startRamp(processor.gainRamp);
            model.gainRamp = processor.gainRamp;
            processor.started.set(model.started = random.coin());
        }
    }

    void startRamp(GainRampState& ramp) {
        ramp = GainRampState(static_cast<float>(random.below(60)));
        ramp.crossfade = random.below(2);
        ramp.gain = 0.5f + 0.5f * static_cast<float>(random.below(5)) / 4.0f;
        ramp.step = std::array{ramp.stepUp, ramp.stepDown, 1.0f, 0.99f}[random.below(4)];
        ramp.ceilingGain = random.coin() ? 1.0f : 0.9f;
    }

    template <typename Call>
    static void withConnections(Buffers& buffers, const Circumstances& now, Call call) {
        auto input =
            connectionTo(buffers.in.samples(), now.frames, now.silentInput ? BUFFER_SILENT : BUFFER_VALID);
        if (now.nullInput) {
            input.pBuffer = 0;
        }
        auto output =
            connectionTo(now.inPlace ? buffers.in.samples().subspan(now.shift) : buffers.out.samples(), 3,
                         now.silentOutput ? BUFFER_SILENT : BUFFER_VALID);
        call(input, output);
        EXPECT_EQ(output.u32ValidFrameCount, now.frames);
        EXPECT_EQ(output.u32BufferFlags,
                  output.pBuffer == 0 || now.silentOutput ? BUFFER_SILENT : BUFFER_VALID);
    }

    void runProcessor(Buffers& buffers, const Circumstances& now) {
        withConnections(buffers, now, [&](auto& input, auto& output) {
            test::process(processor, input, output, static_cast<std::uint32_t>(inChannels()));
        });
    }

    void runModel(Buffers& buffers, const Circumstances& now) {
        withConnections(buffers, now, [&](auto& input, auto& output) {
            model.process(input, output, static_cast<std::uint32_t>(inChannels()));
        });
    }

    void expectSameState() {
        for (std::size_t plane = 0; plane < planeCount; ++plane) {
            EXPECT_EQ(test::bitsOf(processor.inputPeak[plane].get()),
                      test::bitsOf(model.inputMeter.peak[plane]))
                << "input peak of plane " << plane;
            EXPECT_EQ(test::bitsOf(processor.outputPeak[plane].get()),
                      test::bitsOf(model.outputMeter.peak[plane]))
                << "output peak of plane " << plane;
        }
        EXPECT_EQ(processor.lastFrames.get(), model.lastFrames);
        EXPECT_EQ(processor.started.get(), model.started);
        EXPECT_EQ(test::bitsOf(processor.gainRamp.gain), test::bitsOf(model.gainRamp.gain));
        EXPECT_EQ(processor.gainRamp.reachedFloor, model.gainRamp.reachedFloor);
    }

    RtProcessor processor;
    test::ProcessModel model;
    test::ScalingProcessor engine{0.75f};
    RandomSamples& random;
};

class RtProcessorVersions : public testing::TestWithParam<const Kernels*> {
protected:
    RandomSamples random;
};
INSTANTIATE_TEST_SUITE_P(EveryVersion, RtProcessorVersions,
                         testing::ValuesIn(supportedKernels().begin(), supportedKernels().end()),
                         [](const auto& parameter) { return std::string(parameter.param->name); });

EngineFormat formatOf(const Layout& layout) {
    return test::formatOf(layout.channels, layout.mask);
}

TEST_P(RtProcessorVersions, DoWhatTheStepsSayForEveryPairOfLayouts) {
    for (const Layout& in : layouts) {
        for (const Layout& out : layouts) {
            SCOPED_TRACE(testing::Message() << in.channels << " channels, mask " << in.mask << " to "
                                            << out.channels << " channels, mask " << out.mask);
            TwoStreams streams(*GetParam(), formatOf(in), formatOf(out), random);
            for (int call = 0; call < 8; ++call) {
                streams.call(Circumstances(random), Content::ordinary);
                ASSERT_FALSE(HasFailure()) << "call " << call;
            }
        }
    }
}

TEST_P(RtProcessorVersions, DoWhatTheStepsSayForSamplesOfEveryKind) {
    for (int round = 0; round < 100; ++round) {
        const Layout& in = layouts[random.below(layouts.size())];
        const Layout& out = layouts[random.below(layouts.size())];
        TwoStreams streams(*GetParam(), formatOf(in), formatOf(out), random);
        for (int call = 0; call < 4; ++call) {
            streams.call(Circumstances(random), Content::special);
            ASSERT_FALSE(HasFailure()) << in.mask << " to " << out.mask;
        }
    }
}

TEST_P(RtProcessorVersions, DoWhatTheStepsSayForEveryBufferSizeToTwoBlocks) {
    struct Route {
        Layout in;
        bool meters;
    };
    for (const Route& route : {Route{{2, 0x3}, false}, Route{{6, 0x60F}, false}, Route{{8, 0x63F}, false},
                               Route{{8, 0x63F}, true}}) {
        TwoStreams streams(*GetParam(), formatOf(route.in), test::formatOf(2), random);
        for (std::uint32_t frames = 0; frames <= 1030; frames += 1 + random.below(3)) {
            Circumstances now(random);
            now.frames = frames;
            now.silentInput = now.nullInput = now.silentOutput = now.passThrough = false;
            now.engine = now.newRamp = false;
            now.inPlace = random.coin();
            now.meters = route.meters;
            streams.call(now, Content::ordinary);
            ASSERT_FALSE(HasFailure()) << frames << " frames of mask " << route.in.mask;
        }
    }
}

}  // namespace
}  // namespace korva::rt
