#include "tests/support/float_bits.h"

#include <cmath>

namespace korva::test {
namespace {

template <typename Same>
testing::AssertionResult compare(std::span<const float> actual, std::span<const float> expected, Same same) {
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure()
               << "has " << actual.size() << " samples and not " << expected.size();
    }
    for (std::size_t i = 0; i < actual.size(); ++i) {
        if (!same(actual[i], expected[i])) {
            return testing::AssertionFailure()
                   << "sample " << i << " is " << actual[i] << " (0x" << std::hex << bitsOf(actual[i])
                   << ") and not " << expected[i] << " (0x" << bitsOf(expected[i]) << ")";
        }
    }
    return testing::AssertionSuccess();
}

}  // namespace

testing::AssertionResult sameBits(std::span<const float> actual, std::span<const float> expected) {
    return compare(actual, expected, [](float a, float b) { return bitsOf(a) == bitsOf(b); });
}

testing::AssertionResult sameBitsOrBothNaN(std::span<const float> actual, std::span<const float> expected) {
    return compare(actual, expected, [](float a, float b) {
        return bitsOf(a) == bitsOf(b) || (std::isnan(a) && std::isnan(b));
    });
}

}  // namespace korva::test
