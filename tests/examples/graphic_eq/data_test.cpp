// What the equaliser tells diagnostic tools.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <span>
#include <vector>

#include "tests/examples/graphic_eq/played_equaliser.h"

namespace korva::test {
namespace {

using Levels = std::array<float, KORVA_PLANES>;

const std::map<std::int32_t, std::uint32_t> sizesServed{
    {KORVA_DATA_MODULE_VERSION, 4},  {KORVA_DATA_CYCLE_COUNT, 4},     {KORVA_DATA_FRAME_COUNT, 4},
    {KORVA_DATA_INPUT_METERS, 32},   {KORVA_DATA_OUTPUT_METERS, 32},  {KORVA_DATA_METERS_ENABLED, 0},
    {KORVA_DATA_PARAMETER_BYTES, 4}, {KORVA_DATA_BYTES_RECEIVED, 12}, {KORVA_DATA_BYTES_SENT, 0},
};

void switchMeters(PlayedEqualiser& equaliser, bool on) {
    const std::byte byte{on};
    EXPECT_EQ(equaliser.exchange(KORVA_DATA_METERS_ENABLED, std::span(&byte, 1), {}), 0u);
}

std::uint32_t restartCount(PlayedEqualiser& equaliser, std::uint32_t value) {
    return equaliser.exchange(KORVA_DATA_PARAMETER_BYTES, std::as_bytes(std::span(&value, 1)), {});
}

TEST(EqualiserData, AreServedWithExactlyTheirSizeWhereThereIsRoom) {
    PlayedEqualiser equaliser;
    constexpr std::byte untouched{0xA5};
    for (std::int32_t id = -50; id <= 10; ++id) {
        const auto row = sizesServed.find(id);
        const std::uint32_t served = row == sizesServed.end() ? 0 : row->second;
        for (std::uint32_t room = 0; room <= 40; ++room) {
            std::vector<std::byte> out(40, untouched);
            const std::uint32_t written = room < served ? 0 : served;
            EXPECT_EQ(equaliser.exchange(id, {}, std::span(out).first(room)), written)
                << id << " into " << room;
            for (std::size_t i = written; i < out.size(); ++i) {
                ASSERT_EQ(out[i], untouched) << id << " into " << room;
            }
        }
    }
}

TEST(EqualiserData, AreThoseOfTheEnginesBankOnly) {
    PlayedEqualiser equaliser;
    std::array<std::byte, 40> out;
    for (const std::int32_t bank : {-2, 0, 1, 4}) {
        for (const auto& [id, size] : sizesServed) {
            EXPECT_EQ(equaliser.exchange(id, {}, out, bank), 0u) << bank << " " << id;
        }
    }
}

TEST(EqualiserData, AreServedBeforeInitializeAndAfterUninitialize) {
    PlayedEqualiser equaliser(equaliserFiles().front(), 0);
    EXPECT_EQ(equaliser.read<std::uint32_t>(KORVA_DATA_FRAME_COUNT), 0u);
    EXPECT_EQ(equaliser.read<Levels>(KORVA_DATA_INPUT_METERS), Levels{});
    switchMeters(equaliser, true);
    ASSERT_TRUE(equaliser.initialize(formatOf(8, 48000), formatOf(8, 48000)));
    (void)equaliser.played(noise(100));
    equaliser.uninitialize();
    EXPECT_EQ(equaliser.read<std::uint32_t>(KORVA_DATA_FRAME_COUNT), 100u);
    EXPECT_GT(equaliser.read<Levels>(KORVA_DATA_INPUT_METERS)[0], 0.0f);
}

TEST(EqualiserData, CountFramesAndCycles) {
    PlayedEqualiser equaliser;
    EXPECT_EQ(equaliser.read<std::uint32_t>(KORVA_DATA_FRAME_COUNT), 0u);
    EXPECT_EQ(equaliser.read<std::uint32_t>(KORVA_DATA_CYCLE_COUNT), 0u);
    equaliser.setAllGains(3);
    (void)equaliser.played(noise(1000), {100, 7});
    EXPECT_EQ(equaliser.read<std::uint32_t>(KORVA_DATA_FRAME_COUNT), 1000u);
    EXPECT_GT(equaliser.read<std::uint32_t>(KORVA_DATA_CYCLE_COUNT), 0u);
}

TEST(EqualiserData, CountTheBytesOfParameters) {
    PlayedEqualiser equaliser;
    EXPECT_EQ(equaliser.read<std::uint32_t>(KORVA_DATA_PARAMETER_BYTES), 0u);
    equaliser.setAllGains(3);
    equaliser.setBypass(true);
    equaliser.set(4, 24, std::vector<std::byte>(4));
    EXPECT_EQ(equaliser.read<std::uint32_t>(KORVA_DATA_PARAMETER_BYTES), 53u);
    EXPECT_EQ(restartCount(equaliser, 1), 0u);
    EXPECT_EQ(equaliser.read<std::uint32_t>(KORVA_DATA_PARAMETER_BYTES), 53u);
    EXPECT_EQ(restartCount(equaliser, 0), 0u);
    EXPECT_EQ(equaliser.read<std::uint32_t>(KORVA_DATA_PARAMETER_BYTES), 0u);
    equaliser.setOutputGain(1);
    EXPECT_EQ(equaliser.read<std::uint32_t>(KORVA_DATA_PARAMETER_BYTES), 4u);
}

TEST(EqualiserData, TellWhenParametersCame) {
    PlayedEqualiser equaliser;
    const auto before = equaliser.read<DspByteCount>(KORVA_DATA_BYTES_RECEIVED);
    EXPECT_EQ(before.bytes, 0u);
    equaliser.setAllGains(3);
    const auto first = equaliser.read<DspByteCount>(KORVA_DATA_BYTES_RECEIVED);
    EXPECT_EQ(first.bytes, 48u);
    EXPECT_EQ(first.clockStart, first.clockEnd);
    // As long as the clock stands still nothing can be told apart; it runs in milliseconds.
    DspByteCount later = first;
    while (later.clockEnd == first.clockEnd) {
        equaliser.setBypass(false);
        later = equaliser.read<DspByteCount>(KORVA_DATA_BYTES_RECEIVED);
    }
    EXPECT_EQ(later.clockStart, first.clockStart);
    EXPECT_GT(static_cast<std::int32_t>(later.clockEnd - later.clockStart), 0);
}

TEST(EqualiserMeters, AreZeroUntilTheyAreSwitchedOn) {
    PlayedEqualiser equaliser;
    (void)equaliser.played(noise(100));
    EXPECT_EQ(equaliser.read<Levels>(KORVA_DATA_INPUT_METERS), Levels{});
    EXPECT_EQ(equaliser.read<Levels>(KORVA_DATA_OUTPUT_METERS), Levels{});
    switchMeters(equaliser, true);
    EXPECT_EQ(equaliser.read<Levels>(KORVA_DATA_INPUT_METERS), Levels{});
}

TEST(EqualiserMeters, ShowTheHighestLevelOfEachPlaneSinceTheLastLook) {
    PlayedEqualiser equaliser;
    equaliser.setOutputGain(-20);
    switchMeters(equaliser, true);
    Sound sound = silence(1001);
    sound[0][0] = 0.25f;
    sound[1][500] = -0.5f;
    sound[7][1000] = 2.0f;
    equaliser.play(sound, {7, 512});
    EXPECT_EQ(equaliser.read<Levels>(KORVA_DATA_INPUT_METERS), (Levels{0.25f, 0.5f, 0, 0, 0, 0, 0, 2.0f}));
    EXPECT_EQ(equaliser.read<Levels>(KORVA_DATA_OUTPUT_METERS),
              (Levels{0.25f * 0.1f, 0.5f * 0.1f, 0, 0, 0, 0, 0, 2.0f * 0.1f}));
    EXPECT_EQ(equaliser.read<Levels>(KORVA_DATA_INPUT_METERS), Levels{});
    EXPECT_EQ(equaliser.read<Levels>(KORVA_DATA_OUTPUT_METERS), Levels{});
}

TEST(EqualiserMeters, SkipWhatIsNoNumber) {
    PlayedEqualiser equaliser;
    switchMeters(equaliser, true);
    constexpr std::size_t frames = 19;
    for (std::size_t i = 0; i < frames * frames; ++i) {
        const std::size_t highest = i / frames;
        const std::size_t strange = i % frames;
        if (highest != strange) {
            Sound sound = silence(frames);
            sound[2].assign(frames, 0.05f);
            sound[2][highest] = -0.1f;
            sound[2][strange] = std::numeric_limits<float>::quiet_NaN();
            equaliser.play(sound);
            EXPECT_EQ(equaliser.read<Levels>(KORVA_DATA_INPUT_METERS)[2], 0.1f) << highest << " " << strange;
        }
    }
}

TEST(EqualiserMeters, BeginAnewWhenSwitchedOnAgain) {
    PlayedEqualiser equaliser;
    switchMeters(equaliser, true);
    (void)equaliser.played(noise(100));
    switchMeters(equaliser, false);
    EXPECT_EQ(equaliser.read<Levels>(KORVA_DATA_INPUT_METERS), Levels{});
    switchMeters(equaliser, true);
    EXPECT_EQ(equaliser.read<Levels>(KORVA_DATA_INPUT_METERS), Levels{});
    EXPECT_EQ(equaliser.read<Levels>(KORVA_DATA_OUTPUT_METERS), Levels{});
}

TEST(EqualiserMeters, StayOnWhenTheyAreSwitchedOnTwice) {
    PlayedEqualiser equaliser;
    switchMeters(equaliser, true);
    (void)equaliser.played(noise(100));
    switchMeters(equaliser, true);
    EXPECT_GT(equaliser.read<Levels>(KORVA_DATA_INPUT_METERS)[0], 0.0f);
}

}  // namespace
}  // namespace korva::test
