// Streams of all kinds of formats, and of formats that change while they are looked at.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/system/class_test.h"

namespace korva::test {
namespace {

using published::UNCOMPRESSEDAUDIOFORMAT;

class LockedFormats : public ClassTest {
protected:
    void expectUsable() {
        EXPECT_EQ(object.lock(floats(2)), result::ok);
        EXPECT_EQ(object.unlock(), result::ok);
    }

    HostedObject object{library, GetParam()};
};

TEST_P(LockedFormats, MayChangeTheNumberOfChannelsInAStreamEffectOnly) {
    const bool isStream = GetParam().clsid == streamClass.clsid;
    EXPECT_EQ(object.lock(floats(2), floats(1)), isStream ? result::ok : result::connectionFormatInvalid);
    EXPECT_EQ(object.unlock(), isStream ? result::ok : result::alreadyUnlocked);
    EXPECT_EQ(object.lock(floats(8), floats(2)), isStream ? result::ok : result::connectionFormatInvalid);
    static_cast<void>(object.unlock());
    expectUsable();
}

TEST_P(LockedFormats, MayHaveOtherSpeakersOnTheOtherSide) {
    EXPECT_EQ(object.lock(floats(4, 48000, 0x33), floats(4, 48000, 0x603)), result::ok);
}

TEST_P(LockedFormats, OfAnyNumbersLockOrGiveTheResultOfARule) {
    const float rates[] = {0.0f,
                           -48000.0f,
                           9.9f,
                           48000.5f,
                           1e9f,
                           std::numeric_limits<float>::denorm_min(),
                           std::numeric_limits<float>::infinity(),
                           std::numeric_limits<float>::quiet_NaN()};
    const std::vector<float> samples(std::size_t{8} * 16, 0.25f);
    for (const float rate : rates) {
        for (const DWORD channels : {0U, 1U, 2U, 8U, 9U, 4096U, 4097U, 0x80000000U, 0xFFFFFFFFU}) {
            for (const DWORD mask : {0U, 4U, 0x80000000U, 0xFFFFFFFFU}) {
                for (const DWORD width : {0U, 4U, 0xFFFFFFFFU}) {
                    UNCOMPRESSEDAUDIOFORMAT format = floats(channels, rate, mask);
                    format.dwBytesPerSampleContainer = width;
                    format.dwValidBitsPerSample = width;
                    // What is no number equals nothing, itself neither.
                    const HRESULT expected = channels > 8       ? result::formatNotSupported
                                             : std::isnan(rate) ? result::connectionFormatInvalid
                                                                : result::ok;
                    EXPECT_EQ(object.lock(format), expected) << channels << " at " << rate;
                    if (expected == result::ok) {
                        const auto played = object.play(std::span(samples).first(std::size_t{channels} * 16),
                                                        channels == 0 ? 1 : channels, channels);
                        EXPECT_EQ(object.unlock(), result::ok);
                    }
                }
            }
        }
    }
    expectUsable();
}

TEST_P(LockedFormats, ThatFailAtAnyQuestionLeaveTheObjectUsable) {
    int failures = 0;
    for (int failing = 0; failing < 12; ++failing) {
        OwnMediaType good(floats(2));
        OwnMediaType bad([failing](int question, UNCOMPRESSEDAUDIOFORMAT& format) {
            format = floats(2);
            return question == failing ? result::deviceGone : result::ok;
        });
        Connection input(bad);
        Connection output(good);
        const HRESULT locked = object.lock(input, output);
        EXPECT_TRUE(locked == result::ok || locked == result::deviceGone ||
                    locked == result::formatNotSupported)
            << std::hex << locked;
        EXPECT_EQ(object.unlock(), locked == result::ok ? result::ok : result::alreadyUnlocked);
        failures += locked == result::ok ? 0 : 1;
        expectUsable();
    }
    EXPECT_GE(failures, 3) << "the traits, the questions of two sides, and the agreement";
}

TEST_P(LockedFormats, ThatChangeWhileTheyAreLookedAtGiveAResultOfARule) {
    for (int change = 1; change < 12; ++change) {
        OwnMediaType good(floats(2));
        OwnMediaType changing([change](int question, UNCOMPRESSEDAUDIOFORMAT& format) {
            format = question < change ? floats(2) : wholes(64, -1.0f, 0xFFFFFFFF);
            return result::ok;
        });
        Connection input(good);
        Connection output(changing);
        const HRESULT locked = object.lock(input, output);
        EXPECT_TRUE(locked == result::ok || locked == result::formatNotSupported ||
                    locked == result::connectionFormatInvalid)
            << std::hex << locked;
        // The stream may be of more channels than were agreed on, though never of more than eight.
        if (locked == result::ok) {
            const std::vector<float> samples(std::size_t{8} * 16, 0.25f);
            std::vector<float> played(std::size_t{8} * 16);
            auto from = bufferOf(samples, 16);
            auto to = bufferOf(played, 0);
            object.process(from, to);
            EXPECT_EQ(object.unlock(), result::ok);
        }
        expectUsable();
    }
}

KORVA_OF_EACH_CLASS(LockedFormats);

}  // namespace
}  // namespace korva::test
