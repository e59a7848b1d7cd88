// Sound through an object without an engine.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

#include "tests/system/class_test.h"
#include "tests/system/support/init_records.h"
#include "tests/system/support/own_devices.h"

namespace korva::test {
namespace {

using published::APO_CONNECTION_PROPERTY;
using Samples = std::vector<float>;

constexpr float untouched = HostedObject::untouched;

/// Different samples, none of them 0.
Samples ramp(std::size_t count) {
    Samples samples(count);
    std::iota(samples.begin(), samples.end(), 1.0f);
    return samples;
}

/// What a call leaves in an output's record, whatever it does with the samples.
void expectMarked(const APO_CONNECTION_PROPERTY& output, std::uint32_t flags, std::uint32_t frames) {
    EXPECT_EQ(output.u32BufferFlags, flags);
    EXPECT_EQ(output.u32ValidFrameCount, frames);
}

class Processing : public ClassTest {
protected:
    void initialize(const GUID& mode) {
        OwnPropertyStore endpointProperties;
        OwnPropertyStore effectsProperties;
        auto record = secondRecord(&endpointProperties, &effectsProperties, nullptr, mode);
        EXPECT_EQ(test::initialize(*object.apo, record), result::ok);
    }

    HostedObject object{library, GetParam()};
};

TEST_P(Processing, BeforeAnyStreamMarksTheOutputAndWritesNoSample) {
    const Samples samples = ramp(960);
    EXPECT_EQ(object.play(samples, 2, 2), Samples(960, untouched));
    Samples played(960, untouched);
    APO_CONNECTION_PROPERTY input = bufferOf(samples, 480);
    APO_CONNECTION_PROPERTY output = bufferOf(played, 0, 0);
    object.process(input, output);
    expectMarked(output, 1U, 480U);
}

TEST_P(Processing, WithoutInitialisationFoldsAfterALock) {
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    EXPECT_EQ(object.play(ramp(960), 2, 2), ramp(960));
}

TEST_P(Processing, GoesOnAfterTheUnlockAsBefore) {
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    ASSERT_EQ(object.unlock(), result::ok);
    EXPECT_EQ(object.play(ramp(20), 2, 2), ramp(20));
}

TEST_P(Processing, OfARawStreamIsWhatTheClassSays) {
    initialize(mode::raw);
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    const Samples samples = ramp(960);
    Samples played(960, untouched);
    APO_CONNECTION_PROPERTY input = bufferOf(samples, 480);
    APO_CONNECTION_PROPERTY output = bufferOf(played, 0, 0);
    object.process(input, output);
    expectMarked(output, 1U, 480U);
    // A stream effect knows no number of channels to multiply by.
    const bool isStream = GetParam().clsid == streamClass.clsid;
    EXPECT_EQ(played, isStream ? Samples(960, untouched) : samples);
}

// Sides fold into the front, which a copy doesn't do.
TEST_P(Processing, FollowsInitialisationWhileAStreamIsLocked) {
    const Samples sides = {0, 0, 1, 2};
    initialize(mode::standard);
    ASSERT_EQ(object.lock(floats(4, 48000, 0x603), floats(4, 48000, 0x33)), result::ok);
    const Samples folded = object.play(sides, 4, 4);
    EXPECT_NE(folded, sides);
    EXPECT_NE(folded, Samples(4, untouched));
    initialize(mode::raw);
    const Samples raw = object.play(sides, 4, 4);
    if (GetParam().clsid == streamClass.clsid) {
        EXPECT_EQ(raw, Samples(4, untouched));
    } else {
        EXPECT_EQ(raw, GetParam().clsid == modeClass.clsid ? sides : folded);
    }
    initialize(mode::media);
    EXPECT_EQ(object.play(sides, 4, 4), folded);
}

TEST_P(Processing, OfSilenceGivesZerosThatCountAsSound) {
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    const Samples samples = ramp(20);
    for (APO_CONNECTION_PROPERTY input :
         {bufferOf(samples, 10, 2), bufferOf({}, 10, 2), bufferOf({}, 10, 1)}) {
        Samples played(20, untouched);
        APO_CONNECTION_PROPERTY output = bufferOf(played, 0, 1);
        object.process(input, output);
        EXPECT_EQ(played, Samples(20, 0.0f));
        expectMarked(output, 1U, 10U);
    }
}

TEST_P(Processing, IntoSilenceIsSkipped) {
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    const Samples samples = ramp(20);
    Samples played(20, untouched);
    APO_CONNECTION_PROPERTY input = bufferOf(samples, 10);
    APO_CONNECTION_PROPERTY output = bufferOf(played, 0, 2);
    object.process(input, output);
    expectMarked(output, 2U, 10U);
    const bool isStream = GetParam().clsid == streamClass.clsid;
    EXPECT_EQ(played, isStream ? Samples(20, untouched) : Samples(20, 0.0f));
    output = bufferOf({}, 0, 1);
    object.process(input, output);
    expectMarked(output, 2U, 10U);
}

TEST_P(Processing, OfABufferThatIsNeitherSoundNorSilenceChangesNothing) {
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    const Samples samples = ramp(20);
    for (const std::uint32_t flags : {0U, 3U, 4U, 0xFFFFFFFFU}) {
        Samples played(20, untouched);
        APO_CONNECTION_PROPERTY input = bufferOf(samples, 10, flags);
        APO_CONNECTION_PROPERTY output = bufferOf(played, 5, 2);
        object.process(input, output);
        EXPECT_EQ(played, Samples(20, untouched));
        expectMarked(output, 2U, 5U);
    }
}

TEST_P(Processing, IsDoneInPlace) {
    ASSERT_EQ(object.lock(floats(6)), result::ok);
    Samples samples = ramp(std::size_t{6} * 1111);
    APO_CONNECTION_PROPERTY input = bufferOf(samples, 1111);
    APO_CONNECTION_PROPERTY output = bufferOf(samples, 0);
    object.process(input, output);
    EXPECT_EQ(samples, ramp(std::size_t{6} * 1111));
    EXPECT_EQ(output.u32ValidFrameCount, 1111U);
}

TEST_P(Processing, OfNoFramesStillMarksTheOutput) {
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    const Samples samples = ramp(20);
    Samples played(20, untouched);
    APO_CONNECTION_PROPERTY input = bufferOf(samples, 0);
    APO_CONNECTION_PROPERTY output = bufferOf(played, 9, 0);
    object.process(input, output);
    EXPECT_EQ(played, Samples(20, untouched));
    expectMarked(output, 1U, 0U);
}

TEST_P(Processing, OfMoreFramesThanAnnouncedGoesAsFarAsTheBuffers) {
    OwnMediaType type(floats(2));
    Connection input(type);
    Connection output(type);
    input.u32MaxFrameCount = output.u32MaxFrameCount = 16;
    ASSERT_EQ(object.lock(input, output), result::ok);
    EXPECT_EQ(object.play(ramp(4000), 2, 2), ramp(4000));
}

TEST_P(Processing, DoesNotLookAtSignatures) {
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    const Samples samples = ramp(20);
    Samples played(20, untouched);
    APO_CONNECTION_PROPERTY input = bufferOf(samples, 10);
    APO_CONNECTION_PROPERTY output = bufferOf(played, 0);
    input.u32Signature = 0;
    output.u32Signature = 0xFFFFFFFF;
    object.process(input, output);
    EXPECT_EQ(played, samples);
    EXPECT_EQ(output.u32Signature, 0xFFFFFFFFU);
}

TEST_P(Processing, OfMissingConnectionsChangesNothing) {
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    const Samples samples = ramp(20);
    Samples played(20, untouched);
    APO_CONNECTION_PROPERTY input = bufferOf(samples, 10);
    APO_CONNECTION_PROPERTY output = bufferOf(played, 5, 2);
    std::array<APO_CONNECTION_PROPERTY*, 1> inputs = {&input};
    std::array<APO_CONNECTION_PROPERTY*, 1> outputs = {&output};
    std::array<APO_CONNECTION_PROPERTY*, 1> none = {nullptr};
    object.realtime->APOProcess(0, inputs.data(), 1, outputs.data());
    object.realtime->APOProcess(1, inputs.data(), 0, outputs.data());
    object.realtime->APOProcess(0, nullptr, 0, nullptr);
    object.realtime->APOProcess(1, nullptr, 1, outputs.data());
    object.realtime->APOProcess(1, inputs.data(), 1, nullptr);
    object.realtime->APOProcess(1, none.data(), 1, outputs.data());
    object.realtime->APOProcess(1, inputs.data(), 1, none.data());
    EXPECT_EQ(played, Samples(20, untouched));
    expectMarked(output, 2U, 5U);
}

TEST_P(Processing, ReadsTheFirstConnectionsOnly) {
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    const Samples samples = ramp(20);
    Samples played(20, untouched);
    APO_CONNECTION_PROPERTY input = bufferOf(samples, 10);
    APO_CONNECTION_PROPERTY output = bufferOf(played, 0);
    std::array<APO_CONNECTION_PROPERTY*, 2> inputs = {&input, nullptr};
    std::array<APO_CONNECTION_PROPERTY*, 2> outputs = {&output, nullptr};
    object.realtime->APOProcess(2, inputs.data(), 2, outputs.data());
    EXPECT_EQ(played, samples);
}

KORVA_OF_EACH_CLASS(Processing);

/// Only a stream effect may have another number of channels out.
class Folding : public testing::Test {
protected:
    /// One frame through a stream of these formats.
    Samples fold(const published::UNCOMPRESSEDAUDIOFORMAT& in, const published::UNCOMPRESSEDAUDIOFORMAT& out,
                 const Samples& frame) {
        EXPECT_EQ(object.lock(in, out), result::ok);
        const Samples played = object.play(frame, in.dwSamplesPerFrame, out.dwSamplesPerFrame);
        EXPECT_EQ(object.unlock(), result::ok);
        return played;
    }

    HostedLibrary library;
    HostedObject object{library, streamClass};
};

TEST_F(Folding, GivesACentreToBothSides) {
    EXPECT_EQ(fold(floats(1, 48000, 0x4), floats(2), {0.5f}), (Samples{0.5f, 0.5f}));
    EXPECT_EQ(fold(floats(1), floats(2), {0.5f}), (Samples{0.5f, 0.5f})) << "one channel is a centre";
}

TEST_F(Folding, GivesALeftChannelToTheLeftOnly) {
    EXPECT_EQ(fold(floats(1, 48000, 0x3), floats(2), {0.5f}), (Samples{0.5f, 0.0f}));
}

TEST_F(Folding, MovesTheBackToTheSides) {
    EXPECT_EQ(fold(floats(4, 48000, 0x33), floats(4, 48000, 0x603), {1, 2, 3, 4}), (Samples{1, 2, 3, 4}));
}

TEST_F(Folding, MovesTheSidesIntoTheFrontAndLeavesTheBackSilent) {
    const Samples played = fold(floats(4, 48000, 0x603), floats(4, 48000, 0x33), {0, 0, 1, 2});
    EXPECT_NEAR(played[0], 0.7083f, 0.0001f);
    EXPECT_NEAR(played[1], 1.4166f, 0.0002f);
    EXPECT_EQ(played[2], 0.0f);
    EXPECT_EQ(played[3], 0.0f);
}

TEST_F(Folding, FollowsTheNextLock) {
    EXPECT_EQ(fold(floats(2), floats(2), {1, 2}), (Samples{1, 2}));
    EXPECT_EQ(fold(floats(1, 48000, 0x4), floats(2), {1}), (Samples{1, 1}));
    EXPECT_EQ(fold(floats(2), floats(2), {3, 4}), (Samples{3, 4}));
}

}  // namespace
}  // namespace korva::test
