#include "korva/process/stream_events.h"

#include <gtest/gtest.h>

#include "korva/errors.h"

namespace korva::tool {
namespace {

const std::string someFile = KORVA_SOURCE "/examples/presets/graphic_eq.json";

std::uint64_t frameAt(double seconds, std::uint32_t rate) {
    return StreamEvent{.seconds = seconds, .change = VolumeChange{}}.frame(rate);
}

TEST(StreamEvents, ADecimalFractionOfASecondIsTheFrameThatItMeans) {
    for (const std::uint32_t rate : {8000U, 44'100U, 48'000U, 192'000U}) {
        for (std::uint32_t frame = 0; frame <= 100'000; frame += rate / 100) {
            EXPECT_EQ(frameAt(frame / static_cast<double>(rate), rate), frame);
        }
    }
    for (int hundredth = 0; hundredth < 10'000; ++hundredth) {
        EXPECT_EQ(frameAt(hundredth / 100.0, 48'000), static_cast<std::uint64_t>(hundredth) * 480);
    }
}

TEST(StreamEvents, ATimeBetweenTwoFramesIsTheLaterOne) {
    EXPECT_EQ(frameAt(1e-9, 48'000), 1U);
    EXPECT_EQ(frameAt(0.5 / 48'000, 48'000), 1U);
    EXPECT_EQ(frameAt(1.0 + 1e-9, 48'000), 48'001U);
}

TEST(StreamEvents, TheLongestTimeHasAFrame) {
    EXPECT_EQ(frameAt(1e9, 384'000), 384'000'000'000'000U);
}

TEST(StreamEvents, ComeInTheOrderOfTheirTimes) {
    const auto events = readStreamEvents({"2=" + someFile, "1e-1=" + someFile}, {"3=0", "1=0.5", "0=1"});
    ASSERT_EQ(events.size(), 5U);
    std::vector<double> seconds;
    for (const StreamEvent& event : events) {
        seconds.push_back(event.seconds);
    }
    EXPECT_EQ(seconds, (std::vector{0.0, 0.1, 1.0, 2.0, 3.0}));
    EXPECT_EQ(std::get<VolumeChange>(events[0].change).scalar, 1.0f);
    EXPECT_EQ(std::get<VolumeChange>(events[2].change).scalar, 0.5f);
    EXPECT_EQ(std::get<PresetChange>(events[3].change).file, someFile);
}

TEST(StreamEvents, OfOneTimeThePresetComesFirst) {
    const auto events = readStreamEvents({"1=" + someFile}, {"1=0.5", "1.0=0.25"});
    ASSERT_EQ(events.size(), 3U);
    EXPECT_TRUE(std::holds_alternative<PresetChange>(events[0].change));
    EXPECT_EQ(std::get<VolumeChange>(events[1].change).scalar, 0.5f);
    EXPECT_EQ(std::get<VolumeChange>(events[2].change).scalar, 0.25f);
}

TEST(StreamEvents, TheFirstEqualSignEndsTheTime) {
    try {
        static_cast<void>(readStreamEvents({"1=a=b"}, {}));
        FAIL() << "there is no such file";
    } catch (const ToolError& error) {
        EXPECT_NE(std::string(error.what()).find("a=b"), std::string::npos);
        EXPECT_EQ(std::string(error.what()).find("1=a"), std::string::npos);
    }
}

TEST(StreamEvents, HaveTheirPresetsFromTheFiles) {
    const auto events = readStreamEvents({"0=" + someFile}, {});
    EXPECT_EQ(std::get<PresetChange>(events.at(0).change).preset.parameters.size(), 2U);
}

}  // namespace
}  // namespace korva::tool
