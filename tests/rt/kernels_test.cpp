#include "rt/kernels/kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "rt/speakers.h"
#include "tests/support/float_bits.h"
#include "tests/support/guarded_samples.h"
#include "tests/support/page_end_samples.h"
#include "tests/support/random_samples.h"
#include "tests/support/reference_kernels.h"

namespace korva::rt {
namespace {

using test::Content;
using test::GuardedBus;
using test::GuardedSamples;
using test::RandomSamples;
using test::referenceKernels;
using test::sameBits;
using test::sameBitsOrBothNaN;

using ChannelMap = std::array<std::uint8_t, planeCount>;

constexpr std::array<std::uint32_t, 19> frameCounts = {0,  1,  2,  3,  5,  7,   8,   9,   15, 16,
                                                       17, 31, 32, 33, 63, 100, 480, 511, 512};
constexpr std::uint32_t capacity = 512;

constexpr std::array<ChannelMap, 6> maps = {{
    {0, 1, 2, 3, 4, 5, 6, 7},  // each channel on its plane
    {0, 1, 2, 3, 6, 7, 0, 0},  // sides after the low frequency, the rest unset
    {7, 6, 5, 4, 3, 2, 1, 0},  // backwards
    {0, 1, 2, 2, 5, 5, 5, 1},  // planes shared by two and by three
    {0, 0, 0, 0, 0, 0, 0, 0},  // all on one plane
    {2, 0, 1, 4, 3, 7, 6, 5},
}};

/// Runs over one version of the loops, each against its definition, in buffers of every misalignment
/// between guard words.
class KernelsTest : public testing::TestWithParam<const Kernels*> {
protected:
    const Kernels& version = *GetParam();
    RandomSamples random;
};

std::string nameOfVersion(const testing::TestParamInfo<const Kernels*>& parameter) {
    return std::string(parameter.param->name);
}

void fillBus(GuardedBus& bus, RandomSamples& random, Content content) {
    for (std::size_t plane = 0; plane < planeCount; ++plane) {
        random.fill(bus.plane(plane), content);
    }
}

void copyBus(const GuardedBus& from, GuardedBus& to) {
    for (std::size_t plane = 0; plane < planeCount; ++plane) {
        std::copy(from.plane(plane).begin(), from.plane(plane).end(), to.plane(plane).begin());
    }
}

/// Whole planes, with what lies behind the frames that were asked for.
testing::AssertionResult sameBuses(const GuardedBus& actual, const GuardedBus& expected,
                                   decltype(&sameBits) same = &sameBits) {
    for (std::size_t plane = 0; plane < planeCount; ++plane) {
        if (const auto result = same(actual.plane(plane), expected.plane(plane)); !result) {
            return testing::AssertionFailure() << "plane " << plane << ": " << result.message();
        }
    }
    return actual.guardsAreWhole() ? testing::AssertionSuccess()
                                   : testing::AssertionFailure() << "a guard was overwritten";
}

/// A bus for each of the two outputs of a deinterleaving loop.
struct TwoBuses {
    explicit TwoBuses(std::size_t misalignment)
        : wet(capacity, misalignment), dry(capacity, misalignment + 5) {}
    GuardedBus wet;
    GuardedBus dry;
};

class Deinterleave : public KernelsTest {
protected:
    void expectAsDefined(const float* input, std::uint32_t channels, const ChannelMap& map,
                         std::uint32_t frames, std::size_t misalignment) const {
        TwoBuses actual(misalignment);
        TwoBuses expected(0);
        version.deinterleave(input, channels, map.data(), actual.wet.pointers(), actual.dry.pointers(),
                             frames);
        referenceKernels.deinterleave(input, channels, map.data(), expected.wet.pointers(),
                                      expected.dry.pointers(), frames);
        ASSERT_TRUE(sameBuses(actual.wet, expected.wet))
            << "wet" << about(channels, map, frames, misalignment);
        ASSERT_TRUE(sameBuses(actual.dry, expected.dry))
            << "dry" << about(channels, map, frames, misalignment);

        GuardedBus alone(capacity, misalignment);
        version.deinterleave(input, channels, map.data(), alone.pointers(), nullptr, frames);
        ASSERT_TRUE(sameBuses(alone, expected.wet))
            << "without a dry bus" << about(channels, map, frames, misalignment);
    }

    static std::string about(std::uint32_t channels, const ChannelMap& map, std::uint32_t frames,
                             std::size_t misalignment) {
        return ", " + std::to_string(channels) + " channels from plane " + std::to_string(map[0]) + ", " +
               std::to_string(frames) + " frames, misaligned by " + std::to_string(misalignment);
    }
};
INSTANTIATE_TEST_SUITE_P(EveryVersion, Deinterleave,
                         testing::ValuesIn(supportedKernels().begin(), supportedKernels().end()),
                         nameOfVersion);

TEST_P(Deinterleave, PutsEachChannelOnItsPlaneOfOneBusOrBothAndSilenceOnTheRest) {
    for (const std::uint32_t frames : frameCounts) {
        for (std::uint32_t channels = 0; channels <= planeCount; ++channels) {
            for (std::size_t m = 0; m < maps.size(); ++m) {
                const std::size_t misalignment = random.below(16);
                GuardedSamples input(std::size_t{frames} * channels, random.below(16));
                random.fill(input.samples(), Content::special);
                expectAsDefined(input.data(), channels, maps[m], frames, misalignment);
            }
        }
    }
}

TEST_P(Deinterleave, WorksAtEveryMisalignment) {
    for (std::size_t misalignment = 0; misalignment < 16; ++misalignment) {
        for (std::uint32_t channels = 1; channels <= planeCount; ++channels) {
            for (const std::uint32_t frames : {33u, 100u}) {
                GuardedSamples input(std::size_t{frames} * channels, misalignment);
                random.fill(input.samples(), Content::special);
                expectAsDefined(input.data(), channels, maps[0], frames, misalignment);
                expectAsDefined(input.data(), channels, maps[3], frames, 15 - misalignment);
            }
        }
    }
}

TEST_P(Deinterleave, TakesNoInputForSilence) {
    for (const std::uint32_t frames : frameCounts) {
        for (std::uint32_t channels = 0; channels <= planeCount; ++channels) {
            expectAsDefined(nullptr, channels, maps[frames % maps.size()], frames, frames % 16);
        }
    }
}

TEST_P(Deinterleave, KeepsEveryBitOfValuesThatAreNoNumbers) {
    for (std::uint32_t channels = 1; channels <= planeCount; ++channels) {
        GuardedSamples input(std::size_t{100} * channels, 1);
        random.fill(input.samples(), Content::strangeNaNs);
        expectAsDefined(input.data(), channels, maps[0], 100, 3);
    }
}

TEST_P(Deinterleave, ReadsNothingPastTheLastFrame) {
    for (const std::uint32_t frames : frameCounts) {
        for (std::uint32_t channels = 1; channels <= planeCount; ++channels) {
            const test::PageEndSamples input(std::size_t{frames} * channels);
            random.fill(input.samples(), Content::ordinary);
            expectAsDefined(input.samples().data(), channels, maps[0], frames, 0);
            expectAsDefined(input.samples().data(), channels, maps[3], frames, 0);
        }
    }
}

class Interleave : public KernelsTest {
protected:
    void expectAsDefined(const GuardedBus& bus, std::uint32_t channels, const ChannelMap& map,
                         std::uint32_t frames, std::size_t misalignment) const {
        GuardedSamples actual(std::size_t{frames} * channels, misalignment);
        GuardedSamples expected(std::size_t{frames} * channels);
        version.interleave(bus.pointers(), map.data(), channels, actual.data(), frames);
        referenceKernels.interleave(bus.pointers(), map.data(), channels, expected.data(), frames);
        ASSERT_TRUE(sameBits(actual.samples(), expected.samples()))
            << channels << " channels from plane " << int{map[0]} << ", " << frames
            << " frames, misaligned by " << misalignment;
        ASSERT_TRUE(actual.guardsAreWhole()) << channels << " channels, " << frames << " frames";
        ASSERT_TRUE(bus.guardsAreWhole());
    }
};
INSTANTIATE_TEST_SUITE_P(EveryVersion, Interleave,
                         testing::ValuesIn(supportedKernels().begin(), supportedKernels().end()),
                         nameOfVersion);

TEST_P(Interleave, TakesEachChannelFromItsPlane) {
    for (const std::uint32_t frames : frameCounts) {
        GuardedBus bus(frames, random.below(16));
        fillBus(bus, random, Content::strangeNaNs);
        for (std::uint32_t channels = 0; channels <= planeCount; ++channels) {
            for (const ChannelMap& map : maps) {
                expectAsDefined(bus, channels, map, frames, random.below(16));
            }
        }
    }
}

TEST_P(Interleave, WorksAtEveryMisalignment) {
    for (std::size_t misalignment = 0; misalignment < 16; ++misalignment) {
        GuardedBus bus(100, 15 - misalignment);
        fillBus(bus, random, Content::special);
        for (std::uint32_t channels = 1; channels <= planeCount; ++channels) {
            expectAsDefined(bus, channels, maps[0], 33, misalignment);
            expectAsDefined(bus, channels, maps[3], 100, misalignment);
        }
    }
}

TEST_P(Interleave, ReadsAndWritesNothingPastTheLastFrame) {
    for (const std::uint32_t frames : frameCounts) {
        std::vector<float> samples(frames);
        random.fill(samples, Content::ordinary);
        const test::PageEndSamples plane(frames);
        std::copy(samples.begin(), samples.end(), plane.samples().begin());
        std::array<const float*, planeCount> planes{};
        planes.fill(plane.samples().data());
        for (std::uint32_t channels = 1; channels <= planeCount; ++channels) {
            const test::PageEndSamples output(std::size_t{frames} * channels);
            version.interleave(planes.data(), maps[0].data(), channels, output.samples().data(), frames);
            for (std::size_t i = 0; i < output.samples().size(); ++i) {
                ASSERT_EQ(output.samples()[i], samples[i / channels])
                    << channels << " channels, sample " << i;
            }
        }
    }
}

class Fold : public KernelsTest {
protected:
    /// Pairs that have no fold, folds of one source, of many, of pairs, and the empty output.
    static constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 12> masks = {{{0x63F, 0x63F},
                                                                                       {0x63F, 0x3},
                                                                                       {0x3, 0x3},
                                                                                       {0x4, 0x3},
                                                                                       {0x63F, 0x8},
                                                                                       {0x637, 0x8},
                                                                                       {0x63F, 0x0},
                                                                                       {0x63F, 0x40},
                                                                                       {0x603, 0x33},
                                                                                       {0x33, 0x603},
                                                                                       {0x63F, 0x204},
                                                                                       {0x7, 0x4}}};

    void expectAsDefined(Content content, decltype(&sameBits) same) {
        for (const std::uint32_t frames : frameCounts) {
            for (std::size_t misalignment = 0; misalignment < 16; misalignment += 1 + random.below(6)) {
                GuardedBus actual(capacity, misalignment);
                GuardedBus expected(capacity, 0);
                fillBus(expected, random, content);
                copyBus(expected, actual);
                const auto& [in, out] = masks[random.below(masks.size())];
                version.fold(actual.pointers(), in, out, frames);
                referenceKernels.fold(expected.pointers(), in, out, frames);
                ASSERT_TRUE(sameBuses(actual, expected, same))
                    << "masks 0x" << std::hex << in << " to 0x" << out << std::dec << ", " << frames
                    << " frames, misaligned by " << misalignment;
            }
        }
    }
};
INSTANTIATE_TEST_SUITE_P(EveryVersion, Fold,
                         testing::ValuesIn(supportedKernels().begin(), supportedKernels().end()),
                         nameOfVersion);

TEST_P(Fold, AddsBySampleAndRowAtEverySizeAndMisalignment) {
    for (int round = 0; round < 5; ++round) {
        expectAsDefined(Content::special, &sameBits);
    }
}

TEST_P(Fold, KeepsNumbersApartFromValuesThatAreNone) {
    expectAsDefined(Content::strangeNaNs, &sameBitsOrBothNaN);
}

TEST_P(Fold, ReadsAndWritesNothingPastTheLastFrame) {
    for (const std::uint32_t frames : frameCounts) {
        GuardedBus expected(frames, 0);
        fillBus(expected, random, Content::ordinary);
        std::array<std::unique_ptr<test::PageEndSamples>, planeCount> actual;
        std::array<float*, planeCount> pointers{};
        for (std::size_t plane = 0; plane < planeCount; ++plane) {
            actual[plane] = std::make_unique<test::PageEndSamples>(frames);
            pointers[plane] = actual[plane]->samples().data();
            std::copy(expected.plane(plane).begin(), expected.plane(plane).end(), pointers[plane]);
        }
        version.fold(pointers.data(), 0x63F, 0x3, frames);
        referenceKernels.fold(expected.pointers(), 0x63F, 0x3, frames);
        for (std::size_t plane = 0; plane < planeCount; ++plane) {
            ASSERT_TRUE(sameBits(actual[plane]->samples(), expected.plane(plane))) << frames << " frames";
        }
    }
}

/// States and samples of up to sixteen followers.
class Followers {
public:
    Followers(std::uint32_t lanes, std::uint32_t frames, std::size_t misalignment)
        : peaks(lanes), slopes(lanes) {
        for (std::uint32_t lane = 0; lane < lanes; ++lane) {
            samples.emplace_back(frames, (misalignment + lane * 3) % 16);
        }
    }

    void run(const Kernels& kernels, const MeterRelease& release, std::uint32_t from, std::uint32_t frames) {
        std::vector<MeterLane> lanes;
        lanes.reserve(samples.size());
        for (std::size_t lane = 0; lane < samples.size(); ++lane) {
            lanes.push_back({samples[lane].data() + from, &peaks[lane], &slopes[lane]});
        }
        kernels.follow(lanes.data(), static_cast<std::uint32_t>(lanes.size()), release, frames);
    }

    std::vector<GuardedSamples> samples;
    std::vector<float> peaks;
    std::vector<float> slopes;
};

class Follow : public KernelsTest {
protected:
    void expectSameState(const Followers& actual, const Followers& expected) const {
        ASSERT_TRUE(sameBits(actual.peaks, expected.peaks)) << "peaks of " << actual.peaks.size() << " lanes";
        ASSERT_TRUE(sameBits(actual.slopes, expected.slopes))
            << "slopes of " << actual.peaks.size() << " lanes";
        for (const GuardedSamples& lane : actual.samples) {
            ASSERT_TRUE(lane.guardsAreWhole());
        }
    }

    /// Calls of odd sizes over the same lanes, which begin in `state`.
    void expectAsDefined(std::uint32_t lanes, const MeterRelease& release, Content content) {
        Followers actual(lanes, total, random.below(16));
        Followers expected(lanes, total, 0);
        for (std::uint32_t lane = 0; lane < lanes; ++lane) {
            random.fill(expected.samples[lane].samples(), content);
            std::ranges::copy(expected.samples[lane].samples(), actual.samples[lane].data());
            expected.peaks[lane] = actual.peaks[lane] = std::fabs(random.sample(Content::ordinary));
        }
        std::uint32_t from = 0;
        for (const std::uint32_t frames : {480u, 0u, 1u, 33u, 7u, 512u, 2u, 100u, 31u}) {
            actual.run(version, release, from, frames);
            expected.run(referenceKernels, release, from, frames);
            expectSameState(actual, expected);
            from += frames;
        }
    }

    static constexpr std::uint32_t total = 480 + 0 + 1 + 33 + 7 + 512 + 2 + 100 + 31;
    const std::array<MeterRelease, 6> releases = {{MeterRelease::forSampleRate(48000),
                                                   MeterRelease::forSampleRate(44100),
                                                   MeterRelease::forSampleRate(96000),
                                                   MeterRelease::forSampleRate(8000),
                                                   {0.125f, 2.0f},
                                                   {0.0f, 0.0f}}};
};
INSTANTIATE_TEST_SUITE_P(EveryVersion, Follow,
                         testing::ValuesIn(supportedKernels().begin(), supportedKernels().end()),
                         nameOfVersion);

TEST_P(Follow, RunsAnyNumberOfLanesOverCallsOfOddSizes) {
    for (std::uint32_t lanes = 0; lanes <= 2 * planeCount; ++lanes) {
        for (const MeterRelease& release : releases) {
            expectAsDefined(lanes, release, Content::ordinary);
        }
    }
}

TEST_P(Follow, MeetsInfinitiesDenormalsAndValuesThatAreNoNumbers) {
    for (std::uint32_t lanes = 1; lanes <= 2 * planeCount; ++lanes) {
        for (const MeterRelease& release : releases) {
            expectAsDefined(lanes, release, Content::special);
            expectAsDefined(lanes, release, Content::strangeNaNs);
        }
    }
}

TEST_P(Follow, FallsThroughALongSilenceUntilItsStepIsInfinite) {
    for (const std::uint32_t lanes : {1u, 3u, 8u, 10u, 16u}) {
        constexpr std::uint32_t silence = 2500;
        Followers actual(lanes, silence + 2, 3);
        Followers expected(lanes, silence + 2, 0);
        for (std::uint32_t lane = 0; lane < lanes; ++lane) {
            for (Followers* followers : {&actual, &expected}) {
                std::ranges::fill(followers->samples[lane].samples(), 0.0f);
                followers->samples[lane].data()[0] = lane == 1 ? INFINITY : 1.0f;
                followers->samples[lane].data()[silence + 1] = 0.25f;
            }
        }
        for (const auto& [from, frames] : {std::pair{0u, silence + 1}, std::pair{silence + 1, 1u}}) {
            actual.run(version, MeterRelease::forSampleRate(44100), from, frames);
            expected.run(referenceKernels, MeterRelease::forSampleRate(44100), from, frames);
            expectSameState(actual, expected);
            if (from == 0) {
                EXPECT_EQ(actual.slopes[0], INFINITY);
                EXPECT_EQ(actual.peaks[0], 0.0f);
            }
        }
        EXPECT_EQ(actual.peaks[lanes - 1], 0.25f);
    }
}

TEST_P(Follow, ReadsNothingPastTheLastFrame) {
    for (const std::uint32_t frames : frameCounts) {
        for (const std::uint32_t lanes : {1u, 2u, 8u, 16u}) {
            const test::PageEndSamples samples(frames);
            std::ranges::fill(samples.samples(), -0.5f);
            std::vector<float> peaks(lanes);
            std::vector<float> slopes(lanes);
            std::vector<MeterLane> states;
            states.reserve(lanes);
            for (std::uint32_t lane = 0; lane < lanes; ++lane) {
                states.push_back({samples.samples().data(), &peaks[lane], &slopes[lane]});
            }
            version.follow(states.data(), lanes, {0.0f, 1.0f}, frames);
            EXPECT_EQ(peaks, std::vector<float>(lanes, frames == 0 ? 0.0f : 0.5f)) << frames << " frames";
        }
    }
}

class FoldToStereo : public KernelsTest {
protected:
    struct Shape {
        std::uint32_t mask;
        std::uint32_t channels;
        ChannelMap map;
    };
    /// 5.1 with back and with side speakers come in the same order and are folded alike.
    static constexpr std::array<Shape, 4> shapes = {{{0x3, 2, {0, 1}},
                                                     {0x3F, 6, {0, 1, 2, 3, 4, 5}},
                                                     {0x60F, 6, {0, 1, 2, 3, 6, 7}},
                                                     {0x63F, 8, {0, 1, 2, 3, 4, 5, 6, 7}}}};

    static std::vector<float> throughThePlanes(const Shape& shape, const float* input, std::uint32_t frames) {
        GuardedBus wet(frames, 0);
        GuardedBus dry(frames, 0);
        std::vector<float> output(std::size_t{frames} * 2);
        referenceKernels.deinterleave(input, shape.channels, shape.map.data(), wet.pointers(), dry.pointers(),
                                      frames);
        referenceKernels.fold(wet.pointers(), shape.mask, 0x3, frames);
        referenceKernels.interleave(wet.pointers(), maps[0].data(), 2, output.data(), frames);
        return output;
    }

    void expectAsThroughThePlanes(Content content, decltype(&sameBits) same) {
        for (const Shape& shape : shapes) {
            for (const std::uint32_t frames :
                 {0u, 1u, 2u, 3u, 5u, 7u, 8u, 9u, 15u, 16u, 17u, 31u, 33u, 480u, 511u, 512u, 1030u}) {
                for (std::size_t misalignment = 0; misalignment < 16; ++misalignment) {
                    GuardedSamples input(std::size_t{frames} * shape.channels, misalignment);
                    GuardedSamples output(std::size_t{frames} * 2, 15 - misalignment);
                    random.fill(input.samples(), content);
                    const auto expected = throughThePlanes(shape, input.data(), frames);

                    version.foldToStereo(input.data(), shape.channels, output.data(), frames);
                    ASSERT_TRUE(same(output.samples(), expected)) << "mask " << shape.mask << ", " << frames;
                    ASSERT_TRUE(output.guardsAreWhole()) << "mask " << shape.mask << ", " << frames;

                    version.foldToStereo(input.data(), shape.channels, input.data(), frames);
                    ASSERT_TRUE(same(input.samples().first(expected.size()), expected))
                        << "in place, mask " << shape.mask << ", " << frames;
                    ASSERT_TRUE(input.guardsAreWhole()) << "in place, mask " << shape.mask << ", " << frames;
                }
            }
        }
    }
};

std::vector<const Kernels*> versionsThatFoldToStereo() {
    std::vector<const Kernels*> versions;
    for (const Kernels* version : supportedKernels()) {
        if (version->foldToStereo != nullptr) {
            versions.push_back(version);
        }
    }
    return versions;
}
INSTANTIATE_TEST_SUITE_P(EveryVersionThatHasIt, FoldToStereo, testing::ValuesIn(versionsThatFoldToStereo()),
                         nameOfVersion);

TEST_P(FoldToStereo, GivesWhatThePlanesGiveAlsoInPlace) {
    expectAsThroughThePlanes(Content::special, &sameBits);
}

TEST_P(FoldToStereo, KeepsNumbersApartFromValuesThatAreNone) {
    expectAsThroughThePlanes(Content::strangeNaNs, &sameBitsOrBothNaN);
}

TEST_P(FoldToStereo, LeavesTheInputAfterTheOutputsEndAsItIsInPlace) {
    GuardedSamples input(100 * 8);
    random.fill(input.samples(), Content::ordinary);
    const std::vector<float> before(input.samples().begin(), input.samples().end());

    version.foldToStereo(input.data(), 8, input.data(), 100);

    EXPECT_TRUE(sameBits(input.samples().subspan(200), std::span(before).subspan(200)));
}

TEST_P(FoldToStereo, ReadsAndWritesNothingPastTheLastFrame) {
    for (const Shape& shape : shapes) {
        for (const std::uint32_t frames : frameCounts) {
            const test::PageEndSamples input(std::size_t{frames} * shape.channels);
            const test::PageEndSamples output(std::size_t{frames} * 2);
            random.fill(input.samples(), Content::ordinary);
            const auto expected = throughThePlanes(shape, input.samples().data(), frames);

            version.foldToStereo(input.samples().data(), shape.channels, output.samples().data(), frames);

            ASSERT_TRUE(sameBits(output.samples(), expected)) << "mask " << shape.mask << ", " << frames;
        }
    }
}

TEST(SupportedKernels, BeginWithThePlainVersionAndHaveDifferentNames) {
    const auto versions = supportedKernels();

    ASSERT_GE(versions.size(), 2u);
    EXPECT_EQ(versions.front()->name, "plain");
    for (std::size_t a = 0; a < versions.size(); ++a) {
        for (std::size_t b = a + 1; b < versions.size(); ++b) {
            EXPECT_NE(versions[a]->name, versions[b]->name);
        }
    }
}

TEST(FindKernels, FindsEachSupportedVersionByItsExactNameAndNoOther) {
    for (const Kernels* version : supportedKernels()) {
        EXPECT_EQ(findKernels(version->name), version);
    }
    for (const char* name : {"", "none", "Plain", "plain "}) {
        EXPECT_EQ(findKernels(name), nullptr) << name;
    }
}

TEST(ChosenKernels, AreTheVersionNamedByTheEnvironmentElseTheFastest) {
    const char* named = std::getenv("KORVA_KERNELS");
    const Kernels* supported = named != nullptr ? findKernels(named) : nullptr;

    EXPECT_EQ(&chosenKernels(), supported != nullptr ? supported : supportedKernels().back());
}

}  // namespace
}  // namespace korva::rt
