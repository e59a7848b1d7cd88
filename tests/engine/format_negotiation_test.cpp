#include "engine/format_negotiation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string>

#include "framework/ref.h"
#include "platform/published/results.h"
#include "tests/engine/hosted_engine.h"
#include "tests/engine/recorded_engine.h"
#include "tests/support/allocation_count.h"
#include "tests/support/fake_media_type.h"
#include "tests/support/own_folder.h"

namespace korva::engine {
namespace {

using framework::Ref;
using published::formatNotSupported;
using published::IAudioMediaType;
using published::okButNo;
using published::UNCOMPRESSEDAUDIOFORMAT;
using test::Bytes;
using test::bytesOf;
using test::digitsOf;
using test::FakeMediaType;
using test::floatStream;
using test::pcmStream;
using test::RecordedCall;
using test::RecordedEngine;

constexpr auto sides = {Direction::input, Direction::output};

/// What a test gave: a result and, maybe, a type.
struct Outcome {
    HRESULT result = published::unspecifiedFailure;
    Ref<IAudioMediaType> type;
};

Outcome outcomeOf(DspEngine* engine, Direction side, IAudioMediaType* opposite, IAudioMediaType* requested) {
    FakeMediaType leftOver;
    IAudioMediaType* found = &leftOver;
    Outcome outcome;
    outcome.result = testFormat(engine, side, opposite, requested, &found);
    EXPECT_NE(found, &leftOver);
    outcome.type = Ref<IAudioMediaType>::adopt(found);
    return outcome;
}

/// A yes hands out the requested object, with a reference.
void expectAccepted(DspEngine* engine, Direction side, IAudioMediaType* opposite, FakeMediaType& requested) {
    const Outcome outcome = outcomeOf(engine, side, opposite, &requested);
    EXPECT_EQ(outcome.result, published::ok);
    EXPECT_EQ(outcome.type.get(), &requested);
    EXPECT_EQ(requested.references, 2U);
}

void expectRefused(DspEngine* engine, Direction side, IAudioMediaType* opposite, FakeMediaType& requested,
                   HRESULT expected = formatNotSupported) {
    const Outcome outcome = outcomeOf(engine, side, opposite, &requested);
    EXPECT_EQ(outcome.result, expected);
    EXPECT_EQ(outcome.type.get(), nullptr);
    EXPECT_EQ(requested.references, 1U);
}

/// A suggestion is a new object, of 32-bit floats, and the caller's alone.
void expectSuggested(DspEngine* engine, Direction side, IAudioMediaType* opposite, FakeMediaType& requested,
                     DWORD channels, float rate, DWORD mask) {
    Outcome outcome = outcomeOf(engine, side, opposite, &requested);
    ASSERT_EQ(outcome.result, okButNo);
    ASSERT_NE(outcome.type.get(), nullptr);
    EXPECT_NE(outcome.type.get(), &requested);
    EXPECT_EQ(requested.references, 1U);
    UNCOMPRESSEDAUDIOFORMAT stream{};
    EXPECT_EQ(outcome.type->GetUncompressedAudioFormat(&stream), published::ok);
    EXPECT_TRUE(stream.guidFormatType == published::ieeeFloatFormat);
    EXPECT_EQ(stream.dwBytesPerSampleContainer, 4U);
    EXPECT_EQ(stream.dwValidBitsPerSample, 32U);
    EXPECT_EQ(stream.dwSamplesPerFrame, channels);
    EXPECT_EQ(stream.fFramesPerSecond, rate);
    EXPECT_EQ(stream.dwChannelMask, mask);
    EXPECT_EQ(outcome.type.giveUp()->Release(), 0U);
}

rt::EngineFormat recordOf(std::int32_t channels, std::uint32_t rate, std::uint32_t mask = 0) {
    rt::EngineFormat format;
    format.Assign(rate, channels, mask);
    return format;
}

TEST(FormatTest, WantsAPlaceForItsAnswer) {
    FakeMediaType requested(floatStream(2, 48000));
    EXPECT_EQ(testFormat(nullptr, Direction::input, nullptr, &requested, nullptr), published::nullPointer);
    EXPECT_EQ(testFormat(nullptr, Direction::output, nullptr, nullptr, nullptr), published::nullPointer);
    EXPECT_EQ(requested.references, 1U);
}

TEST(FormatTest, WantsARequestAndClearsTheAnswerFirst) {
    FakeMediaType opposite(floatStream(2, 48000));
    for (const Direction side : sides) {
        const Outcome outcome = outcomeOf(nullptr, side, &opposite, nullptr);
        EXPECT_EQ(outcome.result, published::nullPointer);
        EXPECT_EQ(outcome.type.get(), nullptr);
    }
}

TEST(FormatTest, GivesWhatATypeFailsWithAndAsksNobody) {
    const RecordedEngine engine;
    FakeMediaType failing(floatStream(2, 48000));
    failing.streamResult = published::notImplemented;
    FakeMediaType good(floatStream(2, 48000));
    for (const Direction side : sides) {
        for (DspEngine* const asked : {engine.get(), static_cast<DspEngine*>(nullptr)}) {
            expectRefused(asked, side, &good, failing, published::notImplemented);
            expectRefused(asked, side, nullptr, failing, published::notImplemented);
            expectRefused(asked, side, &failing, good, published::notImplemented);
        }
    }
    EXPECT_TRUE(engine.calls("IsInputFormatSupported").empty());
    EXPECT_TRUE(engine.calls("IsOutputFormatSupported").empty());
}

TEST(FormatTest, FailsForWantOfMemory) {
    FakeMediaType requested(pcmStream(2, 48000));
    const test::AllocationLimit limit(0);
    expectRefused(nullptr, Direction::input, nullptr, requested, published::outOfMemory);
}

TEST(FormatTestWithAModule, AsksItsEntryOfThatSideWithBothFormats) {
    FakeMediaType opposite(floatStream(8, 44100, 0x63F));
    FakeMediaType requested(floatStream(6, 47999.6F, 0x3F));
    for (const Direction side : sides) {
        const RecordedEngine engine;
        expectAccepted(engine.get(), side, &opposite, requested);
        const bool isInput = side == Direction::input;
        const RecordedCall call =
            engine.onlyCall(isInput ? "IsInputFormatSupported" : "IsOutputFormatSupported");
        EXPECT_EQ(call.bytes("requested"), bytesOf(recordOf(6, 48000, 0x3F)));
        EXPECT_EQ(call.bytes("opposite"), bytesOf(recordOf(8, 44100, 0x63F)));
        EXPECT_TRUE(engine.calls(isInput ? "IsOutputFormatSupported" : "IsInputFormatSupported").empty());
    }
}

TEST(FormatTestWithAModule, TellsItZerosOfASideThatIsNotKnown) {
    FakeMediaType requested(floatStream(2, 48000));
    const RecordedEngine engine;
    expectAccepted(engine.get(), Direction::input, nullptr, requested);
    EXPECT_EQ(engine.onlyCall("IsInputFormatSupported").bytes("opposite"), Bytes(28, 0));
}

TEST(FormatTestWithAModule, TakesItsWordForAnyFloats) {
    const RecordedEngine engine;
    FakeMediaType opposite(floatStream(2, 44100));
    for (const auto& stream : {floatStream(10, 48000), floatStream(0, 0), floatStream(2, -1),
                               floatStream(0xFFFFFFFF, std::numeric_limits<float>::quiet_NaN())}) {
        for (const Direction side : sides) {
            FakeMediaType requested(stream);
            expectAccepted(engine.get(), side, &opposite, requested);
        }
    }
}

TEST(FormatTestWithAModule, LooksAtNothingOfTheSamplesButTheirEncoding) {
    const RecordedEngine engine;
    FakeMediaType requested(floatStream(2, 48000));
    requested.stream.dwBytesPerSampleContainer = 8;
    requested.stream.dwValidBitsPerSample = 64;
    expectAccepted(engine.get(), Direction::input, nullptr, requested);
    expectAccepted(nullptr, Direction::input, nullptr, requested);
}

TEST(FormatTestWithAModule, SuggestsWhatItHasWritten) {
    const std::string digits = digitsOf(bytesOf(recordOf(6, 96000, 0x60F)));
    const RecordedEngine engine("inputFormat=1,outputFormat=1,inputFormatBytes=" + digits +
                                ",outputFormatBytes=" + digits);
    FakeMediaType requested(floatStream(2, 48000));
    for (const Direction side : sides) {
        expectSuggested(engine.get(), side, nullptr, requested, 6, 96000, 0x60F);
    }
}

TEST(FormatTestWithAModule, TellsAChangeByTheLowestBit) {
    FakeMediaType requested(floatStream(2, 48000));
    for (const char* answer : {"1", "3", "0x80000001", "0xFFFFFFFF"}) {
        const RecordedEngine engine(std::string("inputFormat=") + answer);
        expectSuggested(engine.get(), Direction::input, nullptr, requested, 2, 48000, 0x3);
    }
    for (const char* answer : {"2", "4", "0x80000000", "0xFFFFFFFE"}) {
        const RecordedEngine engine(std::string("outputFormat=") + answer);
        expectRefused(engine.get(), Direction::output, nullptr, requested);
    }
}

TEST(FormatTestWithAModule, SuggestsFloatsForOtherSamplesThatItAccepts) {
    const RecordedEngine engine;
    FakeMediaType requested(pcmStream(6, 44100, 0x3F));
    for (const Direction side : sides) {
        expectSuggested(engine.get(), side, nullptr, requested, 6, 44100, 0x3F);
    }
}

TEST(FormatTestWithAModule, SuggestsFloatsForOtherSamplesThatItRefuses) {
    const RecordedEngine engine("inputFormat=2,outputFormat=2");
    FakeMediaType requested(pcmStream(2, 48000));
    for (const Direction side : sides) {
        expectSuggested(engine.get(), side, nullptr, requested, 2, 48000, 0x3);
    }
}

TEST(FormatTestWithAModule, SuggestsNothingThatAFormatCannotSay) {
    rt::EngineFormat odd = recordOf(2, 48000);
    odd.channelCount = -1;
    const RecordedEngine engine("inputFormat=1,inputFormatBytes=" + digitsOf(bytesOf(odd)));
    FakeMediaType requested(floatStream(2, 48000));
    expectRefused(engine.get(), Direction::input, nullptr, requested);
    FakeMediaType many(pcmStream(0xFFFFFFFF, 48000));
    expectRefused(engine.get(), Direction::output, nullptr, many);
}

TEST(FormatTestWithAModule, SuggestsTheGreatestRateThatItWrites) {
    rt::EngineFormat fast = recordOf(2, 0xFFFFFFFF);
    const RecordedEngine engine("inputFormat=1,inputFormatBytes=" + digitsOf(bytesOf(fast)));
    FakeMediaType requested(floatStream(2, 48000));
    expectSuggested(engine.get(), Direction::input, nullptr, requested, 2, 4294967296.0F, 0x3);
}

TEST(FormatTestWithoutAModule, AcceptsAllFloatsWhereThereIsAnEngine) {
    const test::OwnFolder folder;
    const auto engine = test::hostedEngine({}, folder.path());
    FakeMediaType opposite(floatStream(2, 44100));
    for (const DWORD channels : {2U, 10U}) {
        for (const Direction side : sides) {
            FakeMediaType requested(floatStream(channels, 48000));
            expectAccepted(engine.get(), side, &opposite, requested);
        }
    }
    FakeMediaType pcm(pcmStream(10, 48000));
    expectSuggested(engine.get(), Direction::input, &opposite, pcm, 10, 48000, 0);
}

TEST(FormatTestWithoutAnEngine, AcceptsUpToEightChannelsOfFloatsAtOneRate) {
    for (const DWORD channels : {0U, 1U, 2U, 7U, 8U}) {
        for (const Direction side : sides) {
            FakeMediaType opposite(floatStream(6, 48000));
            FakeMediaType requested(floatStream(channels, 48000));
            expectAccepted(nullptr, side, &opposite, requested);
            EXPECT_EQ(opposite.references, 1U);
        }
    }
}

TEST(FormatTestWithoutAnEngine, SuggestsTheRateOfTheOtherSide) {
    FakeMediaType opposite(floatStream(2, 44100));
    FakeMediaType requested(floatStream(6, 48000, 0x3F));
    for (const Direction side : sides) {
        expectSuggested(nullptr, side, &opposite, requested, 6, 44100, 0x3F);
    }
}

TEST(FormatTestWithoutAnEngine, ComparesWholeRates) {
    FakeMediaType opposite(floatStream(2, 44100.4F));
    FakeMediaType requested(floatStream(2, 44099.6F));
    expectAccepted(nullptr, Direction::input, &opposite, requested);
    opposite.stream.fFramesPerSecond = 44100.5F;
    expectSuggested(nullptr, Direction::input, &opposite, requested, 2, 44101, 0x3);
}

TEST(FormatTestWithoutAnEngine, TakesAnyRateWhereTheOtherSideHasNone) {
    FakeMediaType opposite(floatStream(2, 0));
    for (const float rate : {0.0F, 1.0F, 768000.0F, std::numeric_limits<float>::infinity()}) {
        FakeMediaType requested(floatStream(2, rate));
        expectAccepted(nullptr, Direction::input, &opposite, requested);
        expectAccepted(nullptr, Direction::output, nullptr, requested);
    }
}

TEST(FormatTestWithoutAnEngine, SuggestsTheOtherRateForWhatIsNoRate) {
    FakeMediaType opposite(floatStream(2, 48000));
    for (const float rate :
         {-48000.0F, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        FakeMediaType requested(floatStream(2, rate));
        expectSuggested(nullptr, Direction::output, &opposite, requested, 2, 48000, 0x3);
    }
}

TEST(FormatTestWithoutAnEngine, SuggestsEightChannelsForMore) {
    for (const DWORD channels : {9U, 10U, 65536U, 0x80000000U, 0xFFFFFFFFU}) {
        for (const Direction side : sides) {
            FakeMediaType requested(floatStream(channels, 48000, 0x7FF));
            expectSuggested(nullptr, side, nullptr, requested, 8, 48000, 0x63F);
        }
    }
}

TEST(FormatTestWithoutAnEngine, SuggestsFloatsForOtherSamples) {
    FakeMediaType opposite(floatStream(2, 48000));
    FakeMediaType requested(pcmStream(2, 48000));
    GUID odd = published::ieeeFloatFormat;
    odd.Data4[7] = 0x72;
    for (const Direction side : sides) {
        requested.stream.guidFormatType = published::pcmFormat;
        expectSuggested(nullptr, side, &opposite, requested, 2, 48000, 0x3);
        requested.stream.guidFormatType = odd;
        expectSuggested(nullptr, side, &opposite, requested, 2, 48000, 0x3);
    }
}

TEST(FormatTestWithoutAnEngine, DoesNotAskForFloatsOnTheOtherSide) {
    FakeMediaType opposite(pcmStream(2, 48000));
    FakeMediaType requested(floatStream(2, 48000));
    expectAccepted(nullptr, Direction::input, &opposite, requested);
}

TEST(FormatTestWithoutAnEngine, SuggestsAllChangesAtOnceAndAcceptsThem) {
    FakeMediaType opposite(floatStream(2, 44100));
    FakeMediaType requested(pcmStream(10, 48000, 0x3FF));
    for (const Direction side : sides) {
        expectSuggested(nullptr, side, &opposite, requested, 8, 44100, 0x63F);
        const Outcome first = outcomeOf(nullptr, side, &opposite, &requested);
        const Outcome second = outcomeOf(nullptr, side, &opposite, first.type.get());
        EXPECT_EQ(second.result, published::ok);
        EXPECT_EQ(second.type, first.type);
    }
}

}  // namespace
}  // namespace korva::engine
