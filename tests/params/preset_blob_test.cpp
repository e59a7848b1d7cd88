#include "params/preset_blob.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tests/support/byte_list.h"

namespace korva::params {
namespace {

using test::bytes;
using Bytes = std::vector<std::byte>;
using Sizes = std::vector<std::uint32_t>;

/// The slices' bytes of a blob that isn't too short.
Bytes slicesOf(const Bytes& blob, Sizes& sizes) {
    const auto slices = takeOverrides(blob, sizes);
    EXPECT_TRUE(slices.has_value());
    return slices ? Bytes(slices->begin(), slices->end()) : Bytes();
}

TEST(PresetBlob, ThreeBytesAreNone) {
    Sizes sizes{1};
    EXPECT_FALSE(takeOverrides(bytes(0, 0, 0), sizes).has_value());
    EXPECT_FALSE(takeOverrides({}, sizes).has_value());
}

TEST(PresetBlob, FourBytesAreOneWithoutSlices) {
    Sizes sizes{1};
    EXPECT_EQ(slicesOf(bytes(0, 0, 0, 0), sizes), Bytes());
}

TEST(PresetBlob, TheFirstTwoBytesMeanNothing) {
    Sizes sizes{1};
    EXPECT_EQ(slicesOf(bytes(0xAB, 0xCD, 0, 0, 7), sizes), bytes(7));
}

TEST(PresetBlob, AnEntryReplacesASize) {
    Sizes sizes{1, 4};
    EXPECT_EQ(slicesOf(bytes(0, 0, 1, 0, 1, 0, 0x02, 0x01, 9), sizes), bytes(9));
    EXPECT_EQ(sizes, (Sizes{1, 0x102}));
}

TEST(PresetBlob, TheLastOfSeveralEntriesCounts) {
    Sizes sizes{1};
    slicesOf(bytes(0, 0, 2, 0, 0, 0, 5, 0, 0, 0, 3, 0), sizes);
    EXPECT_EQ(sizes, Sizes{3});
}

TEST(PresetBlob, AnEntryPastTheEndIsSkippedAndConsumed) {
    Sizes sizes{1};
    EXPECT_EQ(slicesOf(bytes(0, 0, 1, 0, 1, 0, 5, 0, 42), sizes), bytes(42));
    EXPECT_EQ(sizes, Sizes{1});
    EXPECT_EQ(slicesOf(bytes(0, 0, 1, 0, 0xFF, 0xFF, 5, 0, 42), sizes), bytes(42));
}

TEST(PresetBlob, EntriesEndWhereTheBlobDoes) {
    Sizes sizes{1, 1};
    EXPECT_EQ(slicesOf(bytes(0, 0, 0xFF, 0xFF, 1, 0, 8, 0), sizes), Bytes());
    EXPECT_EQ(sizes, (Sizes{1, 8}));
}

TEST(PresetBlob, WhatIsLeftOfATruncatedEntryIsSliceData) {
    Sizes sizes{1, 1, 1};
    EXPECT_EQ(slicesOf(bytes(0, 0, 2, 0, 0, 0, 1, 0, 1, 2, 3), sizes), bytes(1, 2, 3));
}

TEST(PresetBlob, SlicesAreTakenOneAfterAnotherUntilOneIsTooLong) {
    const Bytes data = bytes(1, 2, 3);
    std::span<const std::byte> slices = data;
    EXPECT_EQ(takeSlice(slices, 2)->size(), 2U);
    EXPECT_EQ(takeSlice(slices, 0)->size(), 0U);
    EXPECT_FALSE(takeSlice(slices, 2).has_value());
    EXPECT_EQ(takeSlice(slices, 1)->front(), std::byte{3});
    EXPECT_FALSE(takeSlice(slices, 1).has_value());
}

TEST(PresetBlob, WhatIsMadeHasAnEntryOnlyWhereASizeDiffers) {
    const std::vector<Bytes> slices = {bytes(1), bytes(2, 3), Bytes()};
    const Sizes defaults = {1, 4, 0};
    EXPECT_EQ(makePresetBlob(slices, defaults), bytes(0, 0, 1, 0, 1, 0, 2, 0, 1, 2, 3));
}

TEST(PresetBlob, WhatIsMadeIsReadBack) {
    const std::vector<Bytes> slices = {bytes(1), Bytes(), bytes(4, 5, 6), Bytes(65535)};
    const Sizes defaults = {1, 2, 3, 0};
    const Bytes blob = makePresetBlob(slices, defaults).value();
    Sizes sizes = defaults;
    std::span<const std::byte> rest = takeOverrides(blob, sizes).value();
    for (std::size_t i = 0; i < slices.size(); ++i) {
        const auto slice = takeSlice(rest, sizes[i]);
        ASSERT_TRUE(slice.has_value());
        EXPECT_TRUE(std::ranges::equal(*slice, slices[i])) << i;
    }
    EXPECT_TRUE(rest.empty());
}

TEST(PresetBlob, ASizePast16BitsCannotBeSaidUnlessItIsTheDefault) {
    const std::vector<Bytes> slices = {Bytes(65536)};
    EXPECT_FALSE(makePresetBlob(slices, Sizes{0}).has_value());
    EXPECT_TRUE(makePresetBlob(slices, Sizes{65536}).has_value());
}

}  // namespace
}  // namespace korva::params
