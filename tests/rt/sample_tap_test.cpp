#include "rt/sample_tap.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <vector>

#include "tests/support/float_bits.h"

namespace korva::rt {
namespace {

using test::sameBits;

/// A ring with its index, filled with sevens.
class Ring {
public:
    explicit Ring(std::int32_t capacity) : samples(static_cast<std::size_t>(capacity), 7.0f) {
        tap = {.samples = samples.data(), .writeIndex = &index, .capacity = capacity};
    }

    void write(const std::vector<float>& source) { writeTap(tap, source.data(), source.size()); }

    std::vector<float> samples;
    std::atomic<std::int32_t> index{0};
    SampleTap tap;
};

TEST(SampleTap, IsNotAttachedAtFirst) {
    const SampleTap tap;

    EXPECT_EQ(tap.samples, nullptr);
}

TEST(WriteTap, WritesFromTheIndexOnAndPublishesTheNext) {
    Ring ring(6);
    ring.index = 2;

    ring.write({1, 2, 3});

    EXPECT_TRUE(sameBits(ring.samples, std::vector<float>{7, 7, 1, 2, 3, 7}));
    EXPECT_EQ(ring.index, 5);
}

TEST(WriteTap, WrapsAtTheCapacity) {
    Ring ring(4);
    ring.index = 3;

    ring.write({1, 2, 3});

    EXPECT_TRUE(sameBits(ring.samples, std::vector<float>{2, 3, 7, 1}));
    EXPECT_EQ(ring.index, 2);
}

TEST(WriteTap, PublishesZeroWhenItEndsAtTheCapacity) {
    Ring ring(4);
    ring.index = 1;

    ring.write({1, 2, 3});

    EXPECT_TRUE(sameBits(ring.samples, std::vector<float>{7, 1, 2, 3}));
    EXPECT_EQ(ring.index, 0);
}

TEST(WriteTap, KeepsTheLastSamplesOfMoreThanTheRingHolds) {
    Ring ring(4);

    ring.write({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});

    EXPECT_TRUE(sameBits(ring.samples, std::vector<float>{9, 10, 7, 8}));
    EXPECT_EQ(ring.index, 2);
}

TEST(WriteTap, WritesZerosWithoutASource) {
    Ring ring(4);
    ring.index = 3;

    writeTap(ring.tap, nullptr, 2);

    EXPECT_TRUE(sameBits(ring.samples, std::vector<float>{0, 7, 7, 0}));
    EXPECT_EQ(ring.index, 1);
}

TEST(WriteTap, WritesNothingAndKeepsTheIndexForNoSamples) {
    Ring ring(4);
    ring.index = 3;

    writeTap(ring.tap, ring.samples.data(), 0);

    EXPECT_TRUE(sameBits(ring.samples, std::vector<float>{7, 7, 7, 7}));
    EXPECT_EQ(ring.index, 3);
}

TEST(WriteTap, DoesNothingWithoutARing) {
    Ring ring(4);
    ring.tap.samples = nullptr;

    ring.write({1, 2});

    EXPECT_EQ(ring.index, 0);
}

TEST(WriteTap, DoesNothingWithoutAnIndexOrACapacity) {
    Ring ring(4);
    ring.tap.writeIndex = nullptr;
    ring.write({1, 2});
    ring.tap = {.samples = ring.samples.data(), .writeIndex = &ring.index, .capacity = 0};
    ring.write({1, 2});
    ring.tap.capacity = -4;
    ring.write({1, 2});

    EXPECT_TRUE(sameBits(ring.samples, std::vector<float>{7, 7, 7, 7}));
    EXPECT_EQ(ring.index, 0);
}

TEST(WriteTap, WrapsAnIndexFromOutsideTheRing) {
    for (const std::int32_t index : {9, -1, INT32_MIN, INT32_MAX}) {
        Ring ring(4);
        const auto start = static_cast<std::uint32_t>(index) % 4;
        ring.index = index;

        ring.write({1});

        EXPECT_EQ(ring.samples[start], 1.0f) << "index " << index;
        EXPECT_EQ(ring.index, static_cast<std::int32_t>((start + 1) % 4)) << "index " << index;
    }
}

}  // namespace
}  // namespace korva::rt
