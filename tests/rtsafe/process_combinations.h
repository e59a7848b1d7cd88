// Every way through a processing call, for the checks that it keeps the rules of the audio thread.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "rt/rt_processor.h"
#include "tests/support/block_processors.h"

namespace korva::test {

/// One way through a call.
struct Combination {
    enum class Ramp { off, plain, crossfade };
    enum class Input { valid, silent, null };

    bool toStereo;  ///< 7.1 to stereo, which may be folded without the planes; else stereo to 5.1.
    bool engine;
    bool meters;
    Ramp ramp;
    bool passThrough;
    Input input;
    bool taps;
    std::uint32_t frames;
};

[[nodiscard]] std::vector<Combination> allCombinations();
[[nodiscard]] std::string nameOf(const Combination& combination);

/// Plays combinations with one version of the loops. All memory is there from the start: neither of its two
/// calls allocates.
class CombinationPlayer {
public:
    explicit CombinationPlayer(const rt::Kernels& kernels);

    /// Sets the processor up. Not a call of the audio thread.
    void prepare(const Combination& combination) noexcept;

    /// The processing call itself.
    void play() noexcept;

    /// The same connections through the direct copy.
    void playDirectCopy() noexcept;

private:
    static constexpr std::uint32_t mostFrames = 1000;

    rt::RtProcessor processor;
    PassingProcessor engine;
    std::vector<float> source = std::vector<float>(std::size_t{mostFrames} * 8, 0.5f);
    std::vector<float> target = std::vector<float>(std::size_t{mostFrames} * 8);
    std::vector<float> inputRing = std::vector<float>(1234);
    std::vector<float> outputRing = std::vector<float>(4321);
    std::atomic<std::int32_t> inputIndex{0};
    std::atomic<std::int32_t> outputIndex{0};
    published::APO_CONNECTION_PROPERTY input{};
    published::APO_CONNECTION_PROPERTY output{};
};

}  // namespace korva::test
