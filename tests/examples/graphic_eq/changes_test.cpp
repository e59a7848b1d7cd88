// Parameters that change while sound runs.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

#include "tests/examples/graphic_eq/played_equaliser.h"
#include "tests/support/float_bits.h"

namespace korva::test {
namespace {

constexpr std::uint32_t rate = 48000;
constexpr std::size_t glideFrames = rate / 50;

class EqualiserChange : public EveryEqualiser {};
INSTANTIATE_TEST_SUITE_P(OfEachVersion, EqualiserChange, testing::ValuesIn(equaliserFiles()),
                         [](const auto& parameter) { return parameter.index == 0 ? "Fastest" : "Baseline"; });

constexpr BandValues one{12, -12, 12, -12, 12, -12, 12, -12, 12, -12, 12, -12};
constexpr BandValues other{-12, 12, -12, 12, -12, 12, -12, 12, -12, 12, -12, 12};

Sound part(const Sound& sound, std::size_t begin, std::size_t end) {
    Sound cut;
    for (std::size_t plane = 0; plane < sound.size(); ++plane) {
        cut[plane].assign(sound[plane].begin() + static_cast<std::ptrdiff_t>(begin),
                          sound[plane].begin() + static_cast<std::ptrdiff_t>(end));
    }
    return cut;
}

std::vector<float> joined(std::vector<float> first, const std::vector<float>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Sound sine(double hz, std::size_t frames) {
    Sound sound = silence(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        const double angle = 2 * std::numbers::pi * hz * static_cast<double>(i) / rate;
        sound[0][i] = static_cast<float>(0.1 * std::sin(angle));
    }
    return sound;
}

/// The sharpest bend of a curve: a click is one that its sine doesn't have.
double sharpestBend(const std::vector<float>& curve, std::size_t begin, std::size_t end) {
    double sharpest = 0;
    for (std::size_t i = begin; i + 2 < end; ++i) {
        const double bend = static_cast<double>(curve[i]) - 2.0 * curve[i + 1] + curve[i + 2];
        sharpest = std::max(sharpest, std::abs(bend));
    }
    return sharpest;
}

/// A change from one state to another.
struct Change {
    std::string name;
    std::function<void(PlayedEqualiser&)> before;
    std::function<void(PlayedEqualiser&)> after;
};

const Change changes[] = {
    {"all gains", [](auto& e) { e.setGains(one); }, [](auto& e) { e.setGains(other); }},
    {"from nothing", [](auto& e) { e.setGains({}); }, [](auto& e) { e.setGains(one); }},
    {"to nothing", [](auto& e) { e.setGains(one); }, [](auto& e) { e.setGains({}); }},
    {"bypass", [](auto& e) { e.setGains(one), e.setOutputGain(6), e.setBypass(false); },
     [](auto& e) { e.setBypass(true); }},
    {"output gain", [](auto& e) { e.setOutputGain(-20); }, [](auto& e) { e.setOutputGain(20); }},
    {"centres", [](auto& e) { e.setGains(one); },
     [](auto& e) {
         e.setCentres({40, 80, 120, 200, 400, 700, 1200, 2000, 4000, 6000, 9000, 16000});
     }},
};

TEST_P(EqualiserChange, DoesNotClick) {
    constexpr std::size_t settled = rate / 2;
    for (const Change& change : changes) {
        for (const double hz : {50.0, 100.0, 1000.0, 5000.0}) {
            SCOPED_TRACE(change.name + " under " + std::to_string(hz) + " Hz");
            const Sound sound = sine(hz, settled * 2);
            PlayedEqualiser equaliser(GetParam(), rate);
            change.before(equaliser);
            const std::vector<float> unchanged = equaliser.played(sound)[0];
            equaliser.clear();
            std::vector<float> changed = equaliser.played(part(sound, 0, settled))[0];
            change.after(equaliser);
            changed = joined(changed, equaliser.played(part(sound, settled, settled * 2))[0]);

            const double steady = std::max(sharpestBend(changed, settled / 2, settled),
                                           sharpestBend(changed, settled * 3 / 2, settled * 2));
            EXPECT_LT(sharpestBend(changed, settled - 2, settled * 3 / 2), steady * 2);
            // The change was one: where the two steady sounds are put together, it clicks.
            EXPECT_FALSE(sameBits(changed, unchanged));
        }
    }
}

TEST_P(EqualiserChange, WouldBeSeenIfItClicked) {
    constexpr std::size_t settled = rate / 2;
    const Sound sound = sine(100, settled * 2);
    PlayedEqualiser equaliser(GetParam(), rate);
    equaliser.setGains(one);
    const std::vector<float> before = equaliser.played(sound)[0];
    equaliser.clear();
    equaliser.setGains(other);
    const std::vector<float> after = equaliser.played(sound)[0];
    std::vector<float> spliced(before.begin(), before.begin() + 24100);
    spliced.insert(spliced.end(), after.begin() + 24100, after.end());
    const double steady =
        std::max(sharpestBend(before, settled, settled * 2), sharpestBend(after, settled, settled * 2));
    EXPECT_GT(sharpestBend(spliced, settled, settled * 2), steady * 5);
}

TEST_P(EqualiserChange, BeginsWithTheFirstFrameAfterIt) {
    const Sound sound = noise(3000);
    PlayedEqualiser equaliser(GetParam(), rate);
    equaliser.setOutputGain(-20);
    const std::vector<float> unchanged = equaliser.played(sound)[0];
    equaliser.clear();
    std::vector<float> changed = equaliser.played(part(sound, 0, 1001))[0];
    equaliser.setOutputGain(20);
    changed = joined(changed, equaliser.played(part(sound, 1001, 3000))[0]);
    EXPECT_TRUE(sameBits(std::span(changed).first(1001), std::span(unchanged).first(1001)));
    EXPECT_NE(changed[1001], unchanged[1001]);
    EXPECT_NEAR(changed[1001], unchanged[1001], std::abs(unchanged[1001]) * 0.01f);
}

TEST_P(EqualiserChange, IsOverAfterTwentyMilliseconds) {
    const Sound sound = noise(3000);
    PlayedEqualiser equaliser(GetParam(), rate);
    equaliser.setOutputGain(20);
    const std::vector<float> unchanged = equaliser.played(sound)[0];
    equaliser.clear();
    equaliser.setOutputGain(-20);
    equaliser.clear();
    std::vector<float> changed = equaliser.played(part(sound, 0, 1000))[0];
    equaliser.setOutputGain(20);
    changed = joined(changed, equaliser.played(part(sound, 1000, 3000))[0]);
    const std::size_t last = 1000 + glideFrames - 1;
    EXPECT_NE(changed[last - 2], unchanged[last - 2]);
    EXPECT_TRUE(sameBits(std::span(changed).subspan(last), std::span(unchanged).subspan(last)));
}

TEST_P(EqualiserChange, IsTheSameHoweverSoundIsCutIntoBlocks) {
    Sound sound = noise(6000);
    // Untouched or silenced, by whether something is still asked for there.
    sound[2][1333 + glideFrames - 1] = sound[2][1333 + glideFrames] = std::numeric_limits<float>::quiet_NaN();
    for (const Change& change : changes) {
        SCOPED_TRACE(change.name);
        std::vector<Sound> results;
        for (const std::vector<std::uint32_t>& blockFrames :
             {std::vector<std::uint32_t>{500}, {1}, {7, 63, 64, 65}}) {
            PlayedEqualiser equaliser(GetParam(), rate);
            change.before(equaliser);
            Sound begin = equaliser.played(part(sound, 0, 1000), blockFrames);
            change.after(equaliser);
            // Once more on the way.
            Sound middle = equaliser.played(part(sound, 1000, 1333), blockFrames);
            change.before(equaliser);
            Sound end = equaliser.played(part(sound, 1333, 6000), blockFrames);
            for (std::size_t plane = 0; plane < end.size(); ++plane) {
                end[plane] = joined(joined(begin[plane], middle[plane]), end[plane]);
            }
            results.push_back(end);
        }
        expectSameBits(results[1], results[0]);
        expectSameBits(results[2], results[0]);
    }
}

TEST_P(EqualiserChange, HoldsAtOnceBeforeTheFirstBlock) {
    const Sound sound = noise(2000);
    PlayedEqualiser fresh(GetParam(), rate);
    fresh.setGains(one);
    const Sound expected = fresh.played(sound);

    PlayedEqualiser cleared(GetParam(), rate);
    cleared.setGains(other);
    (void)cleared.played(sound);
    cleared.clear();
    cleared.setGains(one);
    expectSameBits(cleared.played(sound), expected);
}

TEST_P(EqualiserChange, OnItsWayIsAtItsEndAfterClear) {
    const Sound sound = noise(2000);
    PlayedEqualiser equaliser(GetParam(), rate);
    equaliser.setGains(one);
    const Sound expected = equaliser.played(sound);
    equaliser.setGains(other);
    (void)equaliser.played(noise(100));
    equaliser.setGains(one);
    (void)equaliser.played(noise(100));
    equaliser.clear();
    expectSameBits(equaliser.played(sound), expected);
}

TEST_P(EqualiserChange, ToNothingLeavesSoundUntouchedToTheBit) {
    const Sound sound = noise(2000);
    PlayedEqualiser equaliser(GetParam(), rate);
    equaliser.setGains(one);
    equaliser.setOutputGain(3);
    (void)equaliser.played(sound);
    equaliser.setBypass(true);
    (void)equaliser.played(part(sound, 0, glideFrames));
    expectSameBits(equaliser.played(sound), sound);
}

TEST_P(EqualiserChange, ToWhatHoldsAlreadyChangesNothing) {
    const Sound sound = noise(3000);
    PlayedEqualiser equaliser(GetParam(), rate);
    equaliser.setGains(one);
    const Sound expected = equaliser.played(sound);
    equaliser.clear();
    const Sound begin = equaliser.played(part(sound, 0, 1000));
    equaliser.setGains(one);
    const Sound end = equaliser.played(part(sound, 1000, 3000));
    for (std::size_t plane = 0; plane < sound.size(); ++plane) {
        EXPECT_TRUE(sameBits(joined(begin[plane], end[plane]), expected[plane]));
    }
}

TEST_P(EqualiserChange, ToNothingFromNothingLeavesSoundUntouched) {
    Sound sound = noise(2000);
    sound[0][100] = std::numeric_limits<float>::infinity();
    PlayedEqualiser equaliser(GetParam(), rate);
    (void)equaliser.played(noise(100));
    equaliser.setGains({});
    equaliser.setBypass(true);
    expectSameBits(equaliser.played(sound), sound);
}

TEST_P(EqualiserChange, OfABandThatRestedBeginsInSilence) {
    const Sound sound = noise(2000);
    PlayedEqualiser equaliser(GetParam(), rate);
    equaliser.setGains(one);
    (void)equaliser.played(sound);
    equaliser.setGains({});
    (void)equaliser.played(sound);
    equaliser.setGains(one);
    Sound quiet = silence(2000);
    equaliser.play(quiet);
    expectSameBits(quiet, silence(2000));
}

}  // namespace
}  // namespace korva::test
