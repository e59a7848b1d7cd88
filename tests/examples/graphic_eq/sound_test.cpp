// What becomes of sound whose parameters stay as they are.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "tests/examples/graphic_eq/played_equaliser.h"
#include "tests/support/float_bits.h"
#include "tests/support/random_samples.h"

namespace korva::test {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

class EqualisedSound : public EveryEqualiser {};
INSTANTIATE_TEST_SUITE_P(OfEachVersion, EqualisedSound, testing::ValuesIn(equaliserFiles()),
                         [](const auto& parameter) { return parameter.index == 0 ? "Fastest" : "Baseline"; });

constexpr BandValues someGains{6, -3, 0, 12, -12, 1, 0, 0, 4, -8, 24, -24};

/// Every bit pattern that samples may have.
Sound strangeSound(std::size_t frames) {
    RandomSamples random;
    Sound sound = silence(frames);
    for (std::vector<float>& plane : sound) {
        random.fill(plane, Content::strangeNaNs);
    }
    return sound;
}

double levelDbOf(const std::vector<float>& plane) {
    double sum = 0;
    for (const float sample : plane) {
        sum += static_cast<double>(sample) * sample;
    }
    return 10 * std::log10(sum);
}

TEST_P(EqualisedSound, PassesUntouchedByDefault) {
    PlayedEqualiser equaliser(GetParam());
    const Sound sound = strangeSound(1500);
    expectSameBits(equaliser.played(sound, {512, 1, 7}), sound);
}

TEST_P(EqualisedSound, PassesUntouchedWhenAllThatIsSetIsZero) {
    PlayedEqualiser equaliser(GetParam());
    equaliser.setAllGains(0);
    equaliser.setCentres({});
    equaliser.setOutputGain(0);
    equaliser.setBypass(false);
    equaliser.setEffectsDisabled(false);
    const Sound sound = strangeSound(1500);
    expectSameBits(equaliser.played(sound), sound);
}

TEST_P(EqualisedSound, PassesUntouchedInBypass) {
    PlayedEqualiser equaliser(GetParam());
    equaliser.setGains(someGains);
    equaliser.setOutputGain(-6);
    equaliser.setBypass(true);
    const Sound sound = strangeSound(1500);
    expectSameBits(equaliser.played(sound), sound);
}

TEST_P(EqualisedSound, PassesUntouchedWhileEffectsAreDisabled) {
    PlayedEqualiser equaliser(GetParam());
    equaliser.setGains(someGains);
    equaliser.setEffectsDisabled(true);
    const Sound sound = strangeSound(1500);
    expectSameBits(equaliser.played(sound), sound);
}

TEST_P(EqualisedSound, IsEqualisedAgainOnceNeitherBypassNorDisabledEffectsHold) {
    PlayedEqualiser equaliser(GetParam());
    equaliser.setGains(someGains);
    const Sound sound = noise(2000);
    const Sound equalised = equaliser.played(sound);
    equaliser.setBypass(true);
    equaliser.setEffectsDisabled(true);
    equaliser.setBypass(false);
    equaliser.clear();
    expectSameBits(equaliser.played(sound), sound);
    equaliser.setEffectsDisabled(false);
    equaliser.clear();
    expectSameBits(equaliser.played(sound), equalised);
}

TEST_P(EqualisedSound, IsMultipliedByTheOutputGain) {
    PlayedEqualiser equaliser(GetParam());
    equaliser.setOutputGain(-20);
    const Sound sound = noise(1000);
    Sound tenth = sound;
    for (std::vector<float>& plane : tenth) {
        std::transform(plane.begin(), plane.end(), plane.begin(), [](float sample) { return sample * 0.1f; });
    }
    expectSameBits(equaliser.played(sound), tenth);
}

TEST_P(EqualisedSound, IsTheSameHoweverItIsCutIntoBlocks) {
    PlayedEqualiser equaliser(GetParam());
    equaliser.setGains(someGains);
    equaliser.setOutputGain(2);
    Sound sound = noise(5000);
    sound[3][2049] = notANumber;
    const Sound whole = equaliser.played(sound);
    const std::vector<std::uint32_t> cuts[] = {{1},  {2},  {3},           {4, 1}, {63},
                                               {64}, {65}, {511, 512, 1}, {480},  {100, 7, 333}};
    for (const auto& blockFrames : cuts) {
        SCOPED_TRACE(blockFrames.front());
        equaliser.clear();
        expectSameBits(equaliser.played(sound, blockFrames), whole);
    }
}

TEST_P(EqualisedSound, IsTheSameAgainAfterClear) {
    PlayedEqualiser equaliser(GetParam());
    equaliser.setGains(someGains);
    const Sound sound = noise(3000);
    const Sound once = equaliser.played(sound);
    EXPECT_FALSE(sameBits(equaliser.played(sound)[0], once[0])) << "nothing was left to forget";
    equaliser.clear();
    expectSameBits(equaliser.played(sound), once);
}

TEST_P(EqualisedSound, KeepsItsParametersFromOneInitializeToTheNext) {
    PlayedEqualiser equaliser(GetParam());
    equaliser.setGains(someGains);
    const Sound sound = noise(3000);
    const Sound once = equaliser.played(sound);
    ASSERT_TRUE(equaliser.initialize(formatOf(8, 48000), formatOf(8, 48000)));
    expectSameBits(equaliser.played(sound), once);
}

TEST_P(EqualisedSound, IsThatOfTheNewRateAfterAnInitialize) {
    const Sound sound = noise(3000);
    PlayedEqualiser fresh(GetParam(), 96000);
    fresh.setGains(someGains);
    PlayedEqualiser equaliser(GetParam(), 48000);
    equaliser.setGains(someGains);
    (void)equaliser.played(sound);

    ASSERT_TRUE(equaliser.initialize(formatOf(8, 96000), formatOf(8, 96000)));

    expectSameBits(equaliser.played(sound), fresh.played(sound));
}

TEST_P(EqualisedSound, IsTheSameOnEachPlane) {
    PlayedEqualiser equaliser(GetParam());
    equaliser.setGains(someGains);
    Sound sound = noise(2000);
    sound.fill(sound[0]);
    equaliser.play(sound);
    for (std::size_t plane = 1; plane < sound.size(); ++plane) {
        EXPECT_TRUE(sameBits(sound[plane], sound[0])) << plane;
    }
}

TEST_P(EqualisedSound, LeavesSilencePlanesAsTheyAreToTheBit) {
    PlayedEqualiser equaliser(GetParam());
    equaliser.setGains(someGains);
    Sound sound = silence(2000);
    sound[KORVA_LOW_FREQUENCY] = noise(2000)[KORVA_LOW_FREQUENCY];
    equaliser.play(sound);
    for (std::size_t plane = 0; plane < sound.size(); ++plane) {
        if (plane != KORVA_LOW_FREQUENCY) {
            EXPECT_TRUE(sameBits(sound[plane], silence(2000)[plane])) << plane;
        }
    }
}

TEST_P(EqualisedSound, RecoversFromWhatIsNoSample) {
    for (const float strange :
         {notANumber, -notANumber, infinity, -infinity, std::numeric_limits<float>::max()}) {
        PlayedEqualiser equaliser(GetParam());
        equaliser.setAllGains(24);
        Sound sound = noise(3000);
        Sound withoutIt = sound;
        sound[1][1000] = strange;
        withoutIt[1][1000] = 0;
        equaliser.play(sound);
        equaliser.clear();
        expectSameBits(sound, equaliser.played(withoutIt));
    }
}

TEST_P(EqualisedSound, StaysFiniteUnderTheLoudestSamplesAndDiesAway) {
    PlayedEqualiser equaliser(GetParam());
    BandValues centres;
    centres.fill(1000);
    equaliser.setCentres(centres);
    equaliser.setAllGains(24);
    Sound sound = silence(48000);
    for (std::size_t i = 0; i < 4800; ++i) {
        sound[0][i] = i / 24 % 2 == 0 ? 1048576.0f : -1048576.0f;
    }
    equaliser.play(sound);
    EXPECT_TRUE(
        std::all_of(sound[0].begin(), sound[0].end(), [](float sample) { return std::isfinite(sample); }));
    EXPECT_LT(std::abs(sound[0].back()), 1.0f);
}

TEST_P(EqualisedSound, EndsInZerosAndNotInDenormals) {
    PlayedEqualiser equaliser(GetParam());
    equaliser.setGains(someGains);
    Sound sound = silence(48000 * 6);
    sound[0][0] = 1e-20f;
    sound[1][0] = 1;
    equaliser.play(sound);
    for (const std::size_t plane : {0u, 1u}) {
        const auto isSmall = [](float sample) { return std::fpclassify(sample) == FP_SUBNORMAL; };
        EXPECT_EQ(std::count_if(sound[plane].begin(), sound[plane].end(), isSmall), 0) << plane;
        EXPECT_EQ(sound[plane].back(), 0.0f) << plane;
    }
}

TEST_P(EqualisedSound, LeavesTheCallersArithmeticAsItIs) {
    PlayedEqualiser equaliser(GetParam());
    equaliser.setGains(someGains);
    (void)equaliser.played(noise(100));
    volatile float smallest = std::numeric_limits<float>::min();
    EXPECT_NE(smallest / 2, 0.0f);
}

TEST_P(EqualisedSound, KeepsABandOffWhoseCentreIsTooNearToHalfTheRate) {
    PlayedEqualiser equaliser(GetParam(), 8000);
    equaliser.setGains({0, 0, 0, 0, 0, 0, 0, 0, 0, 24, 24, 24});
    const Sound sound = strangeSound(1000);
    expectSameBits(equaliser.played(sound), sound);
    equaliser.clear();
    equaliser.setGains({0, 0, 0, 0, 0, 0, 0, 0, 24, 0, 0, 0});
    EXPECT_FALSE(sameBits(equaliser.played(sound)[0], sound[0]));
}

TEST_P(EqualisedSound, ComesFromOneInstanceWithoutAnother) {
    PlayedEqualiser loud(GetParam());
    PlayedEqualiser quiet(GetParam());
    loud.setOutputGain(20);
    quiet.setGains({-24, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    const Sound sound = noise(1000);
    const Sound alone = loud.played(sound);
    loud.clear();
    Sound first = loud.played(sound);
    EXPECT_LT(levelDbOf(quiet.played(sound)[0]), levelDbOf(sound[0]));
    expectSameBits(first, alone);
}

TEST_P(EqualisedSound, PassesUntouchedIfTheFormatsDontFit) {
    PlayedEqualiser equaliser(GetParam());
    equaliser.setGains(someGains);
    const Sound sound = strangeSound(1000);
    (void)equaliser.played(sound);
    EXPECT_FALSE(equaliser.initialize(formatOf(8, 48000), formatOf(2, 48000)));
    expectSameBits(equaliser.played(sound), sound);
    equaliser.setGains({});
    equaliser.setGains(someGains);
    expectSameBits(equaliser.played(sound), sound);
}

TEST(EqualiserVersions, DifferInTheirLastBitsOnly) {
    const Sound sound = noise(5000);
    std::vector<Sound> results;
    for (const std::string& file : equaliserFiles()) {
        PlayedEqualiser equaliser(file);
        equaliser.setGains(someGains);
        results.push_back(equaliser.played(sound));
    }
    for (std::size_t i = 0; i < sound[0].size(); ++i) {
        ASSERT_NEAR(results[0][5][i], results[1][5][i], 1e-3f) << i;
    }
}

}  // namespace
}  // namespace korva::test
