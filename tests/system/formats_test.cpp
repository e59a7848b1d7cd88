// Which formats an object without an engine takes, and what it makes of a host's media types.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/system/class_test.h"
#include "tests/system/format_wish.h"

namespace korva::test {
namespace {

using published::IAudioMediaType;
using published::UNCOMPRESSEDAUDIOFORMAT;

class Formats : public ClassTest {
protected:
    [[nodiscard]] FormatAnswer ask(const UNCOMPRESSEDAUDIOFORMAT& requested) {
        return askForFormat(object, nullptr, requested);
    }
    [[nodiscard]] FormatAnswer ask(const UNCOMPRESSEDAUDIOFORMAT& opposite,
                                   const UNCOMPRESSEDAUDIOFORMAT& requested) {
        return askForFormat(object, &opposite, requested);
    }
    /// The suggestion is floats of these numbers.
    static void expectFloats(const FormatAnswer& answer, DWORD channels, float rate) {
        EXPECT_EQ(answer.result, result::no);
        const UNCOMPRESSEDAUDIOFORMAT format = answer.format();
        EXPECT_EQ(format.guidFormatType, floats(1).guidFormatType);
        EXPECT_EQ(format.dwSamplesPerFrame, channels);
        EXPECT_EQ(format.dwBytesPerSampleContainer, 4U);
        EXPECT_EQ(format.dwValidBitsPerSample, 32U);
        EXPECT_EQ(format.fFramesPerSecond, rate);
    }

    /// An answer to whatever numbers: what is suggested is taken.
    void expectSense(const FormatAnswer& answer) {
        if (answer.result == result::no) {
            EXPECT_EQ(askFor(object, Side::input, nullptr, answer.supported.get()).result, result::ok);
        } else {
            EXPECT_TRUE(answer.result == result::ok || answer.result == result::formatNotSupported)
                << std::hex << answer.result;
        }
    }

    HostedObject object{library, GetParam()};
};

TEST_P(Formats, OfFloatsAreTakenAsTheyAre) {
    for (DWORD channels = 1; channels <= 8; ++channels) {
        EXPECT_EQ(ask(floats(channels)).result, result::ok) << channels;
        EXPECT_EQ(ask(floats(2), floats(channels)).result, result::ok) << channels;
    }
    EXPECT_EQ(ask(floats(2, 192000)).result, result::ok);
}

TEST_P(Formats, OfDoublesAreTakenSinceTheirEncodingIsFloat) {
    UNCOMPRESSEDAUDIOFORMAT doubles = floats(2);
    doubles.dwBytesPerSampleContainer = 8;
    doubles.dwValidBitsPerSample = 64;
    EXPECT_EQ(ask(doubles).result, result::ok);
}

TEST_P(Formats, OfAnotherRateThanTheOtherSidesBecomeItsRate) {
    expectFloats(ask(floats(2, 44100), floats(2, 48000)), 2, 44100);
    expectFloats(ask(floats(6, 96000), floats(1, 8000)), 1, 96000);
}

TEST_P(Formats, OfARateThatIsTheOthersWhenRoundedAreTaken) {
    EXPECT_EQ(ask(floats(2, 44100), floats(2, 44100.25f)).result, result::ok);
    EXPECT_EQ(ask(floats(2, 44100), floats(2, 44099.5f)).result, result::ok);
    expectFloats(ask(floats(2, 44100), floats(2, 44100.5f)), 2, 44100);
}

TEST_P(Formats, BesideAnOtherSideWithoutARateKeepTheirOwn) {
    EXPECT_EQ(ask(floats(2, 0), floats(2, 48000)).result, result::ok);
}

TEST_P(Formats, OfMoreThanEightChannelsBecomeEight) {
    for (const DWORD channels : {9U, 10U, 4096U, 4097U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        const FormatAnswer answer = ask(floats(channels));
        expectFloats(answer, 8, 48000);
        EXPECT_EQ(answer.format().dwChannelMask, 0x63FU);
    }
}

TEST_P(Formats, OfTenChannelsAndAnotherRateBecomeBoth) {
    expectFloats(ask(floats(2, 44100), floats(10, 48000)), 8, 44100);
}

TEST_P(Formats, OfWholeNumbersBecomeFloats) {
    expectFloats(ask(wholes(2)), 2, 48000);
    expectFloats(ask(wholes(6, 96000)), 6, 96000);
    expectFloats(ask(floats(2), wholes(2)), 2, 48000);
}

TEST_P(Formats, OfAnUnknownEncodingBecomeFloats) {
    UNCOMPRESSEDAUDIOFORMAT format = floats(2);
    format.guidFormatType = iid::nobodys;
    expectFloats(ask(format), 2, 48000);
    format.guidFormatType = GUID{};
    expectFloats(ask(format), 2, 48000);
}

TEST_P(Formats, WhoseMaskDoesNotFitAreSuggestedWithOneThatDoes) {
    const auto maskOf = [&](DWORD channels, DWORD mask) {
        return ask(wholes(channels, 48000, mask)).format().dwChannelMask;
    };
    EXPECT_EQ(maskOf(2, 0x7), 0x3U);
    EXPECT_EQ(maskOf(4, 0x33), 0x33U);
    EXPECT_EQ(maskOf(2, 0xFFFFFFFF), 0x3U);
}

TEST_P(Formats, AreSuggestedOnceAndThenTaken) {
    const FormatAnswer first = ask(floats(2, 44100), wholes(10, 48000));
    ASSERT_EQ(first.result, result::no);
    OwnMediaType opposite(floats(2, 44100));
    const FormatAnswer second = askFor(object, Side::input, &opposite, first.supported.get());
    EXPECT_EQ(second.result, result::ok);
}

TEST_P(Formats, OfAnyNumbersAreTakenOrSuggestedOrRefused) {
    const float rates[] = {0.0f,
                           -48000.0f,
                           9.9f,
                           1e9f,
                           std::numeric_limits<float>::denorm_min(),
                           std::numeric_limits<float>::max(),
                           std::numeric_limits<float>::infinity(),
                           -std::numeric_limits<float>::infinity(),
                           std::numeric_limits<float>::quiet_NaN()};
    for (const float rate : rates) {
        for (const DWORD channels : {0U, 1U, 8U, 9U, 0x80000000U, 0xFFFFFFFFU}) {
            for (const DWORD mask : {0U, 1U, 0x80000000U, 0xFFFFFFFFU}) {
                for (UNCOMPRESSEDAUDIOFORMAT wish :
                     {floats(channels, rate, mask), wholes(channels, rate, mask)}) {
                    wish.dwBytesPerSampleContainer = channels;
                    wish.dwValidBitsPerSample = mask;
                    expectSense(ask(wish));
                    expectSense(ask(wish, floats(2)));
                    expectSense(ask(floats(2), wish));
                }
            }
        }
    }
}

KORVA_OF_EACH_CLASS(Formats);

class ForeignTypes : public ClassTest {
protected:
    HostedObject object{library, GetParam()};
};

TEST_P(ForeignTypes, MayNotBeMissing) {
    OwnMediaType type(floats(2));
    for (const Side side : {Side::input, Side::output}) {
        EXPECT_EQ(askFor(object, side, nullptr, nullptr).result, result::nullPointer);
        EXPECT_EQ(askFor(object, side, &type, nullptr).result, result::nullPointer);
    }
    EXPECT_EQ(object.apo->IsInputFormatSupported(nullptr, &type, nullptr), result::nullPointer);
    EXPECT_EQ(object.apo->IsOutputFormatSupported(&type, &type, nullptr), result::nullPointer);
    EXPECT_EQ(object.apo->IsInputFormatSupported(nullptr, nullptr, nullptr), result::nullPointer);
}

TEST_P(ForeignTypes, ThatFailGiveTheirResult) {
    OwnMediaType good(floats(2));
    OwnMediaType bad(floats(2), result::deviceGone);
    for (const Side side : {Side::input, Side::output}) {
        EXPECT_EQ(askFor(object, side, nullptr, &bad).result, result::deviceGone);
        EXPECT_EQ(askFor(object, side, &bad, &good).result, result::deviceGone);
        EXPECT_EQ(askFor(object, side, &good, &bad).result, result::deviceGone);
        EXPECT_EQ(askFor(object, side, nullptr, &good).result, result::ok) << "usable afterwards";
    }
}

TEST_P(ForeignTypes, ThatTellNothingWithSuccessAreOfNoEncoding) {
    OwnMediaType silent([](int, UNCOMPRESSEDAUDIOFORMAT&) { return result::ok; });
    for (const Side side : {Side::input, Side::output}) {
        const HRESULT answer = askFor(object, side, nullptr, &silent).result;
        EXPECT_NE(answer, result::ok);
    }
}

TEST_P(ForeignTypes, AreAskedOnceForAnAnswer) {
    OwnMediaType changing([](int question, UNCOMPRESSEDAUDIOFORMAT& format) {
        format = question == 0 ? floats(2) : wholes(64, -1);
        return result::ok;
    });
    EXPECT_EQ(askFor(object, Side::input, nullptr, &changing).result, result::ok);
    EXPECT_EQ(changing.questions, 1);
}

TEST_P(ForeignTypes, MayBeBothSidesAtOnce) {
    OwnMediaType type(floats(6));
    EXPECT_EQ(askFor(object, Side::input, &type, &type).result, result::ok);
}

TEST_P(ForeignTypes, AreHeldByTheAnswerOnly) {
    OwnMediaType type(floats(2));
    {
        const FormatAnswer answer = askFor(object, Side::input, nullptr, &type);
        EXPECT_EQ(type.references(), 1);
    }
    EXPECT_EQ(type.references(), 0);
    EXPECT_EQ(askFor(object, Side::input, &type, nullptr).result, result::nullPointer);
    EXPECT_EQ(type.references(), 0);
}

KORVA_OF_EACH_CLASS(ForeignTypes);

}  // namespace
}  // namespace korva::test
