#include "korva/host/media_type.h"

#include <gtest/gtest.h>

namespace korva::tool {
namespace {

using platform::Reference;

constexpr SoundFormat surround = {44100, 6, 0x3F};

TEST(MediaType, TellsItsFormat) {
    const Reference<MediaType> type(new MediaType(surround));
    published::UNCOMPRESSEDAUDIOFORMAT format{};
    ASSERT_EQ(type->GetUncompressedAudioFormat(&format), published::ok);
    EXPECT_EQ(format.guidFormatType, published::ieeeFloatFormat);
    EXPECT_EQ(format.dwSamplesPerFrame, 6U);
    EXPECT_EQ(format.dwBytesPerSampleContainer, 4U);
    EXPECT_EQ(format.dwValidBitsPerSample, 32U);
    EXPECT_EQ(format.fFramesPerSecond, 44100.0F);
    EXPECT_EQ(format.dwChannelMask, 0x3FU);
    EXPECT_EQ(type->GetUncompressedAudioFormat(nullptr), published::nullPointer);
}

TEST(MediaType, IsAWaveFormatThatAgreesWithItself) {
    const Reference<MediaType> type(new MediaType(surround));
    const WAVEFORMATEX& wave = *type->GetAudioFormat();
    EXPECT_EQ(wave.wFormatTag, WAVE_FORMAT_EXTENSIBLE);
    EXPECT_EQ(wave.cbSize, 22);
    EXPECT_EQ(wave.nBlockAlign, wave.nChannels * wave.wBitsPerSample / 8);
    EXPECT_EQ(wave.nAvgBytesPerSec, wave.nSamplesPerSec * wave.nBlockAlign);
}

TEST(MediaType, IsNotCompressed) {
    const Reference<MediaType> type(new MediaType(surround));
    BOOL compressed = 1;
    EXPECT_EQ(type->IsCompressedFormat(&compressed), published::ok);
    EXPECT_EQ(compressed, 0);
    EXPECT_EQ(type->IsCompressedFormat(nullptr), published::nullPointer);
}

TEST(MediaType, EqualsOneOfTheSameFormatOnly) {
    const Reference<MediaType> type(new MediaType(surround));
    const Reference<MediaType> same(new MediaType(surround));
    DWORD flags = 0;
    EXPECT_EQ(type->IsEqual(same.get(), &flags), published::ok);
    EXPECT_EQ(flags, 0xEU);
    for (const SoundFormat& other :
         {SoundFormat{48000, 6, 0x3F}, SoundFormat{44100, 2, 0x3F}, SoundFormat{44100, 6, 0x60F}}) {
        const Reference<MediaType> different(new MediaType(other));
        EXPECT_EQ(type->IsEqual(different.get(), &flags), published::okButNo);
        EXPECT_EQ(flags, 0U);
    }
    EXPECT_EQ(type->IsEqual(nullptr, &flags), published::nullPointer);
    EXPECT_EQ(type->IsEqual(same.get(), nullptr), published::nullPointer);
}

}  // namespace
}  // namespace korva::tool
