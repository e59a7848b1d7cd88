#include "engine/buffer_load.h"

#include <gtest/gtest.h>

#include <limits>

namespace korva::engine {
namespace {

constexpr auto largest = std::numeric_limits<std::uint32_t>::max();

TEST(BufferLoad, IsNoneWithoutFrames) {
    EXPECT_EQ(bufferLoadOf(0, 48000, 1'000'000), (BufferLoad{0, 0}));
}

TEST(BufferLoad, IsNoneWithoutARate) {
    EXPECT_EQ(bufferLoadOf(480, 0, 1'000'000), (BufferLoad{0, 0}));
}

TEST(BufferLoad, IsInWholeMillisecondsAndTenthsOfAPercent) {
    EXPECT_EQ(bufferLoadOf(480, 48000, 1'000'000), (BufferLoad{10, 100}));
    EXPECT_EQ(bufferLoadOf(441, 44100, 5'000'000), (BufferLoad{10, 500}));
}

TEST(BufferLoad, IsRoundedDown) {
    EXPECT_EQ(bufferLoadOf(512, 48000, 999), (BufferLoad{10, 0}));
    EXPECT_EQ(bufferLoadOf(527, 48000, 1'209'000).cpuUsage, 110U);
}

TEST(BufferLoad, MayBeMoreThanTheTimeThereIs) {
    EXPECT_EQ(bufferLoadOf(48, 48000, 3'000'000), (BufferLoad{1, 3000}));
}

TEST(BufferLoad, StopsAtTheLargestNumber) {
    EXPECT_EQ(bufferLoadOf(1, 192000, std::numeric_limits<std::uint64_t>::max()).cpuUsage, largest);
    EXPECT_EQ(bufferLoadOf(largest, 1, 0).bufferSizeMs, largest);
}

}  // namespace
}  // namespace korva::engine
