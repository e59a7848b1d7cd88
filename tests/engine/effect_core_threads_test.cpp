// The audio thread of an effect beside all that its owner does.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "params/effect_keys.h"
#include "params/effects_store_provider.h"
#include "tests/engine/block_turns.h"
#include "tests/engine/effect_test.h"
#include "tests/support/byte_list.h"
#include "tests/support/held_call.h"
#include "tests/support/sounding_thread.h"

namespace korva::engine {
namespace {

using test::bytes;
using test::EffectRig;
using test::HeldCall;
using test::Lines;
using test::SoundingThread;

/// A stream in which a call of the module is held back while sound goes on.
class HeldModule : public test::EffectTest {
protected:
    /// Begins `change`, which comes to a held call of `function`; gives what became of the buffers that were
    /// played until it was let go.
    test::PlayedBuffers playBeside(const std::string& function,
                                   const std::function<void(EffectCore&)>& change,
                                   const std::string& otherAnswers = {}) {
        rig.recording.noteSamples(0);
        rig.lock();
        const HeldCall held(function);
        rig.recording.answer(held.answer() + otherAnswers);
        std::thread changing([&] { rig.on([&] { change(rig.core()); }); });
        EXPECT_TRUE(held.isReached());
        SoundingThread sound(rig.core().realtime());
        EXPECT_TRUE(sound.playMore(50));
        const test::PlayedBuffers played = sound.finish();
        held.release();
        changing.join();
        EXPECT_EQ(played.wrong, 0);
        EXPECT_EQ(test::blocksOutOfTurn(rig.recording.calls()), 0);
        return played;
    }
};

TEST_F(HeldModule, ThatIsSlowToTakeAParameterIsHeardMeanwhile) {
    begin();
    const auto played = playBeside("SetParameter", [](EffectCore& core) { core.sysFxDisabled.set(true); });
    EXPECT_GE(played.processed, 50);
    EXPECT_EQ(played.folded, 0);
}

TEST_F(HeldModule, ThatIsSlowToWakeIsHeardMeanwhile) {
    begin();
    const auto played = playBeside("WakeUp", [](EffectCore& core) { core.hasClientList.set(true); });
    EXPECT_GE(played.processed, 50);
}

TEST_F(HeldModule, IsHeardNoMoreAsItBeginsToStop) {
    begin();
    const auto played = playBeside("Uninitialize", [](EffectCore& core) { core.engineAllowed.set(false); });
    EXPECT_GE(played.folded, 50);
    EXPECT_EQ(played.processed, 0);
}

TEST_F(HeldModule, IsNotHeardBeforeItHasItsParameters) {
    begin();
    const auto played = playBeside("SetParameter", [](EffectCore& core) {
        core.engineAllowed.set(false);
        core.engineAllowed.set(true);
    });
    EXPECT_GE(played.folded, 50);
    EXPECT_EQ(played.processed, 0);
}

TEST_F(HeldModule, ThatIsSlowToInitializeIsNotHeardYet) {
    begin();
    const auto played = playBeside("Initialize", [](EffectCore& core) {
        core.engineAllowed.set(false);
        core.engineAllowed.set(true);
    });
    EXPECT_GE(played.folded, 50);
    EXPECT_EQ(played.processed, 0);
}

TEST_F(HeldModule, ThatIsSlowToFindItsHardwareBlocksNoSound) {
    begin({.engineId = test::firstEngine});
    const auto played = playBeside(
        "isHardwareAvailable", [](EffectCore& core) { core.modeFlags.set(1); }, ",hardware=1");
    EXPECT_GE(played.folded, 50);
    EXPECT_EQ(play({1.0f, 1.0f}), (std::vector<float>{0.5f, 0.5f}));
}

TEST_F(HeldModule, ThatIsSlowToEndBlocksNoSound) {
    begin({.engineId = test::firstEngine});
    const auto played = playBeside("Free", [](EffectCore& core) { core.presetVersion.set(9); });
    EXPECT_GE(played.folded, 50);
}

/// Everything that may happen while sound runs, round by round, with two effects to choose from.
class SoundingEffect : public test::EffectTest {
protected:
    SoundingEffect() {
        rig.recording.noteSamples(0);
        rig.device->volume = framework::create<test::FakeVolume>();
        rig.install({.fxId = test::effectGuid(2), .engineId = test::firstEngine});
        begin();
    }

    void changeParameters(std::uint8_t round) {
        setLayer(-1, -39, &params::Parameter::PresetValue, bytes(round));
        setLayer(-1, -27, &params::Parameter::OverrideTop, bytes(0, 0, round, 0x3F));
        rig.core().sysFxDisabled.set(round % 2 == 0);
        rig.core().masterVolumeDb.set(-static_cast<float>(round));
        rig.core().hasClientList.set(round % 2 == 0);
    }
    void notify() {
        rig.on([&] {
            rig.core().onEffectsProperty({rig.core().fxId.value(), params::effect_property::firstChunk});
            rig.core().onEffectsProperty(params::hardwarePulseKey);
            rig.core().onEffectsProperty(params::clientListKey);
        });
    }
    void rebuild(std::uint8_t round) {
        rig.core().engineAllowed.set(false);
        rig.core().engineAllowed.set(true);
        rig.core().fxId.set(test::effectGuid(round % 2 == 0 ? 1 : 2));
        rig.core().endpointVolume.set(framework::create<test::FakeVolume>());
    }
    /// Instances that had a call after the end of their Free; numbers are never given twice.
    [[nodiscard]] static int callsAfterFree(const std::vector<test::RecordedCall>& calls) {
        std::map<int, std::int64_t> ends;
        int late = 0;
        for (const test::RecordedCall& call : calls) {
            if (call.function == "Free") {
                ends[call.instance] = call.beginNs;
            }
        }
        for (const test::RecordedCall& call : calls) {
            const auto end = ends.find(call.instance);
            late += end != ends.end() && call.endNs > end->second && call.function != "Free" ? 1 : 0;
        }
        return late;
    }
};

TEST_F(SoundingEffect, PlaysOnWhateverItsOwnerDoes) {
    constexpr std::uint8_t rounds = 12;
    int processed = 0;
    for (std::uint8_t round = 1; round <= rounds; ++round) {
        const std::uint32_t rate = round % 3 == 0 ? 44100 : 48000;
        rig.lock({.rate = rate}, {.rate = rate});
        SoundingThread sound(rig.core().realtime());
        changeParameters(round);
        notify();
        rebuild(round);
        EXPECT_TRUE(sound.playMore(5));
        changeParameters(static_cast<std::uint8_t>(round + 100));
        const test::PlayedBuffers played = sound.finish();
        EXPECT_EQ(played.wrong, 0) << "round " << int{round};
        processed += played.processed;
        rig.unlock();
    }
    rig.close();

    const auto calls = rig.recording.calls();
    EXPECT_GE(processed, 5 * rounds);
    EXPECT_EQ(test::blocksOutOfTurn(calls), 0);
    EXPECT_EQ(callsAfterFree(calls), 0);
    EXPECT_EQ(callsOf("Initialize", calls).size(), callsOf("Uninitialize", calls).size());
    EXPECT_EQ(callsOf("Create", calls).size(), callsOf("Free", calls).size());
    EXPECT_GE(callsOf("Create", calls).size(), std::size_t{rounds});
}

TEST_F(SoundingEffect, PlaysOnWhileSeveralThreadsChangeIt) {
    constexpr std::uint8_t rounds = 10;
    rig.lock();
    SoundingThread sound(rig.core().realtime());
    std::thread changing([&] {
        for (std::uint8_t round = 1; round <= rounds; ++round) {
            changeParameters(round);
        }
    });
    std::thread notifying([&] {
        for (std::uint8_t round = 1; round <= rounds; ++round) {
            notify();
        }
    });
    for (std::uint8_t round = 1; round <= rounds; ++round) {
        rebuild(round);
    }
    changing.join();
    notifying.join();
    EXPECT_TRUE(sound.playMore(5));
    EXPECT_EQ(sound.finish().wrong, 0);
    rig.close();

    const auto calls = rig.recording.calls();
    EXPECT_EQ(test::blocksOutOfTurn(calls), 0);
    EXPECT_EQ(callsAfterFree(calls), 0);
}

// The thread that writes is another program's: what it installs comes by the registry.
TEST_F(SoundingEffect, PlaysOnWhilePresetsAreInstalled) {
    rig.lock();
    SoundingThread sound(rig.core().realtime());
    const PROPERTYKEY chunk{test::effectGuid(1), params::effect_property::firstChunk};
    for (int value = 1; value <= 20; ++value) {
        rig.setBlob(chunk, bytes(0, 0, 0, 0, value));
        EXPECT_TRUE(test::waitUntil([&] { return effective(-1, -39) == test::sharedBytes(value); }));
    }
    EXPECT_EQ(sound.finish().wrong, 0);
    Lines sent = newCalls();
    std::erase_if(sent, [](const std::string& call) { return !call.starts_with("SetParameter #1 -1:-39 "); });
    EXPECT_EQ(sent.size(), 21U) << "the default, and each value once";
}

}  // namespace
}  // namespace korva::engine
