#include "rt/direct_copy.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <vector>

#include "tests/support/float_bits.h"
#include "tests/support/stream.h"

namespace korva::rt {
namespace {

using published::APO_BUFFER_FLAGS;
using published::BUFFER_INVALID;
using published::BUFFER_SILENT;
using published::BUFFER_VALID;
using test::connectionTo;
using test::copyDirectly;
using test::sameBits;

constexpr std::uint32_t frames = 3;
constexpr std::uint32_t channels = 2;

/// Two buffers of three stereo frames, each a frame longer than its connection says.
class DirectCopy : public testing::Test {
protected:
    std::vector<float> source = {1, 2, 3, 4, 5, 6, 90, 91};
    std::vector<float> target = {7, 7, 7, 7, 7, 7, 7, 7};
    const std::vector<float> untouched = target;
    APO_CONNECTION_PROPERTY input = connectionTo(source, frames);
    APO_CONNECTION_PROPERTY output = connectionTo(target, 11, BUFFER_INVALID);
};

TEST_F(DirectCopy, CopiesExactlyTheValidFrames) {
    copyDirectly(input, output, channels);

    EXPECT_TRUE(sameBits(target, std::vector<float>{1, 2, 3, 4, 5, 6, 7, 7}));
    EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
    EXPECT_EQ(output.u32ValidFrameCount, frames);
}

TEST_F(DirectCopy, CopiesBitsOfAnyKind) {
    source[0] = -0.0f;
    source[1] = std::bit_cast<float>(std::uint32_t{0x7FA00001});

    copyDirectly(input, output, channels);

    EXPECT_EQ(test::bitsOf(target[0]), 0x80000000u);
    EXPECT_EQ(test::bitsOf(target[1]), 0x7FA00001u);
}

TEST_F(DirectCopy, LeavesTheInputConnectionAndBothSignaturesAsTheyAre) {
    input.u32Signature = 1;
    output.u32Signature = 2;

    copyDirectly(input, output, channels);

    EXPECT_EQ(input.u32ValidFrameCount, frames);
    EXPECT_EQ(input.u32BufferFlags, BUFFER_VALID);
    EXPECT_EQ(input.u32Signature, 1u);
    EXPECT_EQ(output.u32Signature, 2u);
    EXPECT_EQ(output.pBuffer, reinterpret_cast<UINT_PTR>(target.data()));
    EXPECT_EQ(target[0], 1.0f);
}

TEST_F(DirectCopy, DoesNothingForAnInputThatIsNeitherValidNorSilent) {
    for (const std::uint32_t flags : {0u, 3u, 4u, 0x80000001u, 0xFFFFFFFFu}) {
        input.u32BufferFlags = static_cast<APO_BUFFER_FLAGS>(flags);

        copyDirectly(input, output, channels);

        EXPECT_TRUE(sameBits(target, untouched)) << "flags " << flags;
        EXPECT_EQ(output.u32BufferFlags, BUFFER_INVALID) << "flags " << flags;
        EXPECT_EQ(output.u32ValidFrameCount, 11u) << "flags " << flags;
    }
}

TEST_F(DirectCopy, DoesNothingWithoutAConnection) {
    APO_CONNECTION_PROPERTY* inputs[] = {&input};
    APO_CONNECTION_PROPERTY* outputs[] = {&output};

    directCopy(0, inputs, 1, outputs, channels);
    directCopy(1, inputs, 0, outputs, channels);
    directCopy(0, nullptr, 0, nullptr, channels);

    EXPECT_TRUE(sameBits(target, untouched));
    EXPECT_EQ(output.u32BufferFlags, BUFFER_INVALID);
    EXPECT_EQ(output.u32ValidFrameCount, 11u);
}

TEST_F(DirectCopy, TakesTheFirstConnectionOfEachSide) {
    std::vector<float> otherSource(8, 50.0f);
    std::vector<float> otherTarget(8, 60.0f);
    APO_CONNECTION_PROPERTY otherInput = connectionTo(otherSource, 1, BUFFER_INVALID);
    APO_CONNECTION_PROPERTY otherOutput = connectionTo(otherTarget, 1, BUFFER_INVALID);
    APO_CONNECTION_PROPERTY* inputs[] = {&input, &otherInput};
    APO_CONNECTION_PROPERTY* outputs[] = {&output, &otherOutput};

    directCopy(2, inputs, 2, outputs, channels);

    EXPECT_EQ(target[5], 6.0f);
    EXPECT_TRUE(sameBits(otherTarget, std::vector<float>(8, 60.0f)));
    EXPECT_EQ(otherOutput.u32BufferFlags, BUFFER_INVALID);
}

TEST_F(DirectCopy, ZerosTheOutputOfASilentInputAndCallsItValid) {
    input.u32BufferFlags = BUFFER_SILENT;

    copyDirectly(input, output, channels);

    EXPECT_TRUE(sameBits(target, std::vector<float>{0, 0, 0, 0, 0, 0, 7, 7}));
    EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
}

TEST_F(DirectCopy, ZerosTheOutputOfAnInputWithoutABuffer) {
    input.pBuffer = 0;

    copyDirectly(input, output, channels);

    EXPECT_TRUE(sameBits(target, std::vector<float>{0, 0, 0, 0, 0, 0, 7, 7}));
    EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
    EXPECT_EQ(output.u32ValidFrameCount, frames);
}

TEST_F(DirectCopy, ZerosASilentOutputAndLeavesItSilent) {
    output.u32BufferFlags = BUFFER_SILENT;

    copyDirectly(input, output, channels);

    EXPECT_TRUE(sameBits(target, std::vector<float>{0, 0, 0, 0, 0, 0, 7, 7}));
    EXPECT_EQ(output.u32BufferFlags, BUFFER_SILENT);
    EXPECT_EQ(output.u32ValidFrameCount, frames);
}

TEST_F(DirectCopy, CallsAnOutputWithoutABufferSilent) {
    output.pBuffer = 0;

    copyDirectly(input, output, channels);

    EXPECT_EQ(output.u32BufferFlags, BUFFER_SILENT);
    EXPECT_EQ(output.u32ValidFrameCount, frames);
}

TEST_F(DirectCopy, CallsTwoConnectionsWithoutBuffersSilent) {
    input.pBuffer = 0;
    output.pBuffer = 0;

    copyDirectly(input, output, channels);

    EXPECT_EQ(output.u32BufferFlags, BUFFER_SILENT);
    EXPECT_EQ(output.u32ValidFrameCount, frames);
}

TEST_F(DirectCopy, SetsOnlyFlagAndCountInPlace) {
    output.pBuffer = input.pBuffer;
    const std::vector<float> before = source;

    copyDirectly(input, output, channels);

    EXPECT_TRUE(sameBits(source, before));
    EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
    EXPECT_EQ(output.u32ValidFrameCount, frames);
}

TEST_F(DirectCopy, ZerosNoBufferThatIsBothEvenIfASideIsSilent) {
    const std::vector<float> before = source;
    for (const auto flags : {BUFFER_SILENT, BUFFER_VALID}) {
        input.u32BufferFlags = flags == BUFFER_SILENT ? BUFFER_VALID : BUFFER_SILENT;
        output.u32BufferFlags = flags;
        output.pBuffer = input.pBuffer;

        copyDirectly(input, output, channels);

        EXPECT_TRUE(sameBits(source, before));
        EXPECT_EQ(output.u32BufferFlags, flags);
    }
}

TEST_F(DirectCopy, TouchesNoSampleOfAFormatWithoutSamples) {
    for (const auto inputFlags : {BUFFER_VALID, BUFFER_SILENT}) {
        input.u32BufferFlags = inputFlags;

        copyDirectly(input, output, 0);

        EXPECT_TRUE(sameBits(target, untouched));
        EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
        EXPECT_EQ(output.u32ValidFrameCount, frames);
    }
}

TEST_F(DirectCopy, SetsFlagAndCountForNoFrames) {
    input.u32ValidFrameCount = 0;

    copyDirectly(input, output, channels);

    EXPECT_TRUE(sameBits(target, untouched));
    EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID);
    EXPECT_EQ(output.u32ValidFrameCount, 0u);
}

TEST_F(DirectCopy, CallsAnOutputOfAnyOtherFlagValid) {
    for (const std::uint32_t flags : {0u, 1u, 3u, 0xFFFFFFFFu}) {
        output.u32BufferFlags = static_cast<APO_BUFFER_FLAGS>(flags);

        copyDirectly(input, output, channels);

        EXPECT_EQ(output.u32BufferFlags, BUFFER_VALID) << "flags " << flags;
    }
}

}  // namespace
}  // namespace korva::rt
