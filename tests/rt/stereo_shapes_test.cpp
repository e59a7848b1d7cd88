#include "rt/stereo_shapes.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <utility>

#include "tests/support/stream.h"

namespace korva::rt {
namespace {

using test::formatOf;

bool isFold(const EngineFormat& in, const EngineFormat& out) {
    return isStereoFold(in, static_cast<std::uint32_t>(in.channelCount), out,
                        static_cast<std::uint32_t>(out.channelCount));
}

TEST(StereoFold, IsOfStereoFivePointOneOrSevenPointOneToStereo) {
    const EngineFormat stereo = formatOf(2);

    EXPECT_TRUE(isFold(formatOf(2), stereo));
    EXPECT_TRUE(isFold(formatOf(6, 0x3F), stereo));
    EXPECT_TRUE(isFold(formatOf(6, 0x60F), stereo));
    EXPECT_TRUE(isFold(formatOf(8, 0x63F), stereo));
}

TEST(StereoFold, IsOfNoOtherInput) {
    const EngineFormat stereo = formatOf(2);

    for (const auto& [channels, mask] : std::array<std::pair<std::int32_t, std::uint32_t>, 9>{{{1, 0x4},
                                                                                               {1, 0x3},
                                                                                               {2, 0xC},
                                                                                               {3, 0x7},
                                                                                               {4, 0x33},
                                                                                               {4, 0x603},
                                                                                               {5, 0x607},
                                                                                               {7, 0},
                                                                                               {8, 0xFF}}}) {
        EXPECT_FALSE(isFold(formatOf(channels, mask), stereo)) << channels << " channels, mask " << mask;
    }
}

TEST(StereoFold, IsToNoOtherOutput) {
    const EngineFormat input = formatOf(8);

    for (const auto& [channels, mask] : std::array<std::pair<std::int32_t, std::uint32_t>, 5>{
             {{1, 0x4}, {2, 0x30}, {2, 0x600}, {6, 0x3F}, {8, 0x63F}}}) {
        EXPECT_FALSE(isFold(input, formatOf(channels, mask))) << channels << " channels, mask " << mask;
    }
}

TEST(StereoFold, NeedsTheChannelCountsOfTheMasks) {
    EXPECT_FALSE(isStereoFold(formatOf(8), 7, formatOf(2), 2));
    EXPECT_FALSE(isStereoFold(formatOf(8), 8, formatOf(2), 1));
    EXPECT_FALSE(isStereoFold(formatOf(2), 0, formatOf(2), 2));
}

TEST(StereoFold, NeedsEachChannelOnItsSpeakersPlane) {
    EngineFormat tornInput = formatOf(8);
    tornInput.planeOfChannel[7] = SideLeft;
    EngineFormat tornOutput = formatOf(2);
    tornOutput.planeOfChannel[1] = FrontLeft;

    EXPECT_FALSE(isFold(tornInput, formatOf(2)));
    EXPECT_FALSE(isFold(formatOf(8), tornOutput));
}

TEST(StereoFold, HoldsForAMaskThatWasTrimmedFromMoreSpeakers) {
    // The map still names planes for the speakers that were dropped; the stream's two are the front pair.
    EXPECT_TRUE(isFold(formatOf(2, 0x63F), formatOf(2)));
}

class BufferPlaces : public testing::Test {
protected:
    std::array<float, 64> memory{};
    float* const start = memory.data();
};

TEST_F(BufferPlaces, ApartInEitherOrderAreFine) {
    EXPECT_TRUE(isApartOrInPlace(start, 8, start + 32, 2, 4));
    EXPECT_TRUE(isApartOrInPlace(start + 8, 8, start, 2, 4));
}

TEST_F(BufferPlaces, OverlappingByOneSampleAreNot) {
    EXPECT_FALSE(isApartOrInPlace(start, 8, start + 31, 2, 4));
    EXPECT_FALSE(isApartOrInPlace(start + 7, 8, start, 2, 4));
}

TEST_F(BufferPlaces, AtOneStartAreFineUnlessTheOutputRunsAhead) {
    EXPECT_TRUE(isApartOrInPlace(start, 8, start, 2, 4));
    EXPECT_TRUE(isApartOrInPlace(start, 2, start, 2, 4));
    EXPECT_FALSE(isApartOrInPlace(start, 2, start, 8, 4));
}

TEST_F(BufferPlaces, OfNoFramesAreAlwaysFine) {
    EXPECT_TRUE(isApartOrInPlace(start, 2, start, 8, 0));
    EXPECT_TRUE(isApartOrInPlace(start, 8, start + 1, 2, 0));
}

}  // namespace
}  // namespace korva::rt
