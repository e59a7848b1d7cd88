// How an engine starts and stops, and what is measured of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "params/effect_keys.h"
#include "platform/process_clock.h"
#include "tests/engine/effect_test.h"

namespace korva::engine {
namespace {

using test::Lines;

class EngineStart : public test::EffectTest {
protected:
    void lockAtRate(std::uint32_t rate) {
        rig.unlock();
        rig.lock({.rate = rate}, {.rate = rate});
    }
    [[nodiscard]] Lines newCallsOf(const std::string& function) {
        Lines calls = newCalls();
        std::erase_if(calls, [&](const std::string& call) { return !call.starts_with(function + ' '); });
        return calls;
    }
    [[nodiscard]] static std::uint32_t clockMs() {
        return static_cast<std::uint32_t>(platform::processClockMs());
    }
};

TEST_F(EngineStart, WaitsForARate) {
    begin();
    static_cast<void>(newCalls());
    rig.lock({.rate = 0}, {.rate = 0});
    EXPECT_EQ(newCalls(), test::lockCalls(1));
    EXPECT_EQ(rig.core().presetLoadCount.read(), 0U);
}

TEST_F(EngineStart, GivesTheFormatsOfTheLockThatCausesIt) {
    begin();
    rig.lock({.channels = 8, .rate = 44100, .mask = 0x63F}, {.channels = 2, .rate = 44100});
    auto calls = callsOf("Initialize", rig.newRecords());
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(test::textOf(calls[0]), "Initialize #1 8ch 44100 63f, 2ch 44100 3, 0ch 0 0");
    EXPECT_EQ(calls[0].bytes("capture"), std::vector<std::uint8_t>(28));

    rig.unlock();
    rig.lock({.channels = 6, .rate = 96000}, {.channels = 6, .rate = 96000});
    calls = callsOf("Initialize", rig.newRecords());
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].bytes("in"), calls[0].bytes("out"));
    EXPECT_EQ(test::textOf(calls[0]).substr(0, 24), "Initialize #1 6ch 96000 ");
}

TEST_F(EngineStart, GoesOnWithAModuleThatCannotInitialize) {
    rig.recording.answer("initialize=0");
    begin();
    static_cast<void>(newCalls());
    rig.lock();
    EXPECT_EQ(newCalls(),
              test::joined({test::startCalls({.engineId = test::thirdEngine}), test::lockCalls(1)}));
    EXPECT_EQ(play({1.0f, 1.0f}), (std::vector<float>{0.5f, 0.5f}));
}

TEST_F(EngineStart, CountsEachPresetLoad) {
    begin();
    EXPECT_EQ(rig.core().presetLoadCount.read(), 0U);
    rig.lock();
    EXPECT_EQ(rig.core().presetLoadCount.read(), 1U);
    lockAtRate(48000);
    EXPECT_EQ(rig.core().presetLoadCount.read(), 1U);
    lockAtRate(96000);
    EXPECT_EQ(rig.core().presetLoadCount.read(), 2U);
    lockAtRate(0);
    EXPECT_EQ(rig.core().presetLoadCount.read(), 2U);
}

TEST_F(EngineStart, CountsWithoutAnInstanceToo) {
    rig.recording.answer("create=null");
    beginStream();
    EXPECT_EQ(rig.core().presetLoadCount.read(), 1U);
    EXPECT_EQ(play({1.0f, 0.25f}), (std::vector<float>{1.0f, 0.25f}));
    lockAtRate(44100);
    EXPECT_EQ(rig.core().presetLoadCount.read(), 2U);
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(EngineStart, CountsForAnEngineOfNoModuleToo) {
    beginStream({.engineId = test::unknownEngine});
    EXPECT_EQ(rig.core().presetLoadCount.read(), 1U);
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(EngineStart, TellsWhenThePresetWasLoaded) {
    begin();
    EXPECT_EQ(rig.core().presetLoadStartTimeMs.read(), 0U);
    const std::uint32_t before = clockMs();
    rig.lock();
    EXPECT_GE(rig.core().presetLoadStartTimeMs.read(), before);
    EXPECT_LE(rig.core().presetLoadStartTimeMs.read(), clockMs());
}

TEST_F(EngineStart, TakesAModulesVersionOf4BytesOnly) {
    begin();
    for (const char* const wrong : {"data:-1:-32=010203", "data:-1:-32=01020304,count:-1:-32=5",
                                    "data:-1:-32=01020304,count:-1:-32=3", "count:-1:-32=0"}) {
        rig.recording.answer(wrong);
        rig.lock();
        EXPECT_EQ(rig.core().dspModuleVersion.read(), 0U) << wrong;
        rig.unlock();
    }
    rig.recording.answer("data:-1:-32=01020304");
    rig.lock();
    EXPECT_EQ(rig.core().dspModuleVersion.read(), 0x04030201U);
}

TEST_F(EngineStart, KeepsTheVersionThatAModuleDoesNotTellAgain) {
    rig.recording.answer("data:-1:-32=01020304");
    beginStream();
    rig.recording.answer("");
    lockAtRate(96000);
    EXPECT_EQ(rig.core().dspModuleVersion.read(), 0x04030201U);
}

TEST_F(EngineStart, AsksTheVersionWithoutALockToo) {
    beginStream();
    rig.unlock();
    rig.recording.answer("data:-1:-32=07000000");
    rig.core().engineAllowed.set(false);
    rig.core().engineAllowed.set(true);
    EXPECT_EQ(rig.core().dspModuleVersion.read(), 7U);
}

TEST_F(EngineStart, TakesACountOfParameterBytesOf12BytesOnly) {
    begin();
    for (const char* const wrong : {"data:-1:-43=0100000002000000030000", "count:-1:-43=0",
                                    "data:-1:-43=010000000200000003000000,count:-1:-43=13"}) {
        rig.recording.answer(wrong);
        rig.lock();
        EXPECT_EQ(rig.core().presetLoadParamBytesReceivedByDsp.read(), services::ByteCount{}) << wrong;
        lockAtRate(0);
        rig.unlock();
    }
    rig.recording.answer("data:-1:-43=010000000200000003000000");
    const std::uint32_t before = clockMs();
    rig.lock();
    const services::ByteCount count = rig.core().presetLoadParamBytesReceivedByDsp.read();
    EXPECT_EQ(count, (services::ByteCount{1, 2, 3, count.captureClock}));
    EXPECT_GE(count.captureClock, before);
    EXPECT_LE(count.captureClock, clockMs());
}

TEST_F(EngineStart, TellsTheDisabledFlagAsItIs) {
    begin();
    rig.core().sysFxDisabled.set(true);
    static_cast<void>(newCalls());
    rig.lock();
    const Lines calls = newCalls();
    EXPECT_EQ(std::ranges::count(calls, "SetParameter #1 -1:-18 01"), 1);
    // The catalogue's default goes first.
    EXPECT_LT(std::ranges::find(calls, "SetParameter #1 -1:-18 00"),
              std::ranges::find(calls, "SetParameter #1 -1:-18 01"));
}

TEST_F(EngineStart, TellsEachChangeOfTheDisabledFlagUntilItStops) {
    begin();
    rig.core().sysFxDisabled.set(true);
    rig.core().sysFxDisabled.set(false);
    EXPECT_EQ(newCallsOf("SetParameter"), Lines{});
    rig.lock();
    static_cast<void>(newCalls());
    rig.core().sysFxDisabled.set(true);
    rig.core().sysFxDisabled.set(true);
    rig.unlock();
    rig.core().sysFxDisabled.set(false);
    EXPECT_EQ(newCalls(), (Lines{"SetParameter #1 -1:-18 01", "SetParameter #1 -1:-18 00"}));
    rig.lock({.rate = 0}, {.rate = 0});
    rig.core().sysFxDisabled.set(true);
    EXPECT_EQ(newCallsOf("SetParameter"), Lines{});
}

TEST_F(EngineStart, IsUndoneByALockWithoutARate) {
    rig.device->volume = framework::create<test::FakeVolume>();
    beginStream();
    lockAtRate(0);
    EXPECT_EQ(newCalls(), test::joined({{"Uninitialize #1"}, test::lockCalls(1)}));
    setLayer(-1, -39, &params::Parameter::OverrideTop, std::vector<std::byte>(3));
    rig.core().masterVolumeDb.set(-3.0f);
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(EngineStart, OfAStoppedEngineNothingIsHeard) {
    beginStream();
    EXPECT_EQ(play({1.0f, 1.0f}), (std::vector<float>{0.5f, 0.5f}));
    rig.core().engineAllowed.set(false);
    EXPECT_EQ(play({1.0f, 1.0f}), (std::vector<float>{1.0f, 1.0f}));
    rig.core().engineAllowed.set(true);
    EXPECT_EQ(play({1.0f, 1.0f}), (std::vector<float>{0.5f, 0.5f}));
}

TEST_F(EngineStart, WakesTheModuleWhereClientsAreThereAlready) {
    rig.setTexts(params::clientListKey, {"one"});
    begin();
    EXPECT_EQ(newCallsOf("WakeUp"), Lines{"WakeUp #1"});
}

TEST_F(EngineStart, WakesTheModuleOfEveryBuild) {
    rig.setTexts(params::clientListKey, {"one"});
    begin();
    static_cast<void>(newCalls());
    rig.core().engineAllowed.set(false);
    rig.core().engineAllowed.set(true);
    EXPECT_EQ(newCalls(), Lines{"WakeUp #1"});
}

TEST_F(EngineStart, WakesTheModuleWhenClientsComeAndSaysNothingWhenTheyGo) {
    begin();
    EXPECT_EQ(newCallsOf("WakeUp"), Lines{});
    rig.core().hasClientList.set(true);
    EXPECT_EQ(newCalls(), Lines{"WakeUp #1"});
    rig.core().hasClientList.set(true);
    rig.core().hasClientList.set(false);
    EXPECT_EQ(newCalls(), Lines{});
    rig.core().hasClientList.set(true);
    EXPECT_EQ(newCalls(), Lines{"WakeUp #1"});
}

TEST_F(EngineStart, WakesNothingWithoutAnEngine) {
    rig.begin();
    rig.core().hasClientList.set(true);
    rig.lock();
    EXPECT_EQ(newCalls(), Lines{});
}

}  // namespace
}  // namespace korva::engine
