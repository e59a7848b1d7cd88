#include "korva/process/levels.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace korva::tool {
namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr SoundFormat stereo = {48000, 2, 0x3};
constexpr SoundFormat surround = {48000, 6, 0x3F};

Levels levelsOf(const SoundFormat& format, const std::vector<float>& samples) {
    HighestLevels levels(format);
    levels.follow(samples);
    return levels.levels();
}

TEST(HighestLevels, AreSilentAtFirst) {
    EXPECT_EQ(HighestLevels(stereo).levels(), Levels());
}

TEST(HighestLevels, StandAtTheHighestSampleOfEachPlane) {
    const Levels levels = levelsOf(stereo, {0.25F, 0.0F, -0.5F, 0.125F});
    EXPECT_EQ(levels[rt::FrontLeft], 0.5F);
    EXPECT_EQ(levels[rt::FrontRight], 0.125F);
    EXPECT_EQ(levels[rt::BackLeft], 0.0F);
}

TEST(HighestLevels, AreThePlanesThatChannelsLandOn) {
    const Levels levels = levelsOf({48000, 4, 0x603}, {0.1F, 0.2F, 0.3F, 0.4F});
    EXPECT_EQ(levels[rt::SideLeft], 0.3F);
    EXPECT_EQ(levels[rt::SideRight], 0.4F);
    EXPECT_EQ(levels[rt::FrontCenter], 0.0F);
}

TEST(HighestLevels, NeverFall) {
    HighestLevels levels(stereo);
    levels.follow(std::vector<float>{0.5F, 2.0F});
    levels.follow(std::vector<float>{0.25F, 1.0F});
    EXPECT_EQ(levels.levels()[rt::FrontLeft], 0.5F);
    EXPECT_EQ(levels.levels()[rt::FrontRight], 2.0F);
}

TEST(HighestLevels, PassOverWhatIsNoNumber) {
    const Levels levels = levelsOf(stereo, {notANumber, notANumber, 0.5F, notANumber, notANumber, 0.25F});
    EXPECT_EQ(levels[rt::FrontLeft], 0.5F);
    EXPECT_EQ(levels[rt::FrontRight], 0.25F);
}

TEST(CarriedOver, IsSoundThatNobodyChanged) {
    const std::vector<float> sound = {0.1F, notANumber, -0.0F, 0.4F};
    EXPECT_TRUE(isCarriedOver(stereo, sound, stereo, sound));
    std::vector<float> other = sound;
    other[2] = 0.0F;
    EXPECT_FALSE(isCarriedOver(stereo, sound, stereo, other));
}

TEST(CarriedOver, IsThePlanesThatTheOutputHas) {
    const std::vector<float> six = {1, 2, 3, 4, 5, 6};
    EXPECT_TRUE(isCarriedOver(surround, six, stereo, std::vector<float>{1, 2}));
    EXPECT_FALSE(isCarriedOver(surround, six, stereo, std::vector<float>{1, 3}));
    EXPECT_TRUE(
        isCarriedOver(stereo, std::vector<float>{1, 2}, surround, std::vector<float>{1, 2, 0, 0, 0, 0}));
    EXPECT_FALSE(
        isCarriedOver(stereo, std::vector<float>{1, 2}, surround, std::vector<float>{1, 2, 1.5F, 0, 0, 0}));
}

TEST(CarriedOver, IsNothingAtAll) {
    EXPECT_TRUE(isCarriedOver(stereo, {}, stereo, {}));
}

}  // namespace
}  // namespace korva::tool
