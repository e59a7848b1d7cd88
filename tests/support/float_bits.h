// Samples compared by their bits: zeros by sign, numbers that are none by payload.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <span>

namespace korva::test {

inline std::uint32_t bitsOf(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

/// Whether two runs of samples are the same to the bit; says where they first differ.
[[nodiscard]] testing::AssertionResult sameBits(std::span<const float> actual,
                                                std::span<const float> expected);

/// As `sameBits`, but any two values that are no number count as the same.
[[nodiscard]] testing::AssertionResult sameBitsOrBothNaN(std::span<const float> actual,
                                                         std::span<const float> expected);

}  // namespace korva::test
