#include "framework/shared_bytes.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <thread>
#include <utility>
#include <vector>

namespace korva::framework {
namespace {

std::vector<std::byte> counting(std::size_t count, std::uint8_t from = 0) {
    std::vector<std::byte> bytes;
    for (std::size_t index = 0; index < count; ++index) {
        bytes.push_back(static_cast<std::byte>(from + index));
    }
    return bytes;
}

TEST(SharedBytes, StartsEmpty) {
    const SharedBytes none;

    EXPECT_TRUE(none.empty());
    EXPECT_EQ(none.size(), 0U);
    EXPECT_TRUE(none.bytes().empty());
}

TEST(SharedBytes, OfNoBytesIsEmpty) {
    EXPECT_TRUE(SharedBytes(std::span<const std::byte>()).empty());
    EXPECT_EQ(SharedBytes(std::span<const std::byte>()), SharedBytes());
}

TEST(SharedBytes, CopiesWhatItIsGiven) {
    std::vector<std::byte> source = counting(100);
    const SharedBytes kept(source);

    source.assign(100, std::byte{0xFF});

    EXPECT_FALSE(kept.empty());
    EXPECT_EQ(std::vector<std::byte>(kept.bytes().begin(), kept.bytes().end()), counting(100));
}

TEST(SharedBytes, HoldsAnySizeExactly) {
    for (const std::size_t size : {1U, 7U, 8U, 9U, 2052U, 65537U}) {
        const SharedBytes bytes(counting(size, 3));
        ASSERT_EQ(bytes.size(), size);
        EXPECT_EQ(bytes.bytes().back(), static_cast<std::byte>(3 + size - 1));
    }
}

TEST(SharedBytes, ACopyIsTheSameBytes) {
    const SharedBytes original(counting(8));
    const SharedBytes copy = original;

    EXPECT_EQ(copy.bytes().data(), original.bytes().data());
    EXPECT_EQ(copy, original);
}

TEST(SharedBytes, ACopyOutlivesTheOriginal) {
    SharedBytes copy;
    {
        const SharedBytes original(counting(8));
        copy = original;
    }

    EXPECT_EQ(std::vector<std::byte>(copy.bytes().begin(), copy.bytes().end()), counting(8));
}

TEST(SharedBytes, EqualityIsThatOfTheContents) {
    EXPECT_EQ(SharedBytes(counting(8)), SharedBytes(counting(8)));
    EXPECT_NE(SharedBytes(counting(8)), SharedBytes(counting(8, 1)));
    EXPECT_NE(SharedBytes(counting(8)), SharedBytes(counting(7)));
    EXPECT_NE(SharedBytes(counting(1)), SharedBytes());
}

TEST(SharedBytes, MovedFromIsEmpty) {
    SharedBytes source(counting(8));
    const SharedBytes target = std::move(source);

    EXPECT_TRUE(source.empty());
    EXPECT_EQ(target.size(), 8U);
}

TEST(SharedBytes, ManyThreadsShareThem) {
    const SharedBytes original(counting(64));
    std::vector<std::thread> threads;
    std::array<std::size_t, 4> sizes{};
    for (std::size_t& size : sizes) {
        threads.emplace_back([&original, &size] {
            for (int round = 0; round < 1000; ++round) {
                const SharedBytes copy = original;
                size += copy.size();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(sizes, (std::array<std::size_t, 4>{64000, 64000, 64000, 64000}));
}

}  // namespace
}  // namespace korva::framework
