#include "apo/default_formats.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "framework/ref.h"
#include "platform/published/audio_object_records.h"
#include "platform/published/results.h"
#include "tests/support/fake_media_type.h"

namespace korva::apo {
namespace {

using framework::Ref;
using published::IAudioMediaType;
using published::UNCOMPRESSEDAUDIOFORMAT;
using test::FakeMediaType;
using test::floatStream;
using test::pcmStream;

constexpr std::uint32_t allFlags = published::APO_FLAG_SAMPLESPERFRAME_MUST_MATCH |
                                   published::APO_FLAG_FRAMESPERSECOND_MUST_MATCH |
                                   published::APO_FLAG_BITSPERSAMPLE_MUST_MATCH;

/// What a test gave: a result and, maybe, the format of a type.
struct Outcome {
    HRESULT result = published::unspecifiedFailure;
    Ref<IAudioMediaType> type;
    UNCOMPRESSEDAUDIOFORMAT format{};
};

Outcome outcomeOf(std::uint32_t flags, FakeMediaType* opposite, FakeMediaType* requested) {
    Outcome outcome;
    FakeMediaType leftOver;
    IAudioMediaType* found = &leftOver;
    outcome.result = testDefaultFormat(
        flags, true, [](UNCOMPRESSEDAUDIOFORMAT& format, bool) { return correctFormat(format); }, opposite,
        requested, &found);
    EXPECT_NE(found, &leftOver);
    outcome.type = Ref<IAudioMediaType>::adopt(found);
    if (outcome.type) {
        EXPECT_EQ(outcome.type->GetUncompressedAudioFormat(&outcome.format), published::ok);
    }
    return outcome;
}

void expectSuggestion(const Outcome& outcome, const UNCOMPRESSEDAUDIOFORMAT& format) {
    EXPECT_EQ(outcome.result, published::okButNo);
    EXPECT_EQ(outcome.format.guidFormatType, format.guidFormatType);
    EXPECT_EQ(outcome.format.dwSamplesPerFrame, format.dwSamplesPerFrame);
    EXPECT_EQ(outcome.format.dwBytesPerSampleContainer, format.dwBytesPerSampleContainer);
    EXPECT_EQ(outcome.format.dwValidBitsPerSample, format.dwValidBitsPerSample);
    EXPECT_EQ(outcome.format.fFramesPerSecond, format.fFramesPerSecond);
    EXPECT_EQ(outcome.format.dwChannelMask, format.dwChannelMask);
}

UNCOMPRESSEDAUDIOFORMAT corrected(UNCOMPRESSEDAUDIOFORMAT format, HRESULT expected) {
    EXPECT_EQ(correctFormat(format), expected);
    return format;
}

TEST(FormatCorrection, LeavesFloatsWithinTheLimitsAlone) {
    for (const auto& [channels, rate] : {std::pair{1u, 10.0f}, {4096u, 384000.0f}, {6u, 44100.5f}}) {
        const auto format = corrected(floatStream(channels, rate, 0x3F), published::ok);
        EXPECT_EQ(format.dwSamplesPerFrame, channels);
        EXPECT_EQ(format.fFramesPerSecond, rate);
        EXPECT_EQ(format.dwChannelMask, 0x3Fu);
    }
}

TEST(FormatCorrection, BringsChannelsAndRatesToTheNearestLimit) {
    constexpr float none = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinite = std::numeric_limits<float>::infinity();
    EXPECT_EQ(corrected(floatStream(0, 48000), published::okButNo).dwSamplesPerFrame, 1u);
    EXPECT_EQ(corrected(floatStream(4097, 48000), published::okButNo).dwSamplesPerFrame, 4096u);
    EXPECT_EQ(corrected(floatStream(2, 9.99f), published::okButNo).fFramesPerSecond, 10.0f);
    EXPECT_EQ(corrected(floatStream(2, 384000.1f), published::okButNo).fFramesPerSecond, 384000.0f);
    EXPECT_EQ(corrected(floatStream(2, infinite), published::okButNo).fFramesPerSecond, 384000.0f);
    EXPECT_EQ(corrected(floatStream(2, -infinite), published::okButNo).fFramesPerSecond, 10.0f);
    EXPECT_EQ(corrected(floatStream(2, none), published::okButNo).fFramesPerSecond, 10.0f);
}

TEST(FormatCorrection, MakesFloatsOfWhateverSamples) {
    const auto format = corrected(pcmStream(2, 48000), published::okButNo);
    EXPECT_EQ(format.guidFormatType, published::ieeeFloatFormat);
    EXPECT_EQ(format.dwBytesPerSampleContainer, 4u);
    EXPECT_EQ(format.dwValidBitsPerSample, 32u);
}

TEST(DefaultFormatTest, TakesARightFormatAsItIsWithOneReference) {
    FakeMediaType requested(floatStream(6, 48000, 0x3F));
    const Outcome outcome = outcomeOf(allFlags, nullptr, &requested);
    EXPECT_EQ(outcome.result, published::ok);
    EXPECT_EQ(outcome.type.get(), &requested);
    EXPECT_EQ(requested.references, 2u);
}

TEST(DefaultFormatTest, TakesARightFormatThatSharesAllWithItsOpposite) {
    FakeMediaType opposite(floatStream(2, 48000, 0x3));
    FakeMediaType requested(floatStream(2, 48000, 0x3));
    EXPECT_EQ(outcomeOf(allFlags, &opposite, &requested).result, published::ok);
    EXPECT_EQ(opposite.references, 1u);
}

TEST(DefaultFormatTest, SuggestsFloatsForOtherSamples) {
    FakeMediaType requested(pcmStream(2, 44100));
    expectSuggestion(outcomeOf(allFlags, nullptr, &requested), floatStream(2, 44100));
    EXPECT_EQ(requested.references, 1u);
}

TEST(DefaultFormatTest, SuggestsWhatTheFlagsAskToMatch) {
    FakeMediaType opposite(floatStream(6, 96000, 0x3F));
    FakeMediaType requested(floatStream(2, 48000));
    expectSuggestion(outcomeOf(allFlags, &opposite, &requested), floatStream(6, 96000, 0x3F));
    expectSuggestion(outcomeOf(published::APO_FLAG_SAMPLESPERFRAME_MUST_MATCH, &opposite, &requested),
                     floatStream(6, 48000, 0x3F));
    expectSuggestion(outcomeOf(published::APO_FLAG_FRAMESPERSECOND_MUST_MATCH, &opposite, &requested),
                     floatStream(2, 96000));
    EXPECT_EQ(outcomeOf(published::APO_FLAG_BITSPERSAMPLE_MUST_MATCH, &opposite, &requested).result,
              published::ok);
    EXPECT_EQ(outcomeOf(published::APO_FLAG_NONE, &opposite, &requested).result, published::ok);
}

TEST(DefaultFormatTest, RefusesWhereTheOppositeFormatItselfIsWrong) {
    FakeMediaType opposite(pcmStream(2, 48000));
    FakeMediaType requested(floatStream(2, 48000));
    const Outcome outcome = outcomeOf(allFlags, &opposite, &requested);
    EXPECT_EQ(outcome.result, published::formatNotSupported);
    EXPECT_EQ(outcome.type, nullptr);
}

TEST(DefaultFormatTest, GivesWhatATypeFailsWith) {
    FakeMediaType broken;
    broken.streamResult = published::outOfMemory;
    FakeMediaType right(floatStream(2, 48000));
    EXPECT_EQ(outcomeOf(allFlags, &broken, &right).result, published::outOfMemory);
    EXPECT_EQ(outcomeOf(allFlags, &right, &broken).result, published::outOfMemory);
    EXPECT_EQ(outcomeOf(allFlags, nullptr, nullptr).result, published::nullPointer);
}

TEST(DefaultFormatTest, AsksForEachSidesCorrectionAndGivesItsFailure) {
    FakeMediaType opposite(floatStream(2, 48000));
    FakeMediaType requested(floatStream(2, 48000));
    std::vector<bool> outputsAsked;
    HRESULT result = published::ok;
    const auto test = [&](bool isOutput) {
        IAudioMediaType* found = nullptr;
        const HRESULT tested = testDefaultFormat(
            allFlags, isOutput,
            [&](UNCOMPRESSEDAUDIOFORMAT&, bool isOutputAsked) {
                outputsAsked.push_back(isOutputAsked);
                return result;
            },
            &opposite, &requested, &found);
        const auto released = Ref<IAudioMediaType>::adopt(found);
        return tested;
    };
    EXPECT_EQ(test(true), published::ok);
    EXPECT_EQ(test(false), published::ok);
    EXPECT_EQ(outputsAsked, (std::vector<bool>{false, true, true, false}));
    result = published::unspecifiedFailure;
    EXPECT_EQ(test(true), published::unspecifiedFailure);
}

TEST(DefaultFormatTest, NeedsAPlaceForItsAnswer) {
    FakeMediaType requested(floatStream(2, 48000));
    EXPECT_EQ(testDefaultFormat(
                  allFlags, true, [](auto& format, bool) { return correctFormat(format); }, nullptr,
                  &requested, nullptr),
              published::nullPointer);
}

}  // namespace
}  // namespace korva::apo
