// All that a module is told in the life of an effect, call by call.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/engine/block_turns.h"
#include "tests/engine/effect_test.h"
#include "tests/support/sounding_thread.h"

namespace korva::engine {
namespace {

using test::joined;
using test::Lines;
using test::lockCalls;
using test::startCalls;

constexpr std::uint32_t rate = 48000;
constexpr test::StreamFormat surround = {.channels = 6, .rate = rate, .mask = 0x60F};

class CallLog : public test::EffectTest {
protected:
    /// What the module was last told of a block: both counts, the frames and what is reserved.
    [[nodiscard]] std::vector<std::uint8_t> lastBlock() const {
        const auto calls = callsOf("process", rig.recording.calls());
        if (calls.empty()) {
            return {};
        }
        const auto bytes = calls.back().bytes("block").value();
        return {bytes.begin() + 8, bytes.end()};
    }
};

TEST_F(CallLog, AFirstLockOfTheFirstEngineSends386Parameters) {
    begin({.engineId = test::firstEngine});
    EXPECT_EQ(newCalls(), (Lines{"Load TANMER64", "Create #1"}));
    rig.lock();
    EXPECT_EQ(newCalls(), joined({startCalls({.engineId = test::firstEngine}), lockCalls(1)}));
    EXPECT_EQ(test::defaultParameters(test::firstEngine, 1).size(), 386U);
}

TEST_F(CallLog, AFirstLockOfTheThirdEngineSends48Parameters) {
    begin();
    EXPECT_EQ(newCalls(), (Lines{"Load PELLUX64", "Create #1"}));
    rig.lock();
    EXPECT_EQ(newCalls(), joined({startCalls({.engineId = test::thirdEngine}), lockCalls(1)}));
    EXPECT_EQ(test::defaultParameters(test::thirdEngine, 1).size(), 48U);
}

// It has no module that could tell; what would be sent are the parameters that have bytes.
TEST_F(CallLog, AFirstLockOfTheSecondEngineHas67ParametersToSend) {
    begin({.engineId = test::secondEngine});
    rig.lock();
    EXPECT_EQ(newCalls(), Lines{});
    std::size_t withBytes = 0;
    rig.on([&] {
        ASSERT_TRUE(rig.core().chunkReaders.value());
        for (const auto& reader : *rig.core().chunkReaders.value()) {
            withBytes += static_cast<std::size_t>(std::ranges::count_if(
                reader->parameters(),
                [](const params::Parameter* parameter) { return !parameter->effective.value().empty(); }));
        }
    });
    EXPECT_EQ(withBytes, 67U);
    EXPECT_EQ(test::defaultParameters(test::secondEngine, 1).size(), 67U);
    EXPECT_EQ(rig.core().presetLoadCount.read(), 1U);
}

TEST_F(CallLog, TheVolumeOfAnActiveDeviceComesLastOfAStartAndAfterItsDefault) {
    rig.device->volume = framework::create<test::FakeVolume>();
    begin({.engineId = test::firstEngine});
    static_cast<void>(newCalls());
    rig.lock();
    const Lines calls = newCalls();
    EXPECT_EQ(calls, joined({startCalls({.engineId = test::firstEngine, .volumeDb = 0.0f}), lockCalls(1)}));
    EXPECT_EQ(std::ranges::count(calls, "SetParameter #1 4:24 00000000"), 2);
}

TEST_F(CallLog, AnEngineWithoutABankForTheVolumeGetsItToo) {
    rig.device->volume = framework::create<test::FakeVolume>();
    begin();
    static_cast<void>(newCalls());
    rig.lock();
    EXPECT_EQ(newCalls(),
              joined({startCalls({.engineId = test::thirdEngine, .volumeDb = 0.0f}), lockCalls(1)}));
}

TEST_F(CallLog, TheDisabledFlagIsSentTwiceInAStart) {
    beginStream();
    rig.unlock();
    rig.lock({.rate = 44100}, {.rate = 44100});
    const Lines calls = newCalls();
    EXPECT_EQ(std::ranges::count(calls, "SetParameter #1 -1:-18 00"), 2);
}

TEST_F(CallLog, ParametersGoByPriorityThenSignedBankThenNumber) {
    begin({.engineId = test::firstEngine});
    static_cast<void>(newCalls());
    rig.lock();
    const Lines calls = newCalls();
    const auto place = [&](const std::string& start) {
        return std::ranges::find_if(calls, [&](const std::string& call) { return call.starts_with(start); }) -
               calls.begin();
    };
    EXPECT_EQ(place("SetParameter #1 -1:-39 "), 4);
    EXPECT_LT(place("SetParameter #1 -1:-1 "), place("SetParameter #1 0:-9 "));
    EXPECT_LT(place("SetParameter #1 5:8 "), place("SetParameter #1 -1:-40 "));
    EXPECT_LT(place("SetParameter #1 -1:-40 "), place("SetParameter #1 0:0 "));
    EXPECT_LT(place("SetParameter #1 5:142 "), place("SetParameter #1 5:130 "));
}

TEST_F(CallLog, ASecondLockAtTheRateTellsOfOtherChannelsByTheBlocksAlone) {
    beginStream();
    rig.unlock();
    rig.lock(surround);
    EXPECT_EQ(newCalls(), lockCalls(1));
    rig.play(std::vector<float>(6 * 480, 0.5f));
    EXPECT_EQ(lastBlock(), (std::vector<std::uint8_t>{6, 0, 0, 0, 2, 0, 0, 0, 0xE0, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(rig.core().presetLoadCount.read(), 1U);
}

TEST_F(CallLog, ALockAtAnotherRateStopsAndStartsTheEngine) {
    beginStream();
    rig.unlock();
    rig.lock({.channels = 6, .rate = 96000, .mask = 0x60F}, {.rate = 96000});
    EXPECT_EQ(newCalls(),
              joined({{"Uninitialize #1"},
                      startCalls({.engineId = test::thirdEngine, .formats = "6ch 96000 60f, 2ch 96000 3"}),
                      lockCalls(1)}));
}

TEST_F(CallLog, AnUnlockSaysNothing) {
    beginStream();
    rig.unlock();
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(CallLog, ALockWhileLockedSaysNothing) {
    beginStream();
    rig.lock({.rate = 96000}, {.rate = 96000});
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(CallLog, ACloseWhileLockedEndsTheInstance) {
    beginStream();
    rig.close();
    EXPECT_EQ(newCalls(), (Lines{"Uninitialize #1", "Free #1", "Unload PELLUX64"}));
}

TEST_F(CallLog, ACloseWithoutAStreamFreesAlone) {
    begin();
    static_cast<void>(newCalls());
    rig.close();
    EXPECT_EQ(newCalls(), (Lines{"Free #1", "Unload PELLUX64"}));
}

TEST_F(CallLog, ARebuildWithAnEqualDocumentKeepsTheInstance) {
    beginStream();
    rig.core().engineAllowed.set(false);
    EXPECT_EQ(newCalls(), Lines{"Uninitialize #1"});
    rig.core().engineAllowed.set(true);
    EXPECT_EQ(newCalls(), startCalls({.engineId = test::thirdEngine}));
    EXPECT_EQ(rig.core().presetLoadCount.read(), 2U);
}

TEST_F(CallLog, HardwareThatIsThereStaysForTheStream) {
    rig.recording.answer("hardware=1");
    begin({.modeFlags = 1, .engineId = test::firstEngine});
    EXPECT_EQ(newCalls(), (Lines{"Load DRIVOL64", "Create #1", "isHardwareAvailable #1 1"}));
    rig.lock();
    EXPECT_EQ(newCalls(), joined({startCalls({.engineId = test::firstEngine}), lockCalls(1)}));
    EXPECT_TRUE(rig.core().realtime().hardwareMode.get());
}

TEST_F(CallLog, HardwareThatIsNotThereGoesBeforeTheFloatModuleComes) {
    begin({.modeFlags = 1, .engineId = test::firstEngine});
    EXPECT_EQ(newCalls(), (Lines{"Load DRIVOL64", "Create #1", "isHardwareAvailable #1 0", "Free #1",
                                 "Unload DRIVOL64", "Load TANMER64", "Create #2"}));
    rig.lock();
    EXPECT_EQ(newCalls(), joined({startCalls({.engineId = test::firstEngine, .instance = 2}), lockCalls(2)}));
    EXPECT_FALSE(rig.core().realtime().hardwareMode.get());
}

TEST_F(CallLog, AMissingHardwareModuleLeavesTheFloatOne) {
    for (const auto& file : std::filesystem::directory_iterator(rig.modules.path())) {
        if (file.path().stem() == "DRIVOL64") {
            std::filesystem::remove(file.path());
            break;
        }
    }
    begin({.modeFlags = 1, .engineId = test::firstEngine});
    EXPECT_EQ(newCalls(), (Lines{"Load TANMER64", "Create #1"}));
    rig.lock();
    EXPECT_EQ(newCalls(), joined({startCalls({.engineId = test::firstEngine}), lockCalls(1)}));
}

TEST_F(CallLog, AChangeOfIdentityBringsTheNextModuleUpBeforeTheLastOneGoesAndSoundNeverStops) {
    rig.recording.noteSamples(0);
    beginStream();
    test::SoundingThread sound(rig.core().realtime());
    ASSERT_TRUE(sound.playMore(20));
    rig.install({.fxId = test::effectGuid(2), .engineId = test::firstEngine});
    rig.on([&] { rig.core().onEffectsProperty(rig.fxIdKey()); });
    ASSERT_TRUE(sound.playMore(20));
    const test::PlayedBuffers played = sound.finish();

    EXPECT_EQ(newCalls(),
              joined({{"Uninitialize #1", "Load TANMER64", "Create #2", "Free #1", "Unload PELLUX64"},
                      startCalls({.engineId = test::firstEngine, .instance = 2})}));
    EXPECT_EQ(played.wrong, 0);
    EXPECT_GE(played.processed, 40);
    EXPECT_EQ(callsOf("process", rig.recording.calls()).size(), static_cast<std::size_t>(played.processed));
    EXPECT_EQ(test::blocksOutOfTurn(rig.recording.calls()), 0);
}

TEST_F(CallLog, AChangeToAnotherPresetOfAnEngineMakesOneInstanceOfTheLoadedModule) {
    beginStream();
    rig.install({.fxId = test::effectGuid(2), .presetVersion = 2, .engineId = test::thirdEngine});
    rig.on([&] { rig.core().onEffectsProperty(rig.fxIdKey()); });
    EXPECT_EQ(newCalls(), joined({{"Uninitialize #1", "Create #2", "Free #1"},
                                  startCalls({.engineId = test::thirdEngine, .instance = 2})}));
}

TEST_F(CallLog, AModuleIsToldWhatItIs) {
    begin();
    const auto calls = callsOf("Create", rig.newRecords());
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].text("text"),
              R"({"EngineId":"{c9f475bc-13e4-6150-ae88-790995afc7c1}","OutEndpointId":")" +
                  rig.endpoint.id() +
                  R"(","PlatformModuleNames":["PELLUX64"],"PlatformName":"Float","PresetVersion":1})");
}

}  // namespace
}  // namespace korva::engine
