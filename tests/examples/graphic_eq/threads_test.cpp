// The owner's thread and the audio thread in the equaliser at the same time.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <thread>

#include "tests/examples/graphic_eq/played_equaliser.h"

namespace korva::test {
namespace {

constexpr int rounds = 400;

/// Changes and reads all that can be, until `isOver`.
void meddle(PlayedEqualiser& equaliser, const std::atomic<bool>& isOver, std::atomic<int>& changes) {
    std::array<std::byte, 32> out;
    const std::byte on{1};
    for (int i = 0; !isOver; ++i) {
        equaliser.setAllGains(static_cast<float>(i % 49 - 24));
        equaliser.setOutputGain(static_cast<float>(i % 13 - 12));
        equaliser.setBypass(i % 7 == 0);
        equaliser.exchange(KORVA_DATA_METERS_ENABLED, std::span(&on, 1), {});
        for (std::int32_t id = KORVA_DATA_BYTES_SENT; id <= KORVA_DATA_MODULE_VERSION; ++id) {
            equaliser.exchange(id, {}, out);
        }
        EngineFormat format = formatOf(2, 44100);
        equaliser.testInput(format, formatOf(8, 48000));
        equaliser.testOutput(format, {});
        ++changes;
    }
}

TEST(EqualiserThreads, MeetWhileSoundRuns) {
    PlayedEqualiser equaliser;
    std::atomic<bool> isOver{false};
    std::atomic<int> changes{0};
    std::thread owner([&] { meddle(equaliser, isOver, changes); });
    bool isFinite = true;
    // As many blocks as it takes for both to have been at work.
    for (int block = 0; block < rounds || changes < rounds; ++block) {
        Sound sound = noise(64);
        equaliser.play(sound, {33, 31});
        for (const auto& plane : sound) {
            isFinite &=
                std::all_of(plane.begin(), plane.end(), [](float sample) { return std::isfinite(sample); });
        }
    }
    isOver = true;
    owner.join();
    EXPECT_TRUE(isFinite);

    // What was set last holds.
    equaliser.setAllGains(0);
    equaliser.setOutputGain(0);
    (void)equaliser.played(noise(48000 / 50));
    expectSameBits(equaliser.played(noise(1000)), noise(1000));
}

TEST(EqualiserThreads, OfTwoInstancesHaveNothingInCommon) {
    const auto play = [](float db, Sound& result) {
        PlayedEqualiser equaliser;
        equaliser.setAllGains(db);
        result = equaliser.played(noise(5000), {100});
    };
    std::array<Sound, 2> alone;
    play(6, alone[0]);
    play(-6, alone[1]);
    std::array<Sound, 2> together;
    std::thread first([&] { play(6, together[0]); });
    std::thread second([&] { play(-6, together[1]); });
    first.join();
    second.join();
    expectSameBits(together[0], alone[0]);
    expectSameBits(together[1], alone[1]);
}

}  // namespace
}  // namespace korva::test
