// Random test values from one seed for each run, which is printed and can be given again.
#pragma once

#include <cstdint>
#include <random>
#include <span>

namespace korva::test {

/// What random samples are made of.
enum class Content {
    ordinary,    ///< Numbers from -1 to 1.
    special,     ///< Those, zeros of both signs, infinities, denormals, extremes, and the default NaN.
    strangeNaNs  ///< Those, and NaNs of other payloads and signs.
};

/// A generator that gives the same on every system. The seed is the environment's KORVA_TEST_SEED, else a
/// fresh one; `stream` tells generators of one run apart.
class RandomSamples {
public:
    explicit RandomSamples(std::uint32_t stream = 0);

    /// 0 to `count` - 1.
    std::uint32_t below(std::uint32_t count);
    bool coin() { return below(2) == 1; }
    std::uint32_t word() { return static_cast<std::uint32_t>(generator()); }
    float sample(Content content);
    void fill(std::span<float> samples, Content content);

private:
    float special();
    float strangeNaN();

    std::mt19937 generator;
};

}  // namespace korva::test
