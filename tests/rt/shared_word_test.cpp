#include "rt/shared_word.h"

#include <gtest/gtest.h>

#include <array>

#include <cstdint>

#include "tests/support/stream.h"

namespace korva::rt {
namespace {

TEST(SharedWord, HoldsItsInitialValueAndThenWhatWasSet) {
    SharedWord<std::uint64_t> word(5);
    EXPECT_EQ(word.get(), 5u);

    word.set(0xFFFFFFFFFFFFFFFF);

    EXPECT_EQ(word.get(), 0xFFFFFFFFFFFFFFFF);
    EXPECT_FALSE(SharedWord<bool>().get());
}

TEST(SharedFormat, GivesBackEveryFieldOfTheFormatThatWasSet) {
    SharedFormat shared;
    EXPECT_EQ(shared.get(), EngineFormat{});

    for (std::int32_t channels = 1; channels <= 8; ++channels) {
        const EngineFormat format = test::formatOf(channels);
        shared.set(format);
        EXPECT_EQ(shared.get(), format) << channels << " channels";
    }
}

TEST(SharedFormat, KeepsThePlanesOfAnyMapWithinTheBus) {
    EngineFormat format;
    format.Assign(48000, 8, 0x63F);
    format.planeOfChannel = {8, 9, 31, 32, 255, 5, 6, 7};
    SharedFormat shared;

    shared.set(format);

    const std::array<std::uint8_t, planeCount> kept = {0, 1, 7, 0, 7, 5, 6, 7};
    EXPECT_EQ(shared.get().planeOfChannel, kept);
    EXPECT_EQ(shared.get().channelMask, 0x63Fu);
}

}  // namespace
}  // namespace korva::rt
