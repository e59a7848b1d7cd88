#include "korva/monitor/decibels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace korva::tool {
namespace {

using std::chrono::milliseconds;
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

TEST(Decibels, AreTwentyTimesTheLogarithm) {
    EXPECT_FLOAT_EQ(decibels(1.0F), 0.0F);
    EXPECT_NEAR(decibels(0.5F), -6.0206F, 1e-4F);
    EXPECT_NEAR(decibels(10.0F), 20.0F, 1e-4F);
    EXPECT_EQ(decibels(0.0F), -infinity);
    EXPECT_EQ(decibels(-0.0F), -infinity);
    EXPECT_TRUE(std::isnan(decibels(-0.5F)));
    EXPECT_TRUE(std::isnan(decibels(nan)));
    EXPECT_EQ(decibels(infinity), infinity);
}

TEST(Decibels, AreWrittenWithOneDigitAndNoNegativeZero) {
    EXPECT_EQ(decibelText(-6.0206F), "-6.0");
    EXPECT_EQ(decibelText(0.0F), "0.0");
    EXPECT_EQ(decibelText(-0.01F), "0.0");
    EXPECT_EQ(decibelText(1.55F), "+1.6");
    EXPECT_EQ(decibelText(-infinity), "-inf");
    EXPECT_EQ(decibelText(infinity), "+inf");
    EXPECT_EQ(decibelText(nan), "?");
}

TEST(Decibels, FillABarFromTheFloorToFullScale) {
    EXPECT_EQ(barLength(-infinity, 60), 0U);
    EXPECT_EQ(barLength(nan, 60), 0U);
    EXPECT_EQ(barLength(-60.0F, 60), 0U);
    EXPECT_EQ(barLength(-30.0F, 60), 30U);
    EXPECT_EQ(barLength(0.0F, 60), 60U);
    EXPECT_EQ(barLength(6.0F, 60), 60U);
    EXPECT_EQ(barLength(infinity, 60), 60U);
    EXPECT_EQ(barLength(0.0F, 0), 0U);
}

TEST(Decibels, TheHighestOfASetIsNoNumberIfOneIsNone) {
    EXPECT_EQ(highestOf({0.25F, 0.5F}), 0.5F);
    EXPECT_EQ(highestOf({}), 0.0F);
    EXPECT_TRUE(std::isnan(highestOf({0.5F, nan, 0.6F})));
}

class PeakHoldTest : public testing::Test {
protected:
    float after(int ms, float linear) {
        now += milliseconds(ms);
        hold.update({linear}, now);
        return hold.levels()[0];
    }

    PeakHold hold;
    PeakHold::Time now{std::chrono::hours(1)};
};

TEST_F(PeakHoldTest, StaysForOneAndAHalfSeconds) {
    EXPECT_FLOAT_EQ(after(0, 1.0F), 0.0F);
    EXPECT_FLOAT_EQ(after(100, 0.1F), 0.0F);
    EXPECT_FLOAT_EQ(after(1400, 0.1F), 0.0F);
}

TEST_F(PeakHoldTest, FallsTwentyDecibelsASecondAfterwardsDownToTheLevel) {
    after(0, 1.0F);
    EXPECT_NEAR(after(2000, 0.0F), -10.0F, 0.01F);
    EXPECT_NEAR(after(500, 0.0F), -20.0F, 0.01F);
    EXPECT_NEAR(after(60'000, 0.5F), -6.02F, 0.01F);
}

TEST_F(PeakHoldTest, RisesAtOnceAndStaysAnew) {
    after(0, 0.5F);
    EXPECT_FLOAT_EQ(after(1000, 1.0F), 0.0F);
    EXPECT_FLOAT_EQ(after(1500, 0.5F), 0.0F);
}

TEST_F(PeakHoldTest, TakesWhatIsNoLevelForSilence) {
    EXPECT_EQ(after(0, nan), -infinity);
    EXPECT_FLOAT_EQ(after(10, 1.0F), 0.0F);
    EXPECT_FLOAT_EQ(after(10, nan), 0.0F);
}

}  // namespace
}  // namespace korva::tool
