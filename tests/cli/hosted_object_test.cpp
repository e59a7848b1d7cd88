#include "korva/process/hosted_object.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace korva::tool {
namespace {

constexpr SoundFormat stereo = {48000, 2, 0x3};

/// One buffer of stereo with every sample at one level, and where the meters stand after it.
Peaks peaksAfter(HostedObject& object, float level) {
    std::vector<float> in(200, level);
    std::vector<float> out(200);
    const auto connection = [](std::vector<float>& samples) {
        return APO_CONNECTION_PROPERTY{.pBuffer = reinterpret_cast<UINT_PTR>(samples.data()),
                                       .u32ValidFrameCount = 100,
                                       .u32BufferFlags = published::BUFFER_VALID,
                                       .u32Signature = published::connectionPropertySignature};
    };
    auto input = connection(in);
    auto output = connection(out);
    object.process(input, output);
    Peaks peaks;
    object.raise(peaks);
    return peaks;
}

TEST(HostedObject, MetersStandAtTheHighestLevel) {
    HostedObject object(params::EffectKind::stream, {});
    object.lock(stereo, stereo, 100, true);
    const Peaks peaks = peaksAfter(object, 0.5f);
    EXPECT_EQ(peaks.input[rt::FrontLeft], 0.5f);
    EXPECT_EQ(peaks.output[rt::FrontRight], 0.5f);
    EXPECT_EQ(peaks.input[rt::BackLeft], 0.0f);
}

TEST(HostedObject, MetersStandStillUnlessTheyAreAskedFor) {
    HostedObject object(params::EffectKind::stream, {});
    object.lock(stereo, stereo, 100, false);
    EXPECT_EQ(peaksAfter(object, 0.5f).input, Peaks().input);
}

TEST(HostedObject, ASecondStreamStartsWithoutTheFirstOnesLevels) {
    HostedObject object(params::EffectKind::stream, {});
    object.lock(stereo, stereo, 100, true);
    static_cast<void>(peaksAfter(object, 0.5f));
    object.unlock();
    object.lock(stereo, stereo, 100, true);
    EXPECT_EQ(peaksAfter(object, 0.0f).input, Peaks().input);
}

TEST(HostedObject, RaisingPeaksNeverLowersThem) {
    HostedObject object(params::EffectKind::stream, {});
    object.lock(stereo, stereo, 100, true);
    Peaks peaks;
    peaks.input.fill(2.0f);
    static_cast<void>(peaksAfter(object, 0.5f));
    object.raise(peaks);
    EXPECT_EQ(std::ranges::count(peaks.input, 2.0f), 8);
}

TEST(HostedObject, SaysHowLongACallTook) {
    HostedObject object(params::EffectKind::stream, {});
    object.lock(stereo, stereo, 100, true);
    static_cast<void>(peaksAfter(object, 0.5f));
    EXPECT_GT(object.lastProcessNs(), 0u);
}

}  // namespace
}  // namespace korva::tool
