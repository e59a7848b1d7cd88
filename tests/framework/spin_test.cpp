#include "framework/spin.h"

#include <gtest/gtest.h>

#include <chrono>

#include "platform/processor_count.h"

namespace korva::framework {
namespace {

using Clock = std::chrono::steady_clock;

/// How often a spin in vain looks.
int looksInVain(AdaptiveSpin& spin) {
    int looks = 0;
    EXPECT_FALSE(spin.until([&looks] {
        ++looks;
        return false;
    }));
    return looks;
}

class Spin : public testing::Test {
protected:
    const bool hasCompany = platform::processorCount() > 1;
    AdaptiveSpin spin;
};

TEST_F(Spin, LooksOnceAtWhatIsReadyAlready) {
    int looks = 0;
    EXPECT_TRUE(spin.until([&looks] {
        ++looks;
        return true;
    }));
    EXPECT_EQ(looks, 1);
}

TEST_F(Spin, LooksAgainOnlyWhereSomebodyElseCanRunMeanwhile) {
    int looks = 0;
    const bool ready = spin.until([&looks] {
        ++looks;
        return looks == 3;
    });
    EXPECT_EQ(ready, hasCompany);
    EXPECT_EQ(looks, hasCompany ? 3 : 1);
}

TEST_F(Spin, EndsInVainSoon) {
    const Clock::time_point begin = Clock::now();
    looksInVain(spin);
    EXPECT_LT(Clock::now() - begin, std::chrono::seconds(5));
}

TEST_F(Spin, LeavesOutMoreAndMoreAfterSpinsInVain) {
    if (!hasCompany) {
        GTEST_SKIP() << "one processor never spins";
    }
    for (const int leftOut : {1, 2, 4, 8, 16, 16, 16}) {
        EXPECT_GT(looksInVain(spin), 1);
        for (int i = 0; i < leftOut; ++i) {
            EXPECT_EQ(looksInVain(spin), 1) << i << " of " << leftOut;
        }
    }
}

TEST_F(Spin, LeavesOutAsManyFirstAsItIsToldTo) {
    AdaptiveSpin late(2);
    EXPECT_EQ(looksInVain(late), 1);
    EXPECT_EQ(looksInVain(late), 1);
    if (hasCompany) {
        EXPECT_GT(looksInVain(late), 1);
    }
}

TEST_F(Spin, BeginsAnewAfterOneThatWasOfUse) {
    if (!hasCompany) {
        GTEST_SKIP() << "one processor never spins";
    }
    looksInVain(spin);
    looksInVain(spin);
    looksInVain(spin);
    looksInVain(spin);
    looksInVain(spin);
    int looks = 0;
    EXPECT_TRUE(spin.until([&looks] { return ++looks == 2; }));

    EXPECT_GT(looksInVain(spin), 1);
    EXPECT_EQ(looksInVain(spin), 1);
    EXPECT_GT(looksInVain(spin), 1);
}

TEST_F(Spin, IsNotWornOutByWhatIsReadyAlready) {
    looksInVain(spin);
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(spin.until([] { return true; }));
    }
    EXPECT_EQ(looksInVain(spin), 1);
}

}  // namespace
}  // namespace korva::framework
