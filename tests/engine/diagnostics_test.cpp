#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "params/property_set_path.h"
#include "platform/registry.h"
#include "tests/support/call_text.h"
#include "tests/support/effect_rig.h"
#include "tests/support/registry_numbers.h"
#include "tests/support/shown_values.h"
#include "tests/support/telemetry_base.h"
#include "tests/support/wait_until.h"

namespace korva::test {
namespace {

using Lines = std::vector<std::string>;

/// A tool that writes requests, and reads what comes of them.
class Diagnostics : public testing::Test {
protected:
    void SetUp() override {
        static_cast<void>(rig.endpoint.makeSet(params::property_set::temporary));
        key = rig.telemetryBase->open(rig.telemetryBase->instances().at(0));
    }

    void begin() {
        rig.install({.engineId = thirdEngine});
        rig.begin();
    }
    /// A stream, and the pulls that follow from its own values are over.
    void beginStream() {
        begin();
        rig.lock();
        letPullsPass();
    }
    /// A last change of the key has been looked at, and all before it.
    void letPullsPass() {
        ++marks;
        rig.recording.answer(answers + ",data:-1:-39=" + hexOf(std::as_bytes(std::span(&marks, 1))));
        ASSERT_TRUE(setNumber(key, "Mark", marks));
        EXPECT_TRUE(waitUntil([&] { return numberOf(key, "PresetDSPParamBytesSent") == marks; }));
    }
    void request(const char* name, std::uint32_t value) { ASSERT_TRUE(setNumber(key, name, value)); }
    /// Requests and waits until it has been looked at.
    void ask(const char* name, std::uint32_t value) {
        request(name, value);
        letPullsPass();
    }

    /// The calls for data since the last time but those that follow each change of the key.
    [[nodiscard]] Lines newQueries() {
        Lines calls = textsOf(rig.newRecords());
        std::erase_if(calls, [](const std::string& call) {
            return !call.starts_with("SetGetData") || call.find("-1:-39") != std::string::npos;
        });
        return calls;
    }
    [[nodiscard]] std::string shown(const std::string& name) { return shownValuesOf(key)[name]; }

    std::string answers =
        "data:-1:-33=11000000,data:-1:-34=22000000,"
        "data:-1:-43=010000000200000003000000,data:-1:-44=040000000500000006000000";
    std::uint32_t marks = 0x1000;
    EffectRig rig{RigOptions{.hasTelemetry = true}};
    platform::RegistryKey key;
};

TEST_F(Diagnostics, ACycleCountIsPulledWhenItIsAskedFor) {
    beginStream();
    ask("CaptureDSPCycleCount", 1);
    EXPECT_EQ(shown("DSPCycleCount"), "4:11000000");
    EXPECT_EQ(shown("DSPFrameCount"), "");
}

TEST_F(Diagnostics, AFrameCountIsPulledWhenItIsAskedFor) {
    beginStream();
    ask("CaptureDSPFrameCount", 1);
    EXPECT_EQ(shown("DSPFrameCount"), "4:22000000");
    EXPECT_EQ(shown("DSPCycleCount"), "");
}

TEST_F(Diagnostics, BytesThatTheModuleSentArePulledWhenTheyAreAskedFor) {
    beginStream();
    ask("CaptureParamBytesSentByDSP", 1);
    EXPECT_EQ(shown("ParamBytesSentByDSP"), "4:04000000");
    EXPECT_EQ(shown("ParamBytesSentByDSPClockStart"), "4:05000000");
    EXPECT_EQ(shown("ParamBytesSentByDSPClockEnd"), "4:06000000");
    EXPECT_EQ(shown("ParamBytesReceivedByDSP"), "");
}

TEST_F(Diagnostics, BytesThatTheModuleReceivedArePulledWhenTheyAreAskedFor) {
    beginStream();
    ask("CaptureParamBytesReceivedByDSP", 1);
    EXPECT_EQ(shown("ParamBytesReceivedByDSP"), "4:01000000");
    EXPECT_EQ(shown("ParamBytesReceivedByDSPClockStart"), "4:02000000");
    EXPECT_EQ(shown("ParamBytesReceivedByDSPClockEnd"), "4:03000000");
    EXPECT_EQ(shown("ParamBytesSentByDSP"), "");
}

TEST_F(Diagnostics, TheSameRequestAgainAsksNothing) {
    beginStream();
    static_cast<void>(newQueries());
    ask("CaptureDSPCycleCount", 5);
    EXPECT_EQ(newQueries().size(), 1U);
    ask("CaptureDSPCycleCount", 5);
    EXPECT_EQ(newQueries(), Lines{});
    ask("CaptureDSPCycleCount", 0);
    EXPECT_EQ(newQueries().size(), 1U);
}

TEST_F(Diagnostics, ARequestOfZeroIsNoneAtFirst) {
    beginStream();
    static_cast<void>(newQueries());
    ask("CaptureDSPCycleCount", 0);
    ask("CaptureLevelMeters", 0);
    EXPECT_EQ(newQueries(), Lines{});
}

TEST_F(Diagnostics, AllRequestsAreServedInTheirOrder) {
    begin();
    rig.lock();
    letPullsPass();
    static_cast<void>(newQueries());
    for (const char* const name :
         {"CaptureLevelMeters", "CaptureParamBytesReceivedByDSP", "CaptureParamBytesSentByDSP",
          "CaptureDSPFrameCount", "CaptureDSPCycleCount"}) {
        // Two changes may be looked at together, or one by one: so each is there before the next one.
        ask(name, 1);
    }
    rig.unlock();
    static_cast<void>(newQueries());
    for (const char* const name :
         {"CaptureLevelMeters", "CaptureParamBytesReceivedByDSP", "CaptureParamBytesSentByDSP",
          "CaptureDSPFrameCount", "CaptureDSPCycleCount"}) {
        request(name, 2);
    }
    // Nobody looks at them before the next stream, and its lock takes the request for meters.
    EXPECT_EQ(newQueries(), Lines{});
    request("CaptureLevelMeters", 2);
    rig.lock();
    static_cast<void>(newQueries());
    request("CaptureLevelMeters", 3);
    letPullsPass();
    const Lines queries = newQueries();
    const auto placeOf = [&](const char* id) {
        const auto found = std::ranges::find_if(
            queries, [&](const std::string& call) { return call.find(id) != std::string::npos; });
        EXPECT_NE(found, queries.end()) << id;
        return found - queries.begin();
    };
    EXPECT_LT(placeOf("-1:-33"), placeOf("-1:-34"));
    EXPECT_LT(placeOf("-1:-34"), placeOf("-1:-44"));
    EXPECT_LT(placeOf("-1:-44"), placeOf("-1:-43"));
    EXPECT_LT(placeOf("-1:-43"), placeOf("-1:-38"));
    EXPECT_LT(placeOf("-1:-38"), placeOf("-1:-36"));
    EXPECT_LT(placeOf("-1:-36"), placeOf("-1:-37"));
}

TEST_F(Diagnostics, AnAnswerOfAnotherSizeIsNoneAndUsesTheRequestUp) {
    beginStream();
    for (const char* const wrong : {"data:-1:-33=010203", "data:-1:-33=01020304,count:-1:-33=5",
                                    "data:-1:-33=01020304,count:-1:-33=3", "count:-1:-33=0"}) {
        answers = wrong;
        letPullsPass();
        ask("CaptureDSPCycleCount", marks);
        EXPECT_EQ(shown("DSPCycleCount"), "") << wrong;
    }
    answers = "data:-1:-33=11000000";
    const std::uint32_t last = marks;
    letPullsPass();
    static_cast<void>(newQueries());
    ask("CaptureDSPCycleCount", last - 1);
    EXPECT_EQ(newQueries(), Lines{}) << "the module was asked again without a new request";
    ask("CaptureDSPCycleCount", last + 100);
    EXPECT_EQ(shown("DSPCycleCount"), "4:11000000");
}

TEST_F(Diagnostics, ACountOfBytesOfAnotherSizeIsNone) {
    beginStream();
    answers = "data:-1:-43=0100000002000000030000,data:-1:-44=010000000200000003000000,count:-1:-44=16";
    letPullsPass();
    ask("CaptureParamBytesReceivedByDSP", 1);
    ask("CaptureParamBytesSentByDSP", 1);
    EXPECT_EQ(shown("ParamBytesReceivedByDSP"), "");
    EXPECT_EQ(shown("ParamBytesSentByDSP"), "");
}

TEST_F(Diagnostics, ARequestOfAnotherTypeIsNone) {
    beginStream();
    static_cast<void>(newQueries());
    const std::vector<std::byte> eight(8, std::byte{1});
    const std::span<const std::byte> bytes(eight);
    ASSERT_EQ(key.setValue("CaptureDSPCycleCount", platform::registry_type::qword, bytes), 0);
    ASSERT_EQ(key.setValue("CaptureDSPFrameCount", platform::registry_type::binary, bytes.first(4)), 0);
    ASSERT_EQ(key.setValue("CaptureParamBytesSentByDSP", platform::registry_type::dword, bytes.first(3)), 0);
    ASSERT_EQ(key.setValue("CaptureParamBytesReceivedByDSP", platform::registry_type::dword, bytes), 0);
    ASSERT_EQ(key.setValue("CaptureLevelMeters", platform::registry_type::none, {}), 0);
    letPullsPass();
    EXPECT_EQ(newQueries(), Lines{});
}

TEST_F(Diagnostics, RequestsAreLookedAtWhileAStreamIsLockedOnly) {
    begin();
    request("CaptureDSPCycleCount", 1);
    rig.settle();
    EXPECT_EQ(shown("DSPCycleCount"), "");
    rig.recording.answer(answers);
    rig.lock();
    letPullsPass();
    EXPECT_EQ(shown("DSPCycleCount"), "4:11000000");
    rig.unlock();
    static_cast<void>(newQueries());
    request("CaptureDSPFrameCount", 1);
    rig.settle();
    EXPECT_EQ(newQueries(), Lines{});
}

TEST_F(Diagnostics, AnyChangeOfTheKeyPullsTheBytesOfParameters) {
    beginStream();
    answers += ",data:-1:-39=77000000";
    rig.recording.answer(answers);
    ASSERT_TRUE(setNumber(key, "WhateverAToolWrites", 1));
    EXPECT_TRUE(waitUntil([&] { return shown("PresetDSPParamBytesSent") == "4:77000000"; }));
}

TEST_F(Diagnostics, MetersAreOnAsTheRequestSaysFromTheLockOn) {
    begin();
    request("CaptureLevelMeters", 7);
    rig.lock();
    EXPECT_EQ(rig.core().realtime().levelMetersEnabled.get(), 7U);
    letPullsPass();
    ask("CaptureLevelMeters", 0);
    EXPECT_EQ(rig.core().realtime().levelMetersEnabled.get(), 0U);
}

TEST_F(Diagnostics, TheModulesMetersFollowTheRequest) {
    beginStream();
    static_cast<void>(newQueries());
    ask("CaptureLevelMeters", 9);
    const Lines on = newQueries();
    ASSERT_EQ(on.size(), 3U);
    EXPECT_NE(on[0].find("-1:-38 in 01"), std::string::npos) << on[0];
    ask("CaptureLevelMeters", 0);
    const Lines off = newQueries();
    ASSERT_EQ(off.size(), 3U);
    EXPECT_NE(off[0].find("-1:-38 in 00"), std::string::npos) << off[0];
}

TEST_F(Diagnostics, MetersShowTheSound) {
    begin();
    request("CaptureLevelMeters", 1);
    rig.lock();
    letPullsPass();
    static_cast<void>(rig.play(std::vector{0.5F, 0.25F}));
    ask("CaptureLevelMeters", 2);
    EXPECT_EQ(shown("InputLevelMeters").substr(0, 18), "3:0000003f0000803e");
}

TEST_F(Diagnostics, BeforeAnySoundThereIsNoLoad) {
    beginStream();
    ask("CaptureLevelMeters", 1);
    EXPECT_EQ(rig.core().bufferSizeMs.read(), 0U);
    EXPECT_EQ(rig.core().cpuUsage.read(), 0U);
    EXPECT_EQ(shown("BufferSizeMS"), "");
    EXPECT_EQ(shown("CPUUsage"), "");
}

TEST_F(Diagnostics, ALoadIsThatOfTheLastBuffer) {
    beginStream();
    static_cast<void>(rig.play(std::vector<float>(2 * 480, 0.5F)));
    ask("CaptureLevelMeters", 1);
    EXPECT_EQ(shown("BufferSizeMS"), "4:0a000000");
}

TEST_F(Diagnostics, WithoutAnEngineNoRequestIsTaken) {
    rig.begin();
    rig.lock();
    request("CaptureDSPCycleCount", 1);
    request("CaptureLevelMeters", 1);
    // A pull that comes now finds no engine; one that comes with the engine takes both.
    rig.settle();
    EXPECT_EQ(rig.core().realtime().levelMetersEnabled.get(), 0U);
    rig.recording.answer(answers);
    rig.install({.engineId = thirdEngine});
    EXPECT_TRUE(waitUntil([&] { return static_cast<bool>(rig.core().dspEngine.read()); }));
    letPullsPass();
    EXPECT_EQ(shown("DSPCycleCount"), "4:11000000");
    EXPECT_EQ(rig.core().realtime().levelMetersEnabled.get(), 1U);
}

TEST_F(Diagnostics, AModuleThatTellsNothingLeavesAllButTheLoad) {
    answers = "count:-1:-33=0";
    beginStream();
    static_cast<void>(rig.play(std::vector<float>(2 * 480, 0.5F)));
    ask("CaptureDSPCycleCount", 1);
    ask("CaptureDSPFrameCount", 1);
    ask("CaptureLevelMeters", 1);
    EXPECT_EQ(shown("DSPCycleCount"), "");
    EXPECT_EQ(shown("DSPFrameCount"), "");
    EXPECT_EQ(shown("BufferSizeMS"), "4:0a000000");
}

TEST_F(Diagnostics, AStreamThatEndsAsItBeginsIsBegunNoFurther) {
    begin();
    const auto endStream = [](void*, framework::ListenedTo&, framework::ActiveObject& core, const void*,
                              void*, const void*, framework::Reason) {
        static_cast<engine::EffectCore&>(core).unlockForProcess();
    };
    rig.on([&] { rig.core().outputChannelCount.subscribe(nullptr, nullptr, endStream); });
    static_cast<void>(rig.newRecords());
    rig.lock();
    EXPECT_FALSE(rig.core().locked.read());
    const Lines calls = textsOf(rig.newRecords());
    EXPECT_TRUE(
        std::ranges::none_of(calls, [](const std::string& call) { return call.starts_with("Clear"); }));
}

TEST_F(Diagnostics, AStreamsEndStopsTheWatchWhateverAToolDoes) {
    for (int round = 0; round < 20; ++round) {
        if (round == 0) {
            begin();
        }
        rig.lock();
        for (std::uint32_t i = 1; i < 5; ++i) {
            request("CaptureLevelMeters", static_cast<std::uint32_t>(round) * 5 + i);
        }
        rig.unlock();
    }
    rig.lock();
    letPullsPass();
}

}  // namespace
}  // namespace korva::test
