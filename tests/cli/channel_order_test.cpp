#include "korva/process/channel_order.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <array>

namespace korva::tool {
namespace {

using Channels = std::array<std::uint8_t, 8>;

TEST(ChannelOrder, EachSpeakersPositionLeadsBackToIt) {
    for (std::uint32_t speaker = 1; speaker <= 0x20000; speaker <<= 1) {
        EXPECT_EQ(speakerOfPosition(positionOfSpeaker(speaker)), speaker);
    }
}

TEST(ChannelOrder, FrontPositionsAndMonoHaveTheirSpeakers) {
    EXPECT_EQ(speakerOfPosition(SF_CHANNEL_MAP_MONO), 0x4u);
    EXPECT_EQ(speakerOfPosition(SF_CHANNEL_MAP_FRONT_LEFT), 0x1u);
    EXPECT_EQ(speakerOfPosition(SF_CHANNEL_MAP_FRONT_RIGHT), 0x2u);
    EXPECT_EQ(speakerOfPosition(SF_CHANNEL_MAP_FRONT_CENTER), 0x4u);
}

TEST(ChannelOrder, OtherPositionsHaveNone) {
    EXPECT_EQ(speakerOfPosition(SF_CHANNEL_MAP_INVALID), 0u);
    EXPECT_EQ(speakerOfPosition(SF_CHANNEL_MAP_AMBISONIC_B_W), 0u);
    EXPECT_EQ(speakerOfPosition(-1), 0u);
    EXPECT_EQ(speakerOfPosition(1000), 0u);
}

TEST(ChannelOrder, FromAFileSpeakersRiseByTheirBits) {
    const ChannelOrder order = orderFromFile(std::array<std::uint32_t, 3>{0x4, 0x1, 0x2});
    EXPECT_EQ(order.mask, 0x7u);
    EXPECT_EQ(order.fileChannel, (Channels{1, 2, 0, 3, 4, 5, 6, 7}));
}

TEST(ChannelOrder, ASpeakerThatIsThereTwiceLeavesTheMaskUnknown) {
    const ChannelOrder order = orderFromFile(std::array<std::uint32_t, 3>{0x4, 0x1, 0x4});
    EXPECT_EQ(order.mask, 0u);
    EXPECT_EQ(order.fileChannel, (Channels{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(ChannelOrder, AnUnknownSpeakerLeavesTheMaskUnknown) {
    const ChannelOrder order = orderFromFile(std::array<std::uint32_t, 3>{0x4, 0, 0x1});
    EXPECT_EQ(order.mask, 0u);
    EXPECT_EQ(order.fileChannel, (Channels{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(ChannelOrder, FormatsThatFixTheirSpeakersNameOneForEachChannel) {
    for (const int format : {SF_FORMAT_OGG | SF_FORMAT_VORBIS, SF_FORMAT_OGG | SF_FORMAT_OPUS,
                             SF_FORMAT_FLAC | SF_FORMAT_PCM_24}) {
        for (std::uint32_t channels = 1; channels <= 8; ++channels) {
            const auto speakers = fixedSpeakers(format, channels);
            ASSERT_EQ(speakers.size(), channels);
            EXPECT_NE(orderFromFile(speakers).mask, 0u);
        }
    }
}

TEST(ChannelOrder, OtherFormatsFixNone) {
    EXPECT_TRUE(fixedSpeakers(SF_FORMAT_WAV | SF_FORMAT_FLOAT, 6).empty());
    EXPECT_TRUE(fixedSpeakers(SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 9).empty());
}

TEST(ChannelOrder, TheWayToAFixedFileIsTheWayBack) {
    const auto vorbis = fixedSpeakers(SF_FORMAT_OGG | SF_FORMAT_VORBIS, 6);
    const auto order = orderToFile(0x3F, vorbis);
    ASSERT_TRUE(order);
    EXPECT_EQ(order->fileChannel, (Channels{0, 2, 1, 5, 3, 4, 6, 7}));
}

TEST(ChannelOrder, ABackPairStandsInForASidePair) {
    const auto vorbis = fixedSpeakers(SF_FORMAT_OGG | SF_FORMAT_VORBIS, 6);
    const auto order = orderToFile(0x60F, vorbis);
    ASSERT_TRUE(order);
    EXPECT_EQ(order->fileChannel, (Channels{0, 2, 1, 5, 3, 4, 6, 7}));
}

TEST(ChannelOrder, OtherSpeakersHaveNoWayToAFixedFile) {
    EXPECT_FALSE(orderToFile(0x107, fixedSpeakers(SF_FORMAT_OGG | SF_FORMAT_VORBIS, 4)));
}

}  // namespace
}  // namespace korva::tool
