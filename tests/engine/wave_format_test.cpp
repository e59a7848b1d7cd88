#include "engine/wave_format.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>

#include "tests/support/fake_media_type.h"
#include "tests/support/wave_formats.h"

namespace korva::engine {
namespace {

using published::ieeeFloatFormat;
using published::pcmFormat;
using published::UNCOMPRESSEDAUDIOFORMAT;
using test::extensibleWave;
using test::floatStream;
using test::pcmStream;
using test::plainWave;

constexpr WORD unknownTag = 0x55;
constexpr GUID otherEncoding = {0x00000092, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

TEST(WaveFormatSize, CountsWhatFollowsExceptAfterPcm) {
    WAVEFORMATEX format = plainWave(WAVE_FORMAT_PCM, 2, 48000, 16);
    EXPECT_EQ(sizeOf(format), 18U);
    format.cbSize = 0xFFFF;
    EXPECT_EQ(sizeOf(format), 18U);
    format.wFormatTag = WAVE_FORMAT_IEEE_FLOAT;
    EXPECT_EQ(sizeOf(format), 18U + 0xFFFF);
    EXPECT_EQ(sizeOf(extensibleWave(ieeeFloatFormat, 2, 48000, 32, 3).Format), 40U);
}

TEST(WaveFormatEncoding, IsThatOfTheTagOrTheSubformat) {
    EXPECT_TRUE(encodingOf(plainWave(WAVE_FORMAT_PCM, 2, 48000, 16)) == pcmFormat);
    EXPECT_TRUE(encodingOf(plainWave(WAVE_FORMAT_IEEE_FLOAT, 2, 48000, 32)) == ieeeFloatFormat);
    EXPECT_TRUE(encodingOf(plainWave(0x92, 2, 48000, 16)) == otherEncoding);
    EXPECT_TRUE(encodingOf(extensibleWave(otherEncoding, 2, 48000, 16, 3).Format) == otherEncoding);
}

TEST(WaveFormatEncoding, OfAnExtensibleFormatCutShortIsThatOfItsTag) {
    WAVEFORMATEX format = plainWave(WAVE_FORMAT_EXTENSIBLE, 2, 48000, 32);
    format.cbSize = 0;
    GUID expected = pcmFormat;
    expected.Data1 = 0xFFFE;
    EXPECT_TRUE(encodingOf(format) == expected);
    EXPECT_TRUE(isCompressed(format));
    EXPECT_EQ(uncompressedOf(format).dwValidBitsPerSample, 32U);
}

TEST(WaveFormatCompression, IsWhatIsNeitherPcmNorFloat) {
    EXPECT_FALSE(isCompressed(plainWave(WAVE_FORMAT_PCM, 2, 48000, 16)));
    EXPECT_FALSE(isCompressed(plainWave(WAVE_FORMAT_IEEE_FLOAT, 2, 48000, 32)));
    EXPECT_FALSE(isCompressed(extensibleWave(pcmFormat, 2, 48000, 16, 3).Format));
    EXPECT_FALSE(isCompressed(extensibleWave(ieeeFloatFormat, 2, 48000, 32, 3).Format));
    EXPECT_TRUE(isCompressed(plainWave(unknownTag, 2, 48000, 16)));
    EXPECT_TRUE(isCompressed(plainWave(2, 2, 48000, 16)));
    EXPECT_TRUE(isCompressed(extensibleWave(otherEncoding, 2, 48000, 16, 3).Format));
}

TEST(WaveFormatCompression, IsNoneOfNoTag) {
    EXPECT_FALSE(isCompressed(plainWave(0, 2, 48000, 16)));
}

TEST(WaveFormatCheck, TakesTheWidthsOfPcm) {
    for (const int bits : {8, 16, 24, 32}) {
        EXPECT_TRUE(isConsistent(plainWave(WAVE_FORMAT_PCM, 2, 48000, static_cast<WORD>(bits)))) << bits;
    }
    for (const int bits : {0, 1, 7, 12, 20, 40, 48, 64, 0xFFF8}) {
        EXPECT_FALSE(isConsistent(plainWave(WAVE_FORMAT_PCM, 1, 48000, static_cast<WORD>(bits)))) << bits;
    }
}

TEST(WaveFormatCheck, TakesTheWidthsOfFloats) {
    EXPECT_TRUE(isConsistent(plainWave(WAVE_FORMAT_IEEE_FLOAT, 2, 48000, 32)));
    EXPECT_TRUE(isConsistent(plainWave(WAVE_FORMAT_IEEE_FLOAT, 2, 48000, 64)));
    for (const int bits : {0, 8, 16, 24, 33, 80, 128}) {
        EXPECT_FALSE(isConsistent(plainWave(WAVE_FORMAT_IEEE_FLOAT, 2, 48000, static_cast<WORD>(bits))))
            << bits;
    }
}

TEST(WaveFormatCheck, RefusesAFormatWithoutChannels) {
    EXPECT_FALSE(isConsistent(plainWave(WAVE_FORMAT_PCM, 0, 48000, 16)));
    EXPECT_FALSE(isConsistent(plainWave(WAVE_FORMAT_IEEE_FLOAT, 0, 48000, 32)));
}

TEST(WaveFormatCheck, RefusesFramesOfAnotherSize) {
    for (const int tag : {WAVE_FORMAT_PCM, WAVE_FORMAT_IEEE_FLOAT}) {
        WAVEFORMATEX format = plainWave(static_cast<WORD>(tag), 3, 48000, 32);
        for (const int align : {0, 11, 13, 24}) {
            format.nBlockAlign = static_cast<WORD>(align);
            format.nAvgBytesPerSec = 48000U * format.nBlockAlign;
            EXPECT_FALSE(isConsistent(format)) << align;
        }
    }
}

// The size of a frame has 16 bits, the product of channels and bytes more.
TEST(WaveFormatCheck, RefusesFramesThatAreTooLargeForTheirField) {
    WAVEFORMATEX format = plainWave(WAVE_FORMAT_PCM, 0x4001, 8000, 32);
    EXPECT_EQ(int{format.nBlockAlign}, 4);
    EXPECT_FALSE(isConsistent(format));
}

TEST(WaveFormatCheck, AllowsBytesPerSecondThatAreFivePercentOffEitherWay) {
    WAVEFORMATEX format = plainWave(WAVE_FORMAT_IEEE_FLOAT, 2, 48000, 32);
    for (const DWORD bytes : {384000U - 19200U, 384000U, 384000U + 19200U}) {
        format.nAvgBytesPerSec = bytes;
        EXPECT_TRUE(isConsistent(format)) << bytes;
    }
    for (const DWORD bytes : {0U, 384000U - 19201U, 384000U + 19201U, 0xFFFFFFFFU}) {
        format.nAvgBytesPerSec = bytes;
        EXPECT_FALSE(isConsistent(format)) << bytes;
    }
}

TEST(WaveFormatCheck, DividesBytesPerSecondWhole) {
    WAVEFORMATEX format = plainWave(WAVE_FORMAT_PCM, 1, 11039, 8);  // a twentieth is 551.95
    format.nAvgBytesPerSec = 11039 + 551;
    EXPECT_TRUE(isConsistent(format));
    format.nAvgBytesPerSec = 11039 + 552;
    EXPECT_FALSE(isConsistent(format));
    format.nAvgBytesPerSec = 11039 - 551;
    EXPECT_TRUE(isConsistent(format));
    format.nAvgBytesPerSec = 11039 - 552;
    EXPECT_FALSE(isConsistent(format));
}

TEST(WaveFormatCheck, DoesNotWrapBytesPerSecond) {
    WAVEFORMATEX format = plainWave(WAVE_FORMAT_IEEE_FLOAT, 2, 0x20000000, 32);
    EXPECT_EQ(DWORD{format.nAvgBytesPerSec}, 0U);
    EXPECT_FALSE(isConsistent(format));
}

TEST(WaveFormatCheck, WantsTheWholeOfAnExtensibleFormat) {
    WAVEFORMATEXTENSIBLE format = extensibleWave(ieeeFloatFormat, 2, 48000, 32, 3);
    EXPECT_TRUE(isConsistent(format.Format));
    format.Format.cbSize = 21;
    EXPECT_FALSE(isConsistent(format.Format));
    format.Format.cbSize = 0;
    EXPECT_FALSE(isConsistent(format.Format));
}

TEST(WaveFormatCheck, WantsNoMoreValidBitsThanThereAre) {
    for (const GUID& encoding : {pcmFormat, otherEncoding}) {
        WAVEFORMATEXTENSIBLE format = extensibleWave(encoding, 2, 48000, 32, 3);
        format.Samples.wValidBitsPerSample = 24;
        EXPECT_TRUE(isConsistent(format.Format));
        format.Samples.wValidBitsPerSample = 33;
        EXPECT_FALSE(isConsistent(format.Format));
    }
}

TEST(WaveFormatCheck, LooksBehindTheExtensibleTag) {
    EXPECT_FALSE(isConsistent(extensibleWave(pcmFormat, 2, 48000, 64, 3).Format));
    EXPECT_TRUE(isConsistent(extensibleWave(ieeeFloatFormat, 2, 48000, 64, 3).Format));
    EXPECT_FALSE(isConsistent(extensibleWave(ieeeFloatFormat, 2, 48000, 16, 3).Format));
    EXPECT_FALSE(isConsistent(extensibleWave(pcmFormat, 0, 48000, 16, 3).Format));
}

TEST(WaveFormatCheck, PassesWhatItDoesNotKnow) {
    for (const int tag : {0, 2, int{unknownTag}, 0xFFFF}) {
        WAVEFORMATEX format{};
        format.wFormatTag = static_cast<WORD>(tag);
        format.nAvgBytesPerSec = 1;
        EXPECT_TRUE(isConsistent(format)) << tag;
    }
    EXPECT_TRUE(isConsistent(extensibleWave(otherEncoding, 0, 48000, 5, 3).Format));
}

TEST(UncompressedOf, TellsAPlainFormatWithoutAMask) {
    const UNCOMPRESSEDAUDIOFORMAT stream = uncompressedOf(plainWave(unknownTag, 5, 44100, 20));
    EXPECT_EQ(stream.guidFormatType.Data1, DWORD{unknownTag});
    EXPECT_EQ(stream.guidFormatType.Data3, 0x10);
    EXPECT_EQ(stream.dwSamplesPerFrame, 5U);
    EXPECT_EQ(stream.dwBytesPerSampleContainer, 2U);
    EXPECT_EQ(stream.dwValidBitsPerSample, 20U);
    EXPECT_EQ(stream.fFramesPerSecond, 44100.0F);
    EXPECT_EQ(stream.dwChannelMask, 0U);
}

TEST(UncompressedOf, TellsWhatAnExtensibleFormatAdds) {
    WAVEFORMATEXTENSIBLE format = extensibleWave(pcmFormat, 6, 96000, 32, 0x60F);
    format.Samples.wValidBitsPerSample = 24;
    const UNCOMPRESSEDAUDIOFORMAT stream = uncompressedOf(format.Format);
    EXPECT_TRUE(stream.guidFormatType == pcmFormat);
    EXPECT_EQ(stream.dwSamplesPerFrame, 6U);
    EXPECT_EQ(stream.dwBytesPerSampleContainer, 4U);
    EXPECT_EQ(stream.dwValidBitsPerSample, 24U);
    EXPECT_EQ(stream.fFramesPerSecond, 96000.0F);
    EXPECT_EQ(stream.dwChannelMask, 0x60FU);
}

void expectPlain(const UNCOMPRESSEDAUDIOFORMAT& stream, int tag) {
    const auto wave = waveFormatOf(stream);
    ASSERT_TRUE(wave.has_value());
    EXPECT_EQ(int{wave->Format.wFormatTag}, tag);
    EXPECT_EQ(int{wave->Format.cbSize}, 0);
    EXPECT_EQ(sizeOf(wave->Format), 18U);
}

void expectExtensible(const UNCOMPRESSEDAUDIOFORMAT& stream) {
    const auto wave = waveFormatOf(stream);
    ASSERT_TRUE(wave.has_value());
    EXPECT_EQ(int{wave->Format.wFormatTag}, WAVE_FORMAT_EXTENSIBLE);
    EXPECT_EQ(int{wave->Format.cbSize}, 22);
    EXPECT_EQ(sizeOf(wave->Format), 40U);
    EXPECT_EQ(DWORD{wave->Samples.wValidBitsPerSample}, stream.dwValidBitsPerSample);
    EXPECT_EQ(DWORD{wave->dwChannelMask}, stream.dwChannelMask);
    const GUID encoding = wave->SubFormat;
    EXPECT_TRUE(encoding == stream.guidFormatType);
}

TEST(WaveFormatOf, IsPlainForOneOrTwoChannelsWithoutAMask) {
    for (const DWORD channels : {0U, 1U, 2U}) {
        expectPlain(floatStream(channels, 48000), WAVE_FORMAT_IEEE_FLOAT);
        expectPlain(pcmStream(channels, 48000), WAVE_FORMAT_PCM);
    }
    expectExtensible(floatStream(3, 48000));
    expectExtensible(pcmStream(3, 48000));
    expectExtensible(floatStream(2, 48000, 0x3));
    expectExtensible(pcmStream(1, 48000, 0x4));
}

TEST(WaveFormatOf, IsPlainForNumbersThatFillTheirContainers) {
    UNCOMPRESSEDAUDIOFORMAT stream = pcmStream(2, 48000);
    for (const DWORD bytes : {1U, 2U, 3U, 4U}) {
        stream.dwBytesPerSampleContainer = bytes;
        stream.dwValidBitsPerSample = bytes * 8;
        expectPlain(stream, WAVE_FORMAT_PCM);
    }
    stream.dwValidBitsPerSample = 24;
    expectExtensible(stream);
}

TEST(WaveFormatOf, IsExtensibleForOtherFloatsAndEncodings) {
    UNCOMPRESSEDAUDIOFORMAT stream = floatStream(2, 48000);
    stream.dwBytesPerSampleContainer = 8;
    expectExtensible(stream);
    stream.dwValidBitsPerSample = 64;
    expectExtensible(stream);
    stream = pcmStream(2, 48000);
    stream.guidFormatType = otherEncoding;
    expectExtensible(stream);
}

TEST(WaveFormatOf, AgreesWithItselfAndTellsTheStreamAgain) {
    for (const UNCOMPRESSEDAUDIOFORMAT& stream :
         {floatStream(1, 8000), floatStream(8, 192000, 0x63F), pcmStream(2, 44100), pcmStream(6, 48000, 0x3F),
          floatStream(4096, 96000)}) {
        const auto wave = waveFormatOf(stream);
        ASSERT_TRUE(wave.has_value());
        EXPECT_TRUE(isConsistent(wave->Format)) << stream.dwSamplesPerFrame;
        const UNCOMPRESSEDAUDIOFORMAT again = uncompressedOf(wave->Format);
        EXPECT_TRUE(again.guidFormatType == stream.guidFormatType);
        EXPECT_EQ(again.dwSamplesPerFrame, stream.dwSamplesPerFrame);
        EXPECT_EQ(again.dwBytesPerSampleContainer, stream.dwBytesPerSampleContainer);
        EXPECT_EQ(again.dwValidBitsPerSample, stream.dwValidBitsPerSample);
        EXPECT_EQ(again.fFramesPerSecond, stream.fFramesPerSecond);
        EXPECT_EQ(again.dwChannelMask, stream.dwChannelMask);
    }
}

TEST(WaveFormatOf, HasTheNearestWholeRateAndTheBytesOfThat) {
    const auto wave = waveFormatOf(floatStream(2, 44099.75F));
    ASSERT_TRUE(wave.has_value());
    EXPECT_EQ(DWORD{wave->Format.nSamplesPerSec}, 44100U);
    EXPECT_EQ(DWORD{wave->Format.nAvgBytesPerSec}, 44100U * 8);
    EXPECT_EQ(int{wave->Format.nBlockAlign}, 8);
}

TEST(WaveFormatOf, TellsOfTooManyBytesPerSecondAsManyAsItCan) {
    const auto wave = waveFormatOf(floatStream(4096, 384000));
    ASSERT_TRUE(wave.has_value());
    EXPECT_EQ(DWORD{wave->Format.nAvgBytesPerSec}, 0xFFFFFFFFU);
}

TEST(WaveFormatOf, IsNoneForWhatItsFieldsCannotHold) {
    EXPECT_TRUE(waveFormatOf(floatStream(16383, 48000)).has_value());
    for (const DWORD channels : {16384U, 65535U, 65536U, 0x40000001U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(waveFormatOf(floatStream(channels, 48000)).has_value()) << channels;
    }
    UNCOMPRESSEDAUDIOFORMAT stream = floatStream(65536, 48000);
    stream.dwBytesPerSampleContainer = 0;
    EXPECT_FALSE(waveFormatOf(stream).has_value());
    for (const DWORD bytes : {8192U, 65536U, 0x20000000U, 0xFFFFFFFFU}) {
        stream = floatStream(1, 48000);
        stream.dwBytesPerSampleContainer = bytes;
        EXPECT_FALSE(waveFormatOf(stream).has_value()) << bytes;
    }
    stream = floatStream(1, 48000);
    stream.dwValidBitsPerSample = 65536;
    EXPECT_FALSE(waveFormatOf(stream).has_value());
}

}  // namespace
}  // namespace korva::engine
