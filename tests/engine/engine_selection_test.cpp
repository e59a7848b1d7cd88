// Which engine is built, when, and what becomes of the one before.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "params/effect_keys.h"
#include "platform/module_library.h"
#include "tests/support/effect_rig.h"

namespace korva::engine {
namespace {

using test::effectGuid;
using test::EffectRig;
using test::EngineChoice;

using Lines = std::vector<std::string>;

constexpr const char* firstText = "{14a6de13-1380-0e52-aee0-8803e93e40c8}";
constexpr const char* thirdText = "{c9f475bc-13e4-6150-ae88-790995afc7c1}";

std::string floatDocument(const EffectRig& rig, const char* engine, const char* module, int version = 1) {
    return std::string(R"({"EngineId":")") + engine + R"(","OutEndpointId":")" + rig.endpoint.id() +
           R"(","PlatformModuleNames":[")" + module + R"("],"PlatformName":"Float","PresetVersion":)" +
           std::to_string(version) + "}";
}

std::string hardwareDocument(const EffectRig& rig, const char* engine, const char* module) {
    return std::string(R"({"EngineId":")") + engine + R"(","Hardware":true,"OutEndpointId":")" +
           rig.endpoint.id() + R"(","PlatformModuleNames":[")" + module +
           R"("],"PlatformName":"iSST","PresetVersion":1})";
}

/// Has an engine built anew, whatever the settings.
void rebuild(EffectRig& rig) {
    rig.core().engineAllowed.set(false);
    rig.core().engineAllowed.set(true);
}

bool hardwareMode(EffectRig& rig) {
    bool is = false;
    rig.on([&] { is = rig.core().realtime().hardwareMode.get(); });
    return is;
}

void removeModule(const EffectRig& rig, const char* name) {
    ASSERT_TRUE(std::filesystem::remove(platform::libraryPath(rig.modules.path(), name)));
}

std::string platformOf(EffectRig& rig) {
    const framework::Held<DspEngine> engine = rig.core().dspEngine.read();
    return engine ? engine->platformName() : "none";
}

// Hardware.

TEST(EngineSelection, HardwareThatIsThereIsTaken) {
    EffectRig rig("hardware=1");
    rig.install({.modeFlags = 1});
    rig.begin();
    EXPECT_EQ(rig.newLifeCalls(),
              (Lines{"Load DRIVOL64", "Create DRIVOL64 1", "isHardwareAvailable DRIVOL64 1"}));
    EXPECT_EQ(rig.documents(), Lines{hardwareDocument(rig, firstText, "DRIVOL64")});
    EXPECT_TRUE(hardwareMode(rig));
    EXPECT_EQ(platformOf(rig), "iSST");
}

TEST(EngineSelection, HardwareThatIsNotThereGoesBeforeTheFloatModuleComes) {
    EffectRig rig("hardware=0");
    rig.install({.modeFlags = 1});
    rig.begin();
    EXPECT_EQ(rig.newLifeCalls(),
              (Lines{"Load DRIVOL64", "Create DRIVOL64 1", "isHardwareAvailable DRIVOL64 1",
                     "Free DRIVOL64 1", "Unload DRIVOL64", "Load TANMER64", "Create TANMER64 2"}));
    EXPECT_EQ(rig.documents(), (Lines{hardwareDocument(rig, firstText, "DRIVOL64"),
                                      floatDocument(rig, firstText, "TANMER64")}));
    EXPECT_FALSE(hardwareMode(rig));
    EXPECT_EQ(platformOf(rig), "Float");
}

TEST(EngineSelection, AnyAnswerButZeroIsHardware) {
    EffectRig rig("hardware=0x80000000");
    rig.install({.modeFlags = 1});
    rig.begin();
    EXPECT_EQ(platformOf(rig), "iSST");
}

TEST(EngineSelection, AMissingHardwareModuleFallsBack) {
    EffectRig rig("hardware=1");
    removeModule(rig, "DRIVOL64");
    rig.install({.modeFlags = 1});
    rig.begin();
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Load TANMER64", "Create TANMER64 1"}));
    EXPECT_FALSE(hardwareMode(rig));
}

TEST(EngineSelection, AHardwareModuleThatMakesNoInstanceFallsBack) {
    EffectRig rig("hardware=1,DRIVOL64.create=null");
    rig.install({.modeFlags = 1});
    rig.begin();
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Load DRIVOL64", "Create DRIVOL64", "Unload DRIVOL64",
                                         "Load TANMER64", "Create TANMER64 1"}));
    EXPECT_FALSE(hardwareMode(rig));
}

TEST(EngineSelection, AnEngineWithoutAHardwareModuleLoadsItsOtherOne) {
    EffectRig rig("hardware=1");
    rig.install({.modeFlags = 1, .engineId = test::thirdEngine});
    rig.begin();
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Load PELLUX64", "Create PELLUX64 1"}));
    EXPECT_EQ(rig.documents(), Lines{floatDocument(rig, thirdText, "PELLUX64")});
    EXPECT_FALSE(hardwareMode(rig));
}

TEST(EngineSelection, AnUnknownEngineIsOneWithoutAModule) {
    for (const std::uint32_t flags : {0U, 1U}) {
        EffectRig rig("hardware=1");
        rig.install({.modeFlags = flags, .engineId = test::unknownEngine});
        rig.begin();
        EXPECT_EQ(rig.newLifeCalls(), Lines{});
        EXPECT_EQ(platformOf(rig), "Float");
        EXPECT_FALSE(rig.core().dspEngine.read()->hasInstance());
    }
}

TEST(EngineSelection, OfStoredFlagsTheFirstCounts) {
    for (const auto& [flags, platform] :
         {std::pair{0U, "Float"}, {1U, "iSST"}, {2U, "Float"}, {3U, "iSST"}, {0xFFFFFFFEU, "Float"}}) {
        EffectRig rig("hardware=1");
        rig.install({.modeFlags = flags});
        rig.begin();
        EXPECT_EQ(platformOf(rig), platform) << flags;
        ASSERT_EQ(rig.documents().size(), 1U);
        EXPECT_EQ(rig.documents()[0].find("Simulation"), std::string::npos) << flags;
    }
}

TEST(EngineSelection, SimulationIsToldToHardwareByWhoeverSetsIt) {
    EffectRig rig("hardware=0");
    rig.install({});
    rig.begin();
    rig.core().modeFlags.set(3);
    const Lines documents = rig.documents();
    ASSERT_EQ(documents.size(), 2U) << "the float engine stayed";
    EXPECT_NE(documents[1].find(R"("Simulation":true)"), std::string::npos);
    rig.core().modeFlags.set(2);
    EXPECT_EQ(rig.documents().size(), 2U);
}

TEST(EngineSelection, WhileAFloatEngineRunsEachRebuildTriesTheHardwareAndKeepsIt) {
    EffectRig rig("hardware=0");
    rig.install({.modeFlags = 1});
    rig.begin();
    static_cast<void>(rig.newLifeCalls());
    for (int instance = 3; instance < 6; ++instance) {
        rebuild(rig);
        const std::string number = " " + std::to_string(instance);
        EXPECT_EQ(rig.newLifeCalls(),
                  (Lines{"Load DRIVOL64", "Create DRIVOL64" + number, "isHardwareAvailable DRIVOL64" + number,
                         "Free DRIVOL64" + number, "Unload DRIVOL64"}));
    }
    EXPECT_EQ(platformOf(rig), "Float");
}

TEST(EngineSelection, HardwareThatIsKeptIsTriedAgain) {
    EffectRig rig("hardware=1");
    rig.install({.modeFlags = 1});
    rig.begin();
    static_cast<void>(rig.newLifeCalls());
    rebuild(rig);
    EXPECT_EQ(rig.newLifeCalls(), Lines{"isHardwareAvailable DRIVOL64 1"});
    EXPECT_TRUE(hardwareMode(rig));
}

TEST(EngineSelection, HardwareComesAndGoesFromBuildToBuild) {
    EffectRig rig("hardware=1");
    rig.install({.modeFlags = 1});
    rig.begin();
    static_cast<void>(rig.newLifeCalls());
    rig.recording.answer("hardware=0");
    rebuild(rig);
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"isHardwareAvailable DRIVOL64 1", "Load TANMER64",
                                         "Create TANMER64 2", "Free DRIVOL64 1", "Unload DRIVOL64"}))
        << "what ran is up until the next one is";
    EXPECT_FALSE(hardwareMode(rig));
    rig.recording.answer("hardware=1");
    rebuild(rig);
    EXPECT_EQ(rig.newLifeCalls(),
              (Lines{"Load DRIVOL64", "Create DRIVOL64 3", "isHardwareAvailable DRIVOL64 3",
                     "Free TANMER64 2", "Unload TANMER64"}));
    EXPECT_TRUE(hardwareMode(rig));
}

// Rebuilds.

TEST(EngineSelection, ARebuildWithAnEqualDocumentKeepsTheInstance) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    static_cast<void>(rig.newLifeCalls());
    rebuild(rig);
    rig.core().modeFlags.set(4);
    rig.core().modeFlags.set(0);
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
}

TEST(EngineSelection, AnEngineThatIsKeptWhileLockedIsStoppedAndStarted) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    rig.lock();
    static_cast<void>(rig.newLifeCalls());
    rig.core().modeFlags.set(4);
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Uninitialize TANMER64 1", "Initialize TANMER64 1"}));
    rig.unlock();
    rig.core().modeFlags.set(0);
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Uninitialize TANMER64 1", "Initialize TANMER64 1"}))
        << "the rate of the last stream stays";
}

TEST(EngineSelection, AValueThatIsSetToWhatItIsBuildsNothing) {
    EffectRig rig("hardware=0");
    rig.install({.modeFlags = 1});
    rig.begin();
    rig.lock();
    static_cast<void>(rig.newLifeCalls());
    rig.core().modeFlags.set(1);
    rig.core().presetVersion.set(1);
    rig.core().engineAllowed.set(true);
    rig.begin();
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
}

TEST(EngineSelection, AnotherVersionIsAnotherEngine) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    static_cast<void>(rig.newLifeCalls());
    rig.core().presetVersion.set(2);
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Create TANMER64 2", "Free TANMER64 1"}));
    EXPECT_EQ(rig.documents(), (Lines{floatDocument(rig, firstText, "TANMER64", 1),
                                      floatDocument(rig, firstText, "TANMER64", 2)}));
}

TEST(EngineSelection, AnotherEffectIsOneNewEngineAndTheOldOneGoesAfterIt) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    rig.lock();
    static_cast<void>(rig.newLifeCalls());
    // The watchers of the set tell of it, too: the second call finds it done.
    rig.install({.fxId = effectGuid(2), .presetVersion = 7, .engineId = test::thirdEngine});
    rig.on([&] { rig.core().onEffectsProperty(rig.fxIdKey()); });
    rig.settle();
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Uninitialize TANMER64 1", "Load PELLUX64", "Create PELLUX64 2",
                                         "Free TANMER64 1", "Unload TANMER64", "Initialize PELLUX64 2"}));
    EXPECT_EQ(rig.documents().back(), floatDocument(rig, thirdText, "PELLUX64", 7));
}

TEST(EngineSelection, AnotherEffectWithEqualSettingsKeepsTheEngine) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    static_cast<void>(rig.newLifeCalls());
    rig.install({.fxId = effectGuid(2)});
    rig.on([&] { rig.core().onEffectsProperty(rig.fxIdKey()); });
    rig.settle();
    EXPECT_TRUE(rig.core().fxId.read() == effectGuid(2));
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
}

TEST(EngineSelection, WhatSelectsAnEngineCountsWithTheNextEffectOnly) {
    using namespace params::effect_property;
    EffectRig rig;
    rig.install({});
    rig.begin();
    static_cast<void>(rig.newLifeCalls());
    rig.setNumber({effectGuid(1), presetVersion}, 9);
    rig.setNumber({effectGuid(1), modeFlags}, 1);
    rig.setText({effectGuid(1), engineId}, thirdText);
    for (const DWORD pid : {presetVersion, modeFlags, engineId}) {
        rig.on([&] { rig.core().onEffectsProperty({effectGuid(1), pid}); });
    }
    rig.settle();
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
    EXPECT_EQ(rig.core().presetVersion.read(), 1U);
    rig.begin("");
    rig.begin();
    EXPECT_EQ(rig.newLifeCalls(),
              (Lines{"Load PELLUX64", "Create PELLUX64 2", "Free TANMER64 1", "Unload TANMER64"}));
    EXPECT_EQ(rig.documents().back(), floatDocument(rig, thirdText, "PELLUX64", 9));
}

// What stops it.

TEST(EngineSelection, WithoutAVersionThereIsNone) {
    EffectRig rig;
    rig.install({.presetVersion = 0});
    rig.begin();
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
    EXPECT_FALSE(rig.core().dspEngine.read());
}

TEST(EngineSelection, AVersionThatGoesStopsTheEngineAndKeepsIt) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    rig.lock();
    static_cast<void>(rig.newLifeCalls());
    rig.core().presetVersion.set(0);
    EXPECT_EQ(rig.newLifeCalls(), Lines{"Uninitialize TANMER64 1"});
    EXPECT_TRUE(rig.core().dspEngine.read());
    EXPECT_EQ(rig.play(std::vector<float>(960, 0.5f)), std::vector<float>(960, 0.5f)) << "the mixer's";
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
    rig.core().presetVersion.set(1);
    EXPECT_EQ(rig.newLifeCalls(), Lines{"Initialize TANMER64 1"});
    EXPECT_EQ(rig.play(std::vector<float>(960, 0.5f)), std::vector<float>(960, 0.25f));
}

TEST(EngineSelection, WithoutPermissionThereIsNone) {
    EffectRig rig;
    rig.install({});
    EXPECT_TRUE(rig.core().engineAllowed.read());
    rig.core().engineAllowed.set(false);
    rig.begin();
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
    EXPECT_FALSE(rig.core().dspEngine.read());
    rig.core().engineAllowed.set(true);
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Load TANMER64", "Create TANMER64 1"}));
}

TEST(EngineSelection, PermissionThatIsTakenStopsTheEngine) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    rig.lock();
    static_cast<void>(rig.newLifeCalls());
    rig.core().engineAllowed.set(false);
    EXPECT_EQ(rig.newLifeCalls(), Lines{"Uninitialize TANMER64 1"});
    rig.core().presetVersion.set(2);
    rig.core().modeFlags.set(4);
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
    rig.core().engineAllowed.set(true);
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Create TANMER64 2", "Free TANMER64 1", "Initialize TANMER64 2"}));
}

TEST(EngineSelection, FlagsOfZeroAreTakenDownLikeAnyOthers) {
    EffectRig rig;
    rig.install({.modeFlags = 0});
    rig.begin();
    rig.lock();
    static_cast<void>(rig.newLifeCalls());
    rig.core().presetVersion.set(0);
    EXPECT_EQ(rig.newLifeCalls(), Lines{"Uninitialize TANMER64 1"});
}

TEST(EngineSelection, WithoutAnEngineIdThereIsNone) {
    for (const char* text : {"", "{00000000-0000-0000-0000-000000000000}", "no identifier"}) {
        EffectRig rig;
        rig.install({});
        rig.setText({effectGuid(1), params::effect_property::engineId}, text);
        rig.begin();
        EXPECT_FALSE(rig.core().dspEngine.read()) << text;
        EXPECT_EQ(rig.core().chunkReaders.read(), nullptr);
        EXPECT_EQ(rig.newLifeCalls(), Lines{});
    }
}

// What is heard: a mono stream of the centre, to stereo.

TEST(EngineSelection, WithoutAnEngineSoundIsMixed) {
    EffectRig rig;
    rig.begin();
    rig.lock({.channels = 1, .mask = 0x4}, {.channels = 2, .mask = 0x3});
    EXPECT_EQ(rig.play(std::vector<float>(480, 0.5f)), std::vector<float>(960, 0.5f));
}

TEST(EngineSelection, AnEngineWithoutAModuleLeavesThePlanesUnmixed) {
    EffectRig rig;
    rig.install({.engineId = test::secondEngine});
    rig.begin();
    rig.lock({.channels = 1, .mask = 0x4}, {.channels = 2, .mask = 0x3});
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
    EXPECT_EQ(rig.play(std::vector<float>(480, 0.5f)), std::vector<float>(960, 0.0f));
}

TEST(EngineSelection, AnEngineWhoseModuleIsMissingIsOneWithoutAModule) {
    EffectRig rig;
    removeModule(rig, "TANMER64");
    rig.install({});
    rig.begin();
    rig.lock({.channels = 1, .mask = 0x4}, {.channels = 2, .mask = 0x3});
    EXPECT_EQ(rig.play(std::vector<float>(480, 0.5f)), std::vector<float>(960, 0.0f));
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
}

TEST(EngineSelection, AModuleThatAppearsIsFoundByAnotherDocumentOnly) {
    EffectRig rig;
    removeModule(rig, "TANMER64");
    rig.install({});
    rig.begin();
    rig.modules.putLibrary(KORVA_RECORDER_MODULE, "TANMER64");
    rebuild(rig);
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
    rig.core().presetVersion.set(2);
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Load TANMER64", "Create TANMER64 1"}));
}

// Shares, and levels that come and go while their values change.

TEST(EngineSelection, TheValueAloneHoldsTheEngine) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    rig.on([&] {
        DspEngine* const engine = rig.core().dspEngine.value().get();
        EXPECT_EQ(engine->closedCounter()->get(), 0U) << "it survives its build";
        EXPECT_EQ(engine->holdClose(), 1) << "there is no other hold";
        engine->close();
        EXPECT_EQ(engine->closedCounter()->get(), 0U);
    });
    rig.core().dspEngine.reset();
    EXPECT_EQ(rig.newLifeCalls(),
              (Lines{"Load TANMER64", "Create TANMER64 1", "Free TANMER64 1", "Unload TANMER64"}));
}

TEST(EngineSelection, AThirdHolderKeepsTheEngineAndTheLastOneFreesItOnce) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    framework::Held<DspEngine> kept = rig.core().dspEngine.read();
    rig.core().presetVersion.set(2);
    EXPECT_EQ(callsOf("Free", rig.recording.calls()).size(), 0U);
    rig.on([&] {
        const framework::Ref<DspEngine> engine = kept.ref();
        kept = nullptr;
        EXPECT_EQ(callsOf("Free", rig.recording.calls()).size(), 1U);
        engine->close();
        engine->close();
    });
    EXPECT_EQ(callsOf("Free", rig.recording.calls()).size(), 1U);
}

/// Sets values from a listener of another one, or of the same.
class Meddler {
public:
    template <class T>
    Meddler(EffectRig& meddled, framework::Observable<T>& value, bool isBefore, std::function<void()> act)
        : rig(meddled), action(std::move(act)) {
        rig.on([&] { value.subscribe(this, isBefore ? &run : nullptr, isBefore ? nullptr : &run); });
        end = [this, &value, isBefore] {
            value.unsubscribe(this, isBefore ? &run : nullptr, isBefore ? nullptr : &run);
        };
    }
    ~Meddler() { rig.on(end); }
    Meddler(const Meddler&) = delete;
    Meddler& operator=(const Meddler&) = delete;

private:
    static void run(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
                    const void*, framework::Reason) {
        auto& self = *static_cast<Meddler*>(context);
        std::exchange(self.action, [] {})();
    }

    EffectRig& rig;
    std::function<void()> action;
    std::function<void()> end;
};

/// An engine that plays, and what it is called afterwards.
class EngineLevels : public testing::Test {
protected:
    EngineLevels() {
        rig.install({});
        rig.begin();
        rig.lock();
        static_cast<void>(rig.newLifeCalls());
    }

    EffectRig rig;
};

TEST_F(EngineLevels, ALevelThatIsAddedWhileItsValueChangesBuildsOnce) {
    EffectCore& core = rig.core();
    core.engineAllowed.set(false);
    static_cast<void>(rig.newLifeCalls());
    // `modeFlags` is committed when the level above it is entered.
    const Meddler meddler(rig, core.modeFlags, true, [&] { core.engineAllowed.set(true); });
    core.modeFlags.set(4);
    EXPECT_EQ(rig.newLifeCalls(), Lines{"Initialize TANMER64 1"});
}

TEST_F(EngineLevels, ALevelThatIsAddedAmongTheAfterFunctionsBuildsOnce) {
    EffectCore& core = rig.core();
    core.engineAllowed.set(false);
    static_cast<void>(rig.newLifeCalls());
    const Meddler meddler(rig, core.modeFlags, false, [&] { core.engineAllowed.set(true); });
    core.modeFlags.set(4);
    EXPECT_EQ(rig.newLifeCalls(), Lines{"Initialize TANMER64 1"});
}

TEST_F(EngineLevels, ALevelThatIsDroppedAmongTheBeforeFunctionsIsTornDownOnce) {
    EffectCore& core = rig.core();
    const Meddler meddler(rig, core.modeFlags, true, [&] { core.engineAllowed.set(false); });
    core.modeFlags.set(4);
    EXPECT_EQ(rig.newLifeCalls(), Lines{"Uninitialize TANMER64 1"});
    EXPECT_EQ(rig.play(std::vector<float>(96, 0.5f)), std::vector<float>(96, 0.5f)) << "none plays";
    core.engineAllowed.set(true);
    EXPECT_EQ(rig.newLifeCalls(), Lines{"Initialize TANMER64 1"});
}

TEST_F(EngineLevels, ALevelThatIsDroppedAmongTheAfterFunctionsIsTornDownAgain) {
    EffectCore& core = rig.core();
    const Meddler meddler(rig, core.modeFlags, false, [&] { core.engineAllowed.set(false); });
    core.modeFlags.set(4);
    EXPECT_EQ(rig.newLifeCalls(),
              (Lines{"Uninitialize TANMER64 1", "Initialize TANMER64 1", "Uninitialize TANMER64 1"}));
    EXPECT_EQ(rig.play(std::vector<float>(96, 0.5f)), std::vector<float>(96, 0.5f)) << "none plays";
}

TEST_F(EngineLevels, ALevelThatIsDroppedByAListenerOfTheEngineStartsNothing) {
    EffectCore& core = rig.core();
    const Meddler meddler(rig, core.dspEngine, false, [&] { core.engineAllowed.set(false); });
    core.presetVersion.set(2);
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Uninitialize TANMER64 1", "Create TANMER64 2", "Free TANMER64 1"}));
    EXPECT_EQ(rig.play(std::vector<float>(96, 0.5f)), std::vector<float>(96, 0.5f)) << "none plays";
}

TEST_F(EngineLevels, AVersionThatComesWhileTheListOfReadersChangesBuildsOnce) {
    EffectCore& core = rig.core();
    core.presetVersion.set(0);
    static_cast<void>(rig.newLifeCalls());
    const Meddler meddler(rig, core.chunkReaders, true, [&] { core.presetVersion.set(1); });
    core.chunkReaders.set(std::make_shared<const ChunkReaders>());
    EXPECT_EQ(rig.newLifeCalls(), Lines{"Initialize TANMER64 1"});
}

TEST_F(EngineLevels, AnotherListOfReadersStopsAndStartsTheSameEngine) {
    rig.core().chunkReaders.set(std::make_shared<const ChunkReaders>());
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Uninitialize TANMER64 1", "Initialize TANMER64 1"}));
    rig.core().chunkReaders.set(nullptr);
    EXPECT_EQ(rig.newLifeCalls(), Lines{"Uninitialize TANMER64 1"});
}

}  // namespace
}  // namespace korva::engine
