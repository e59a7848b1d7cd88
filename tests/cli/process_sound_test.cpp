#include <array>
#include <chrono>
#include <limits>
#include <map>

#include "rt/kernels/kernels.h"
#include "tests/cli/process_support.h"

namespace korva::test {
namespace {

constexpr std::uint32_t surroundMask = 0x63F;

class ProcessSound : public ToolTest {
protected:
    /// What comes out of the tool for a sound.
    [[nodiscard]] Sound processed(const Sound& sound, const std::vector<std::string>& options,
                                  const std::map<std::string, std::string>& environment = {}) const {
        writeSound(path("in"), sound);
        std::vector<std::string> arguments = {"process", path("in"), path("out.wav"), "--quiet"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        Launch launch = tool(arguments);
        launch.environment.insert(environment.begin(), environment.end());
        EXPECT_TRUE(succeededQuietly(run(launch)));
        return readSound(path("out.wav"));
    }
};

/// 7.1 to stereo as it is defined: from left to right, one multiplication and one addition for each speaker.
std::vector<float> foldedToStereo(const std::vector<float>& surround) {
    enum { FL, FR, FC, LF, BL, BR, SL, SR, channels };
    std::vector<float> stereo;
    for (std::size_t at = 0; at < surround.size(); at += channels) {
        const float* const frame = &surround[at];
        for (const auto& [own, side, back] : {std::array{FL, SL, BL}, std::array{FR, SR, BR}}) {
            float sum = frame[own];
            sum = sum + 0.7083f * frame[side];
            sum = sum + 0.7083f * frame[back];
            sum = sum + 0.5f * frame[FC];
            sum = sum + 0.5f * frame[LF];
            stereo.push_back(sum);
        }
    }
    return stereo;
}

TEST_F(ProcessSound, FoldsSurroundToStereoByTheDefinedCoefficients) {
    const Sound in = makeNoiseFor(surroundMask, 5000);
    const Sound out = processed(in, {"--output-layout", "stereo"});
    EXPECT_EQ(out.channels, 2);
    EXPECT_EQ(out.sampleRate, in.sampleRate);
    EXPECT_EQ(out.format, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    EXPECT_TRUE(sameBits(out.samples, foldedToStereo(in.samples)));
}

TEST_F(ProcessSound, AtItsOwnPaceTakesAsLongAsItLasts) {
    const Sound in = makeNoise(2, 24'000);
    const auto begin = std::chrono::steady_clock::now();
    const Sound out = processed(in, {"--realtime"});
    // The last buffer's own time needn't pass.
    EXPECT_GE(std::chrono::steady_clock::now() - begin,
              std::chrono::milliseconds(490) * 48000 / in.sampleRate);
    EXPECT_TRUE(sameBits(out.samples, in.samples));
}

TEST_F(ProcessSound, TheFoldDoesNotDependOnBufferSizeMetersOrKernels) {
    const Sound in = makeNoiseFor(surroundMask, 5000);
    const std::vector<float> expected = foldedToStereo(in.samples);
    for (const rt::Kernels* const kernels : rt::supportedKernels()) {
        for (const char* const frames : {"1", "480", "512", "1000", "1000000"}) {
            for (const bool meters : {false, true}) {
                std::vector<std::string> options = {"--output-layout", "stereo", "--buffer", frames};
                if (meters) {
                    options.emplace_back("--meters");
                }
                const Sound out = processed(in, options, {{"KORVA_KERNELS", std::string(kernels->name)}});
                EXPECT_TRUE(sameBits(out.samples, expected)) << kernels->name << ", buffers of " << frames;
            }
        }
    }
}

TEST_F(ProcessSound, ASoundWhoseLayoutStaysComesOutAsItIs) {
    for (const std::uint32_t mask : {0x4u, 0x3u, 0x33u, 0x3Fu, 0x60Fu, 0x63Fu}) {
        const Sound in = makeNoiseFor(mask, 1001);
        EXPECT_TRUE(sameBits(processed(in, {}).samples, in.samples)) << mask;
    }
}

TEST_F(ProcessSound, TheLastShorterBufferIsComplete) {
    for (const std::size_t frames : {1u, 479u, 480u, 481u, 8191u, 8192u, 8193u, 16384u}) {
        const Sound in = makeNoise(2, frames);
        EXPECT_TRUE(sameBits(processed(in, {}).samples, in.samples)) << frames;
    }
}

// With all eight speakers nothing is added to any channel, not even silence.
TEST_F(ProcessSound, NumbersOfEveryKindPassAsTheyAre) {
    using Limits = std::numeric_limits<float>;
    const std::array<float, 12> numbers = {Limits::quiet_NaN(),
                                           -Limits::quiet_NaN(),
                                           Limits::infinity(),
                                           -Limits::infinity(),
                                           Limits::denorm_min(),
                                           -Limits::denorm_min(),
                                           Limits::min() / 2,
                                           0.0f,
                                           -0.0f,
                                           Limits::max(),
                                           Limits::lowest(),
                                           4.0f};
    Sound in = makeNoiseFor(surroundMask, numbers.size());
    for (std::size_t i = 0; i < in.samples.size(); ++i) {
        in.samples[i] = numbers[i % numbers.size()];
    }
    EXPECT_TRUE(sameBits(processed(in, {}).samples, in.samples));
    EXPECT_TRUE(sameBits(processed(in, {"--meters"}).samples, in.samples));
}

TEST_F(ProcessSound, MasksSurvive) {
    for (const std::uint32_t mask :
         {0x1u, 0x8u, 0x600u, 0x7u, 0x107u, 0x33u, 0x603u, 0x3Fu, 0x60Fu, 0x63Fu, 0xFFu, 0x3F000u}) {
        EXPECT_EQ(processed(makeNoiseFor(mask, 10), {}).positions, positionsOfMask(mask)) << mask;
    }
}

TEST_F(ProcessSound, AnOutputMaskIsWrittenIntoTheFile) {
    const Sound out = processed(makeNoise(2, 10), {"--output-layout", "0x107"});
    EXPECT_EQ(out.channels, 4);
    EXPECT_EQ(out.positions, positionsOfMask(0x107));
}

TEST_F(ProcessSound, ChannelsWithoutSpeakersGetTheDefaultLayoutOfTheirNumber) {
    EXPECT_EQ(processed(makeNoise(4, 10), {}).positions, positionsOfMask(0x603));
    EXPECT_EQ(processed(makeNoise(6, 10), {}).positions, positionsOfMask(0x60F));
    EXPECT_EQ(processed(makeNoise(8, 10), {}).positions, positionsOfMask(0x63F));
}

TEST_F(ProcessSound, ChannelsInAnotherOrderAreBroughtIntoThePublishedOne) {
    // Left, right, back left, back right, center, low frequency: as AIFF files may have them.
    Sound in = makeNoise(6, 1000);
    in.format = SF_FORMAT_AIFF | SF_FORMAT_FLOAT;
    in.positions = {SF_CHANNEL_MAP_LEFT,       SF_CHANNEL_MAP_RIGHT,  SF_CHANNEL_MAP_REAR_LEFT,
                    SF_CHANNEL_MAP_REAR_RIGHT, SF_CHANNEL_MAP_CENTER, SF_CHANNEL_MAP_LFE};
    std::vector<float> expected;
    for (std::size_t frame = 0; frame < in.frames(); ++frame) {
        for (const std::size_t channel : {0u, 1u, 4u, 5u, 2u, 3u}) {
            expected.push_back(in.samples[frame * 6 + channel]);
        }
    }
    const Sound out = processed(in, {});
    EXPECT_EQ(out.positions, positionsOfMask(0x3F));
    EXPECT_TRUE(sameBits(out.samples, expected));
}

TEST_F(ProcessSound, PositionsThatAreNoSpeakersCountAsNone) {
    Sound in = makeNoise(4, 1000);
    in.format = SF_FORMAT_AIFF | SF_FORMAT_FLOAT;
    in.positions = {SF_CHANNEL_MAP_AMBISONIC_B_W, SF_CHANNEL_MAP_AMBISONIC_B_X, SF_CHANNEL_MAP_AMBISONIC_B_Y,
                    SF_CHANNEL_MAP_AMBISONIC_B_Z};
    const Sound out = processed(in, {});
    EXPECT_EQ(out.positions, positionsOfMask(0x603));
    EXPECT_TRUE(sameBits(out.samples, in.samples));
}

TEST_F(ProcessSound, AFileWhoseFormatFixesTheSpeakersIsReadInTheirOrder) {
    // Vorbis: left, center, right, back left, back right, low frequency. Each channel has a level of its own.
    Sound in{.channels = 6, .format = SF_FORMAT_OGG | SF_FORMAT_VORBIS};
    const std::array<float, 6> levels = {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f};
    for (int frame = 0; frame < 8000; ++frame) {
        in.samples.insert(in.samples.end(), levels.begin(), levels.end());
    }
    const Sound out = processed(in, {});
    EXPECT_EQ(out.positions, positionsOfMask(0x3F));
    const float* const middle = &out.samples[std::size_t{4000} * 6];
    std::size_t channel = 0;
    for (const float level : {0.1f, 0.3f, 0.2f, 0.6f, 0.4f, 0.5f}) {
        EXPECT_NEAR(middle[channel++], level, 0.05f);
    }
}

TEST_F(ProcessSound, IntegerSamplesAreFractionsOfFullScale) {
    writeLongSound(path("lowest.wav"), 10);
    ASSERT_TRUE(succeededQuietly(process(path("lowest.wav"), path("out.wav"))));
    EXPECT_TRUE(sameBits(readSound(path("out.wav")).samples, std::vector<float>(10, -1.0f)));
}

}  // namespace
}  // namespace korva::test
