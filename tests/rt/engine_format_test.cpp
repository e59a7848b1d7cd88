#include "rt/engine_format.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>

namespace korva::rt {
namespace {

using Bytes = std::array<std::uint8_t, 8>;

EngineFormat assigned(std::int32_t channels, std::uint32_t mask, std::uint32_t rate = 48000) {
    EngineFormat format;
    format.Assign(rate, channels, mask);
    return format;
}

/// Plane of each published speaker bit, lowest first; bits above have none.
constexpr std::array<std::uint8_t, 18> publishedPlanes = {0, 1, 2, 3, 4, 5, 0, 1, 2,
                                                          6, 7, 2, 0, 2, 1, 4, 2, 5};

TEST(EngineFormat, IsAWireRecordOf28Bytes) {
    EngineFormat format;
    format.channelMask = 0x04030201;
    format.channelCount = 0x08070605;
    format.sampleRate = 0x0C0B0A09;
    format.planeOfChannel = {13, 14, 15, 16, 17, 18, 19, 20};
    format.speakerOfPlane = {21, 22, 23, 24, 25, 26, 27, 28};

    std::array<std::uint8_t, 28> wire{};
    static_assert(sizeof(format) == sizeof(wire));
    std::memcpy(wire.data(), &format, sizeof(wire));

    for (std::size_t offset = 0; offset < wire.size(); ++offset) {
        EXPECT_EQ(wire[offset], offset + 1) << "at offset " << offset;
    }
}

TEST(EngineFormat, MeansNoFormatUntilOneIsSet) {
    const EngineFormat format;

    EXPECT_EQ(format.channelMask, 0u);
    EXPECT_EQ(format.channelCount, 0);
    EXPECT_EQ(format.sampleRate, 0u);
    EXPECT_EQ(format.planeOfChannel, Bytes{});
    EXPECT_EQ(format.speakerOfPlane, Bytes{});
}

TEST(EngineFormat, EachSpeakerBitLandsOnItsPlaneAndLeavesItsMarker) {
    for (std::uint8_t bit = 0; bit < 32; ++bit) {
        const std::uint8_t plane = bit < publishedPlanes.size() ? publishedPlanes[bit] : std::uint8_t{0};
        Bytes markers{};
        markers[plane] = static_cast<std::uint8_t>(bit + 1);

        const EngineFormat format = assigned(1, 1u << bit);

        EXPECT_EQ(format.channelMask, 1u << bit);
        EXPECT_EQ(format.planeOfChannel, (Bytes{plane})) << "bit " << int{bit};
        EXPECT_EQ(format.speakerOfPlane, markers) << "bit " << int{bit};
    }
}

TEST(EngineFormat, ChannelsFollowTheMaskFromItsLowestBit) {
    for (unsigned low = 0; low < 32; ++low) {
        for (unsigned high = low + 1; high < 32; ++high) {
            const EngineFormat format = assigned(2, (1u << low) | (1u << high));

            EXPECT_EQ(format.planeOfChannel[0], low < 18 ? publishedPlanes[low] : 0) << low << ", " << high;
            EXPECT_EQ(format.planeOfChannel[1], high < 18 ? publishedPlanes[high] : 0) << low << ", " << high;
        }
    }
}

TEST(EngineFormat, KeepsRateAndCountAsGiven) {
    const EngineFormat format = assigned(6, 0x3F, 44100);

    EXPECT_EQ(format.sampleRate, 44100u);
    EXPECT_EQ(format.channelCount, 6);
    EXPECT_EQ(format.channelMask, 0x3Fu);
}

TEST(EngineFormat, StereoWithoutAMaskGetsTheFrontPair) {
    const EngineFormat format = assigned(2, 0);

    EXPECT_EQ(format.channelMask, 0x3u);
    EXPECT_EQ(format.planeOfChannel, (Bytes{0, 1}));
    EXPECT_EQ(format.speakerOfPlane, (Bytes{1, 2}));
}

TEST(EngineFormat, EachCountHasItsDefaultLayout) {
    struct Default {
        std::int32_t channels;
        std::uint32_t mask;
        Bytes planes;
    };
    constexpr std::array<Default, 8> defaults = {{{1, 0x4, {2}},
                                                  {2, 0x3, {0, 1}},
                                                  {3, 0x7, {0, 1, 2}},
                                                  {4, 0x603, {0, 1, 6, 7}},
                                                  {5, 0x607, {0, 1, 2, 6, 7}},
                                                  {6, 0x60F, {0, 1, 2, 3, 6, 7}},
                                                  {7, 0x607, {0, 1, 2, 6, 7, 0, 0}},
                                                  {8, 0x63F, {0, 1, 2, 3, 4, 5, 6, 7}}}};
    for (const Default& expected : defaults) {
        SCOPED_TRACE(expected.channels);
        const EngineFormat format = assigned(expected.channels, 0);

        EXPECT_EQ(format.channelMask, expected.mask);
        EXPECT_EQ(format.planeOfChannel, expected.planes);
        EXPECT_EQ(format.channelCount, expected.channels);
    }
}

TEST(EngineFormat, AMaskWithTooFewSpeakersFallsBackToTheDefault) {
    const EngineFormat format = assigned(6, 0x33);

    EXPECT_EQ(format.channelMask, 0x60Fu);
    EXPECT_EQ(format.planeOfChannel, (Bytes{0, 1, 2, 3, 6, 7}));
    EXPECT_EQ(format.speakerOfPlane, (Bytes{1, 2, 3, 4, 0, 0, 10, 11}));
}

TEST(EngineFormat, FourChannelsWithABackPairUseTheBackPlanes) {
    const EngineFormat format = assigned(4, 0x33);

    EXPECT_EQ(format.channelMask, 0x33u);
    EXPECT_EQ(format.planeOfChannel, (Bytes{0, 1, 4, 5}));
}

TEST(EngineFormat, TwoSpeakersOnOnePlaneShareItAndTheLaterLeavesItsMarker) {
    const EngineFormat format = assigned(4, 0x107);

    EXPECT_EQ(format.planeOfChannel, (Bytes{0, 1, 2, 2}));
    EXPECT_EQ(format.speakerOfPlane, (Bytes{1, 2, 9}));
}

TEST(EngineFormat, SevenChannelsWithoutAMaskHaveFiveSpeakersAndTwoChannelsOnTheFirstPlane) {
    const EngineFormat format = assigned(7, 0);

    EXPECT_EQ(format.channelMask, 0x607u);
    EXPECT_EQ(format.planeOfChannel[5], 0);
    EXPECT_EQ(format.planeOfChannel[6], 0);
    EXPECT_EQ(format.speakerOfPlane, (Bytes{1, 2, 3, 0, 0, 0, 10, 11}));
}

TEST(EngineFormat, NoChannelsAndNoMaskStayAllZero) {
    const EngineFormat format = assigned(0, 0, 0);

    EXPECT_EQ(format, EngineFormat{});
}

TEST(EngineFormat, NineChannelsWithoutAMaskKeepNone) {
    const EngineFormat format = assigned(9, 0);

    EXPECT_EQ(format.channelMask, 0u);
    EXPECT_EQ(format.channelCount, 9);
    EXPECT_EQ(format.planeOfChannel, Bytes{});
}

TEST(EngineFormat, NineChannelsWithTooFewSpeakersKeepTheirMask) {
    const EngineFormat format = assigned(9, 0x3);

    EXPECT_EQ(format.channelMask, 0x3u);
    EXPECT_EQ(format.planeOfChannel, (Bytes{0, 1}));
}

TEST(EngineFormat, MonoWithAStereoMaskLosesASpeakerButKeepsTheMapOfBoth) {
    const EngineFormat format = assigned(1, 0x3);

    EXPECT_EQ(format.channelMask, 0x1u);
    EXPECT_EQ(format.planeOfChannel, (Bytes{0, 1}));
    EXPECT_EQ(format.speakerOfPlane, (Bytes{1, 2}));
}

TEST(EngineFormat, StereoWithAnEightSpeakerMaskKeepsTheMapOfEight) {
    const EngineFormat format = assigned(2, 0x63F);

    EXPECT_EQ(format.channelMask, 0x3u);
    EXPECT_EQ(format.planeOfChannel, (Bytes{0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(format.speakerOfPlane, (Bytes{1, 2, 3, 4, 5, 6, 10, 11}));
}

TEST(EngineFormat, AMaskIsTrimmedToItsLowestSpeakersWhereverTheyLie) {
    EXPECT_EQ(assigned(3, 0x633).channelMask, 0x13u);
    EXPECT_EQ(assigned(2, 0x80000604).channelMask, 0x204u);
    EXPECT_EQ(assigned(8, 0xFFFFFFFF).channelMask, 0xFFu);
}

TEST(EngineFormat, NoChannelsWithAMaskLoseEverySpeakerButKeepTheMap) {
    const EngineFormat format = assigned(0, 0x3);

    EXPECT_EQ(format.channelMask, 0u);
    EXPECT_EQ(format.planeOfChannel, (Bytes{0, 1}));
}

TEST(EngineFormat, ANegativeCountCountsAsNoChannels) {
    EXPECT_EQ(assigned(-1, 0x3).channelMask, 0u);
    EXPECT_EQ(assigned(-1, 0).channelMask, 0u);
    EXPECT_EQ(assigned(INT32_MIN, 0x63F).channelMask, 0u);
}

TEST(EngineFormat, BitsWithoutASpeakerAllLandOnTheFirstPlane) {
    const EngineFormat format = assigned(2, 0xC0000);

    EXPECT_EQ(format.channelMask, 0xC0000u);
    EXPECT_EQ(format.planeOfChannel, Bytes{});
    EXPECT_EQ(format.speakerOfPlane, (Bytes{20}));
}

TEST(EngineFormat, OnlyEightSpeakersGetAChannel) {
    const EngineFormat format = assigned(11, 0x7FF);

    EXPECT_EQ(format.channelMask, 0x7FFu);
    EXPECT_EQ(format.planeOfChannel, (Bytes{0, 1, 2, 3, 4, 5, 0, 1}));
    EXPECT_EQ(format.speakerOfPlane, (Bytes{7, 8, 3, 4, 5, 6, 0, 0}));
}

TEST(EngineFormat, SetMaskLeavesRateAndCountAlone) {
    EngineFormat format = assigned(2, 0x3, 96000);

    format.SetMask(0x63F);

    EXPECT_EQ(format.sampleRate, 96000u);
    EXPECT_EQ(format.channelCount, 2);
    EXPECT_EQ(format.channelMask, 0x63Fu);
}

TEST(EngineFormat, SetMaskForgetsTheMapThatWasThere) {
    EngineFormat format = assigned(8, 0x63F);

    format.SetMask(0x4);

    EXPECT_EQ(format.planeOfChannel, (Bytes{2}));
    EXPECT_EQ(format.speakerOfPlane, (Bytes{0, 0, 3}));
}

TEST(EngineFormat, SetDefaultMaskLeavesACountWithoutDefaultAsItStands) {
    for (const std::int32_t channels : {0, 9, 10, -1}) {
        EngineFormat format;
        format.SetMask(0x33);
        format.channelCount = channels;
        const EngineFormat before = format;

        format.SetDefaultMask();

        EXPECT_EQ(format, before) << channels << " channels";
    }
}

TEST(EngineFormat, AssigningAgainForgetsTheFormatThatWasThere) {
    EngineFormat format = assigned(8, 0x63F, 96000);

    format.Assign(44100, 2, 0);

    EXPECT_EQ(format, assigned(2, 0x3, 44100));
}

}  // namespace
}  // namespace korva::rt
