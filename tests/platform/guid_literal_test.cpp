#include "platform/guid_literal.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "platform/property_key.h"

namespace korva::platform {
namespace {

constexpr GUID zero{};
constexpr GUID example = guidOf("{6DCC1AC8-4A3C-4A98-A3A7-F967127D5763}");

TEST(GuidLiteral, HasItsNumbersInTheOrderOfTheText) {
    EXPECT_EQ(example, (GUID{0x6DCC1AC8, 0x4A3C, 0x4A98, {0xA3, 0xA7, 0xF9, 0x67, 0x12, 0x7D, 0x57, 0x63}}));
}

TEST(GuidLiteral, HasTheLowestByteOfItsThreeNumbersFirstInMemory) {
    constexpr std::array<unsigned char, 16> expected = {0xC8, 0x1A, 0xCC, 0x6D, 0x3C, 0x4A, 0x98, 0x4A,
                                                        0xA3, 0xA7, 0xF9, 0x67, 0x12, 0x7D, 0x57, 0x63};
    EXPECT_EQ(std::memcmp(&example, expected.data(), expected.size()), 0);
}

TEST(GuidLiteral, IsTheSameInCapitalsOrNot) {
    constexpr GUID lower = guidOf("{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}");
    constexpr GUID mixed = guidOf("{6dCC1aC8-4A3c-4a98-A3a7-F967127d5763}");
    EXPECT_EQ(lower, example);
    EXPECT_EQ(mixed, example);
}

TEST(GuidLiteral, IsWhatTheTextIsWhenItIsRead) {
#define KORVA_IS_WHAT_IS_READ(text) EXPECT_EQ(guidOf(text), GuidFromText(text)) << text
    KORVA_IS_WHAT_IS_READ("{00000000-0000-0000-0000-000000000000}");
    KORVA_IS_WHAT_IS_READ("{FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF}");
    KORVA_IS_WHAT_IS_READ("{01234567-89AB-CDEF-0123-456789ABCDEF}");
    KORVA_IS_WHAT_IS_READ("{12345678-9ABC-DEF0-1234-56789ABCDEF0}");
    KORVA_IS_WHAT_IS_READ("{fedcba98-7654-3210-fedc-ba9876543210}");
    KORVA_IS_WHAT_IS_READ("{80000000-8000-8000-8000-800000000001}");
#undef KORVA_IS_WHAT_IS_READ
}

TEST(GuidLiteral, BecomesItsTextAgain) {
    EXPECT_EQ(upperGuidText(example), "{6DCC1AC8-4A3C-4A98-A3A7-F967127D5763}");
    EXPECT_EQ(guidOf("{00000000-0000-0000-0000-000000000000}"), zero);
}

}  // namespace
}  // namespace korva::platform
