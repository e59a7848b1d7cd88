// Which formats the equaliser works with.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <tuple>

#include "tests/examples/graphic_eq/played_equaliser.h"

namespace korva::test {
namespace {

auto fieldsOf(const EngineFormat& format) {
    return std::tuple(format.channelMask, format.channelCount, format.sampleRate,
                      std::to_array(format.planeOfChannel), std::to_array(format.speakerOfPlane));
}

EngineFormat withCount(std::int32_t count) {
    EngineFormat format = formatOf(8, 48000);
    format.channelCount = count;
    return format;
}

struct Row {
    const char* name;
    EngineFormat requested;
    EngineFormat opposite;
    std::uint32_t answer;
    EngineFormat left;  ///< What `requested` is after the test.
};

const EngineFormat none{};

const Row rows[] = {
    {"stereo", formatOf(2, 48000), none, KORVA_FORMAT_ACCEPTED, formatOf(2, 48000)},
    {"5.1", formatOf(6, 44100), none, KORVA_FORMAT_ACCEPTED, formatOf(6, 44100)},
    {"7.1 at the least rate", formatOf(8, 8000), none, KORVA_FORMAT_ACCEPTED, formatOf(8, 8000)},
    {"7.1 at the highest rate", formatOf(8, 384000), none, KORVA_FORMAT_ACCEPTED, formatOf(8, 384000)},
    {"too slow", formatOf(6, 7999), none, KORVA_FORMAT_CHANGED, formatOf(6, 8000)},
    {"too fast", formatOf(2, 384001), none, KORVA_FORMAT_CHANGED, formatOf(2, 384000)},
    {"no rate", formatOf(2, 0), none, KORVA_FORMAT_CHANGED, formatOf(2, 8000)},
    {"nine channels", withCount(9), none, KORVA_FORMAT_CHANGED, formatOf(8, 48000)},
    {"no channel", withCount(0), none, KORVA_FORMAT_REFUSED, withCount(0)},
    {"less than none", withCount(-1), formatOf(2, 48000), KORVA_FORMAT_REFUSED, withCount(-1)},
    {"the same on both sides", formatOf(6, 48000), formatOf(6, 48000), KORVA_FORMAT_ACCEPTED,
     formatOf(6, 48000)},
    {"another count", formatOf(8, 48000), formatOf(2, 48000), KORVA_FORMAT_CHANGED, formatOf(2, 48000)},
    {"another rate", formatOf(2, 44100), formatOf(2, 48000), KORVA_FORMAT_CHANGED, formatOf(2, 48000)},
    {"another mask",
     {0x600, 2, 48000, {6, 7}, {0, 0, 0, 0, 0, 0, 10, 11}},
     formatOf(2, 48000),
     KORVA_FORMAT_CHANGED,
     formatOf(2, 48000)},
    {"an opposite beyond reach", formatOf(2, 48000), withCount(12), KORVA_FORMAT_CHANGED, formatOf(8, 48000)},
    {"an opposite without channels", formatOf(2, 48000), withCount(0), KORVA_FORMAT_ACCEPTED,
     formatOf(2, 48000)},
};

TEST(EqualiserFormats, AreTheSameOnBothSidesAndWithinReach) {
    PlayedEqualiser equaliser;
    for (const Row& row : rows) {
        EngineFormat input = row.requested;
        EngineFormat output = row.requested;
        EXPECT_EQ(equaliser.testInput(input, row.opposite), row.answer) << row.name;
        EXPECT_EQ(equaliser.testOutput(output, row.opposite), row.answer) << row.name;
        EXPECT_EQ(fieldsOf(input), fieldsOf(row.left)) << row.name;
        EXPECT_EQ(fieldsOf(output), fieldsOf(row.left)) << row.name;
    }
}

TEST(EqualiserFormats, ThatWereChangedAreAcceptedTheNextTime) {
    PlayedEqualiser equaliser;
    for (const Row& row : rows) {
        if (row.answer == KORVA_FORMAT_CHANGED) {
            EngineFormat again = row.left;
            EXPECT_EQ(equaliser.testInput(again, again), KORVA_FORMAT_ACCEPTED) << row.name;
        }
    }
}

TEST(EqualiserFormats, MayBeAskedForInAnyState) {
    PlayedEqualiser equaliser(equaliserFiles().front(), 0);
    EngineFormat format = formatOf(2, 48000);
    EXPECT_EQ(equaliser.testInput(format, none), KORVA_FORMAT_ACCEPTED);
    ASSERT_TRUE(equaliser.initialize(format, format));
    EXPECT_EQ(equaliser.testInput(format, none), KORVA_FORMAT_ACCEPTED);
    equaliser.uninitialize();
    EXPECT_EQ(equaliser.testInput(format, none), KORVA_FORMAT_ACCEPTED);
}

TEST(EqualiserFormats, ThatItWouldNotAcceptDontStart) {
    PlayedEqualiser equaliser;
    EXPECT_TRUE(equaliser.initialize(formatOf(2, 384000), formatOf(2, 384000)));
    EXPECT_FALSE(equaliser.initialize(formatOf(2, 48000), formatOf(2, 44100)));
    EXPECT_FALSE(equaliser.initialize(formatOf(6, 48000), formatOf(2, 48000)));
    EXPECT_FALSE(equaliser.initialize(formatOf(2, 4000), formatOf(2, 4000)));
    EXPECT_FALSE(equaliser.initialize(withCount(9), withCount(9)));
    EXPECT_FALSE(equaliser.initialize(none, none));
}

TEST(EqualiserInstance, SaysThatItHasNoHardware) {
    PlayedEqualiser equaliser;
    EXPECT_EQ(equaliser.get()->table->isHardwareAvailable(equaliser.get()), 0u);
}

}  // namespace
}  // namespace korva::test
