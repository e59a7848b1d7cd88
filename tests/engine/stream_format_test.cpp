#include "engine/stream_format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "tests/support/fake_media_type.h"

namespace korva::engine {
namespace {

using published::UNCOMPRESSEDAUDIOFORMAT;
using test::floatStream;
using test::pcmStream;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float noNumber = std::numeric_limits<float>::quiet_NaN();

TEST(WholeRate, IsTheNearestNumberHalvesUp) {
    EXPECT_EQ(wholeRate(48000.0F), 48000U);
    EXPECT_EQ(wholeRate(44100.5F), 44101U);
    EXPECT_EQ(wholeRate(44100.496F), 44100U);
    EXPECT_EQ(wholeRate(44099.5F), 44100U);
    EXPECT_EQ(wholeRate(0.5F), 1U);
    EXPECT_EQ(wholeRate(0.0F), 0U);
    EXPECT_EQ(wholeRate(-0.0F), 0U);
}

// In floats these sums would be rounded up to the next number.
TEST(WholeRate, IsNotRoundedTwice) {
    EXPECT_EQ(wholeRate(std::nextafter(0.5F, 0.0F)), 0U);
    EXPECT_EQ(wholeRate(8388609.0F), 8388609U);
    EXPECT_EQ(wholeRate(16777215.0F), 16777215U);
}

TEST(WholeRate, IsZeroForWhatIsNoRate) {
    EXPECT_EQ(wholeRate(-0.4F), 0U);
    EXPECT_EQ(wholeRate(-1.0F), 0U);
    EXPECT_EQ(wholeRate(-1.0e30F), 0U);
    EXPECT_EQ(wholeRate(-infinity), 0U);
    EXPECT_EQ(wholeRate(noNumber), 0U);
    EXPECT_EQ(wholeRate(-noNumber), 0U);
    EXPECT_EQ(wholeRate(std::numeric_limits<float>::denorm_min()), 0U);
}

// The compiler refuses what is undefined.
static_assert(wholeRate(noNumber) == 0 && wholeRate(-infinity) == 0 && wholeRate(-1.0F) == 0);
static_assert(wholeRate(infinity) == 0xFFFFFFFF && wholeRate(4294967296.0F) == 0xFFFFFFFF);

TEST(WholeRate, IsTheGreatestForWhatIsBeyond) {
    EXPECT_EQ(wholeRate(4294967040.0F), 4294967040U);  // the greatest float below it
    EXPECT_EQ(wholeRate(4294967296.0F), 0xFFFFFFFFU);
    EXPECT_EQ(wholeRate(std::numeric_limits<float>::max()), 0xFFFFFFFFU);
    EXPECT_EQ(wholeRate(infinity), 0xFFFFFFFFU);
}

TEST(EngineFormatOf, TakesRateChannelsAndMask) {
    rt::EngineFormat expected;
    expected.Assign(44100, 6, 0x3F);
    EXPECT_EQ(engineFormatOf(floatStream(6, 44099.9F, 0x3F)), expected);
}

TEST(EngineFormatOf, MendsTheMask) {
    EXPECT_EQ(engineFormatOf(floatStream(2, 48000)).channelMask, 0x3U);
    EXPECT_EQ(engineFormatOf(floatStream(8, 48000)).channelMask, 0x63FU);
    EXPECT_EQ(engineFormatOf(floatStream(1, 48000, 0x3)).channelMask, 0x1U);
}

TEST(EngineFormatOf, DoesNotLookAtTheEncoding) {
    EXPECT_EQ(engineFormatOf(pcmStream(2, 48000)), engineFormatOf(floatStream(2, 48000)));
}

TEST(EngineFormatOf, CountsNoMoreChannelsThanARecordCan) {
    EXPECT_EQ(engineFormatOf(floatStream(0, 48000)).channelCount, 0);
    EXPECT_EQ(engineFormatOf(floatStream(0x7FFFFFFE, 48000)).channelCount, 0x7FFFFFFE);
    EXPECT_EQ(engineFormatOf(floatStream(0x7FFFFFFF, 48000)).channelCount, 0x7FFFFFFF);
    EXPECT_EQ(engineFormatOf(floatStream(0x80000000, 48000)).channelCount, 0x7FFFFFFF);
    EXPECT_EQ(engineFormatOf(floatStream(0xFFFFFFFF, 48000, 0xFFFFFFFF)).channelCount, 0x7FFFFFFF);
}

TEST(FloatFormatOf, TellsTheRecordAsFloats) {
    rt::EngineFormat record;
    record.Assign(96000, 4, 0x33);
    const UNCOMPRESSEDAUDIOFORMAT format = floatFormatOf(record);
    EXPECT_TRUE(format.guidFormatType == published::ieeeFloatFormat);
    EXPECT_EQ(format.dwSamplesPerFrame, 4U);
    EXPECT_EQ(format.dwBytesPerSampleContainer, 4U);
    EXPECT_EQ(format.dwValidBitsPerSample, 32U);
    EXPECT_EQ(format.fFramesPerSecond, 96000.0F);
    EXPECT_EQ(format.dwChannelMask, 0x33U);
}

TEST(FloatFormatOf, IsTheRecordAgainWhenItIsTakenBack) {
    for (const DWORD channels : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U}) {
        const rt::EngineFormat record = engineFormatOf(floatStream(channels, 44100));
        EXPECT_EQ(engineFormatOf(floatFormatOf(record)), record) << channels;
    }
}

}  // namespace
}  // namespace korva::engine
