// The example equaliser keeps the rules of the audio thread on every way through it.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>

#include "tests/examples/graphic_eq/played_equaliser.h"
#include "tests/rtsafe/watched_thread.h"

namespace korva::test {
namespace {

/// Eight planes of noise, with what is no sample among it.
class Planes {
public:
    Planes() {
        const Sound sound = noise(KORVA_BLOCK_FRAMES);
        for (std::size_t plane = 0; plane < KORVA_PLANES; ++plane) {
            std::copy(sound[plane].begin(), sound[plane].end(), samples[plane].begin());
            samples[plane][plane * 50] = std::numeric_limits<float>::quiet_NaN();
            pointers[plane] = samples[plane].data();
        }
    }

    DspBlock block(std::uint32_t frames) {
        return {pointers.data(), KORVA_PLANES, KORVA_BLOCK_FRAMES, KORVA_PLANES, KORVA_PLANES, frames, 0};
    }

private:
    alignas(64) std::array<std::array<float, KORVA_BLOCK_FRAMES>, KORVA_PLANES> samples;
    std::array<float*, KORVA_PLANES> pointers;
};

/// Blocks of several lengths, long enough for a change to come to its end.
WatchedResult playWatched(PlayedEqualiser& equaliser) {
    Planes planes;
    return runWatched([&] {
        for (const std::uint32_t frames : {1u, 512u, 63u, 512u, 4u, 512u}) {
            DspBlock block = planes.block(frames);
            equaliser.process(block);
        }
    });
}

class ExampleEqualiserSafety : public EveryEqualiser {};
INSTANTIATE_TEST_SUITE_P(OfEachVersion, ExampleEqualiserSafety, testing::ValuesIn(equaliserFiles()),
                         [](const auto& parameter) { return parameter.index == 0 ? "Fastest" : "Baseline"; });

TEST_P(ExampleEqualiserSafety, ProcessingNeitherAllocatesNorLocksNorWaitsNorCallsTheSystem) {
    PlayedEqualiser equaliser(GetParam());
    const std::byte on{1};
    equaliser.exchange(KORVA_DATA_METERS_ENABLED, std::span(&on, 1), {});
    const std::array<std::function<void()>, 4> changes{
        [] {}, [&] { equaliser.setAllGains(6); },
        [&] { equaliser.setCentres({50}), equaliser.setOutputGain(-6); }, [&] { equaliser.setBypass(true); }};
    for (std::size_t i = 0; i < changes.size(); ++i) {
        // The watched thread is a child process's: what it did is forgotten, so each change is made after
        // sound.
        (void)equaliser.played(noise(2000));
        changes[i]();
        const WatchedResult result = playWatched(equaliser);
        EXPECT_TRUE(result.clean) << result.violation << " after change " << i;
    }
}

}  // namespace
}  // namespace korva::test
