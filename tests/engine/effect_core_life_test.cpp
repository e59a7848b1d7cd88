// How a core begins and how it ends.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "params/effect_keys.h"
#include "params/property_set_path.h"
#include "platform/property_key.h"
#include "platform/registry.h"
#include "services/instance_number_pool.h"
#include "tests/support/effect_rig.h"
#include "tests/support/thread_count.h"
#include "tests/support/value_log.h"
#include "tests/support/wait_until.h"

namespace korva::engine {
namespace {

using framework::create;
using framework::Held;
using framework::Ref;
using test::effectGuid;
using test::EffectRig;
using test::RigOptions;
using test::ValueLog;

using Lines = std::vector<std::string>;

// As it is made.

TEST(EffectCoreMade, TellsItsEffectByTextAndKey) {
    const struct {
        std::uint32_t type;
        const char* text;
        DWORD pid;
    } kinds[] = {{1, "SFX", 3}, {2, "MFX", 4}, {3, "EFX", 5}};
    for (const auto& kind : kinds) {
        EffectRig rig(RigOptions{.effectType = kind.type});
        EXPECT_EQ(rig.core().effectType, kind.type);
        EXPECT_EQ(rig.core().effectTypeText, kind.text);
        EXPECT_EQ(platform::KeyToText(rig.core().fxIdKey),
                  "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}," + std::to_string(kind.pid));
    }
}

TEST(EffectCoreMade, OfAnyOtherNumberIsNoEffect) {
    for (const std::uint32_t type : {0U, 4U, 5U, 0x80000001U, 0xFFFFFFFFU}) {
        EffectRig rig(RigOptions{.effectType = type});
        EXPECT_EQ(rig.core().effectType, type);
        EXPECT_EQ(rig.core().effectTypeText, "");
        EXPECT_TRUE(rig.core().fxIdKey == PROPERTYKEY{});
    }
}

TEST(EffectCoreMade, WithoutAnEffectItFindsItsStoresAndNoEngine) {
    EffectRig rig(RigOptions{.effectType = 4});
    for (const DWORD pid : {3U, 4U, 5U, 6U}) {
        rig.setText({params::selectionFormat, pid}, platform::guidText(effectGuid(1)));
    }
    rig.begin();
    rig.lock();
    EXPECT_TRUE(rig.core().userStore.read());
    EXPECT_TRUE(rig.core().fxId.read() == GUID{});
    EXPECT_EQ(rig.core().presetVersion.read(), 0U);
    EXPECT_FALSE(rig.core().dspEngine.read());
    rig.on([&] { rig.core().onEffectsProperty({params::selectionFormat, 4}); });
    EXPECT_TRUE(rig.core().fxId.read() == GUID{});
    EXPECT_EQ(rig.play(std::vector<float>(960, 0.5f)), std::vector<float>(960, 0.5f));
}

TEST(EffectCoreMade, ReadsTheKeyOfItsEffectOnly) {
    for (std::uint32_t type = 1; type <= 3; ++type) {
        EffectRig rig(RigOptions{.effectType = type});
        for (std::uint8_t kind = 1; kind <= 3; ++kind) {
            rig.setText(params::selectionKey(static_cast<params::EffectKind>(kind)),
                        platform::guidText(effectGuid(kind)));
        }
        rig.begin();
        EXPECT_TRUE(rig.core().fxId.read() == effectGuid(static_cast<std::uint8_t>(type))) << type;
    }
}

TEST(EffectCoreMade, HasItsDefaults) {
    EffectRig rig;
    rig.on([&] {
        EffectCore& core = rig.core();
        EXPECT_TRUE(core.isAlive.value());
        EXPECT_TRUE(core.engineAllowed.value());
        EXPECT_FALSE(core.engineAllowed.defaultValue());
        EXPECT_EQ(core.moduleVersion.value(), 0x0002000100020011U);
        EXPECT_EQ(core.moduleVersion.defaultValue(), 0U);
        EXPECT_EQ(core.masterVolumeDb.value(), 0.0f);
        EXPECT_TRUE(core.firstInstance.value());
        for (const framework::ObservableBase* value :
             std::initializer_list<framework::ObservableBase*>{&core.overrideStore,
                                                               &core.sysFxDisabled,
                                                               &core.masterVolumeDb,
                                                               &core.hardwarePulse,
                                                               &core.lastInstance,
                                                               &core.locked,
                                                               &core.inFormat,
                                                               &core.outFormat,
                                                               &core.sampleRate,
                                                               &core.dspEngine,
                                                               &core.inChannelMask,
                                                               &core.inputChannelCount,
                                                               &core.outChannelMask,
                                                               &core.outputChannelCount,
                                                               &core.dspInChannelMask,
                                                               &core.dspInputChannelCount,
                                                               &core.dspOutChannelMask,
                                                               &core.dspOutputChannelCount,
                                                               &core.inputLevelMeters,
                                                               &core.outputLevelMeters,
                                                               &core.dspInputLevelMeters,
                                                               &core.dspOutputLevelMeters,
                                                               &core.dspModuleVersion,
                                                               &core.presetLoadParamBytesReceivedByDsp,
                                                               &core.presetLoadStartTimeMs,
                                                               &core.presetLoadCount}) {
            EXPECT_TRUE(value->isDefault());
        }
        EXPECT_EQ(core.engineControls(), (EngineControls{50.0f, 0.707f, 1.0f, 0}));
        EXPECT_FALSE(core.realtime().hardwareMode.get());
    });
}

// Its number.

TEST(EffectCoreNumber, CountsTheInstancesOfTheProcess) {
    EffectRig first;
    EXPECT_EQ(first.core().instanceNumber(), 0U);
    EXPECT_TRUE(first.core().firstInstance.read());
    // More of them on the first one's thread.
    std::vector<Held<EffectCore>> others;
    first.on([&] {
        for (std::uint32_t number = 1; number <= 16; ++number) {
            others.push_back(Held<EffectCore>::first(create<EffectCore>(1U)));
            EXPECT_EQ(others.back()->instanceNumber(), number) << "a seventeenth gets 16";
            EXPECT_FALSE(others.back()->firstInstance.value());
        }
        const Ref<EffectCore> fifth = others[4].ref();
        others.erase(others.begin() + 4);
        EXPECT_FALSE(fifth->lastInstance.value());
        others.push_back(Held<EffectCore>::first(create<EffectCore>(1U)));
        EXPECT_EQ(others.back()->instanceNumber(), fifth->instanceNumber()) << "the returned one is next";
        others.clear();
    });
}

TEST(EffectCoreNumber, TheLastToCloseIsToldSo) {
    EffectRig rig;
    rig.on([&] {
        Held<EffectCore> second = Held<EffectCore>::first(create<EffectCore>(1U));
        EXPECT_FALSE(second->firstInstance.value());
        const Ref<EffectCore> first = rig.coreRef();
        first->close();
        EXPECT_FALSE(first->lastInstance.value());
        const Ref<EffectCore> kept = second.ref();
        second = nullptr;
        EXPECT_TRUE(kept->lastInstance.value());
        Held<EffectCore> third = Held<EffectCore>::first(create<EffectCore>(1U));
        EXPECT_TRUE(third->firstInstance.value()) << "nothing else is out";
    });
}

TEST(EffectCoreNumber, GoesBackBeforeAllElseAtTheClose) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    rig.lock();
    const Ref<EffectCore> core = rig.coreRef();
    std::optional<std::uint32_t> nextNumber;
    std::optional<ValueLog<bool>> locks;
    rig.on([&] {
        locks.emplace(core->locked);
        const services::InstanceNumber other;
        EXPECT_NE(other.get(), core->instanceNumber());
    });
    // It is out again by the time the stream ends.
    struct Look {
        std::optional<std::uint32_t>& number;
        static void run(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
                        const void*, framework::Reason) {
            static_cast<Look*>(context)->number = services::InstanceNumber().get();
        }
    } look{nextNumber};
    rig.on([&] { core->locked.subscribe(&look, &Look::run, nullptr); });
    rig.on([&] { core->close(); });
    EXPECT_EQ(nextNumber, core->instanceNumber());
    rig.on([&] {
        EXPECT_EQ(locks->values, std::vector<bool>{false});
        locks.reset();
    });
}

// Its end.

TEST(EffectCoreClose, WhileLockedUnlocksAndTakesTheEngineDown) {
    EffectRig rig("hardware=1");
    rig.install({.modeFlags = 1});
    rig.begin();
    rig.lock();
    static_cast<void>(rig.newLifeCalls());
    const Ref<EffectCore> core = rig.coreRef();
    rig.close();
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Uninitialize DRIVOL64 1", "Free DRIVOL64 1", "Unload DRIVOL64"}));
    rig.on([&] {
        EXPECT_FALSE(core->locked.value());
        EXPECT_FALSE(core->dspEngine.value());
        EXPECT_FALSE(core->realtime().hardwareMode.get());
        EXPECT_FALSE(core->isAlive.value());
    });
}

TEST(EffectCoreClose, WithoutAStreamFreesTheEngine) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    static_cast<void>(rig.newLifeCalls());
    rig.close();
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Free TANMER64 1", "Unload TANMER64"}));
}

TEST(EffectCoreClose, StopsTheEngineBeforeTheChainClears) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    rig.lock();
    const Ref<EffectCore> core = rig.coreRef();
    struct Look {
        EffectRig& rig;
        Lines calls;
        static void run(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
                        const void*, framework::Reason) {
            auto& self = *static_cast<Look*>(context);
            self.calls = self.rig.newLifeCalls();
        }
    } look{rig, {}};
    static_cast<void>(rig.newLifeCalls());
    rig.on([&] { core->outEndpointId.subscribe(&look, &Look::run, nullptr); });
    rig.close();
    EXPECT_EQ(look.calls, (Lines{"Uninitialize TANMER64 1", "Free TANMER64 1", "Unload TANMER64"}));
}

TEST(EffectCoreClose, ASecondOneDoesNothing) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    const Ref<EffectCore> core = rig.coreRef();
    rig.on([&] { core->close(); });
    static_cast<void>(rig.newLifeCalls());
    rig.on([&] {
        core->close();
        core->close();
    });
    rig.close();
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
    const services::InstanceNumber number;
    EXPECT_TRUE(number.wasFirst()) << "its number went back once";
}

TEST(EffectCoreClose, LeavesAnObjectWhoseOperationsDoNothing) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    rig.on([&] { rig.core().close(); });
    static_cast<void>(rig.newCalls());
    rig.on([&] { rig.core().onEffectsProperty(rig.fxIdKey()); });
    rig.begin(rig.otherEndpoint.id());
    rig.core().presetVersion.set(5);
    rig.core().modeFlags.set(1);
    rig.lock();
    EXPECT_EQ(rig.play(std::vector<float>(960, 0.5f)), std::vector<float>(960, 0.5f));
    rig.unlock();
    rig.settle();
    EXPECT_EQ(rig.newCalls(), Lines{});
}

TEST(EffectCoreClose, TheLastReferenceMayGoOnAnotherThread) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    rig.lock();
    Ref<EffectCore> core = rig.coreRef();
    const Ref<framework::WaitableCounter> destroyed = core->destroyedCounter();
    rig.close();
    EXPECT_EQ(destroyed->get(), 0U);
    std::thread([&] { core = nullptr; }).join();
    EXPECT_TRUE(test::waitUntil([&] { return destroyed->get() == 1; }));
    EXPECT_EQ(callsOf("Free", rig.recording.calls()).size(), 1U);
}

TEST(EffectCoreClose, ByTheLastReferenceAloneIsWhole) {
    EffectRig rig;
    rig.install({});
    Ref<framework::WaitableCounter> destroyed;
    rig.on([&] {
        Ref<EffectCore> core =
            create<EffectCore>(2U, Surroundings{.moduleFolder = rig.modules.path(),
                                                .systemSuppliesStores = false,
                                                .newDeviceEnumerator = [&] { return rig.devices; }});
        destroyed = core->destroyedCounter();
        core->endpointIdStrW.set(platform::toWide(rig.endpoint.id()));
        EXPECT_TRUE(core->dspEngine.value());
        std::thread([last = std::move(core)]() mutable { last = nullptr; }).detach();
    });
    EXPECT_TRUE(test::waitUntil([&] { return destroyed->get() == 1; }));
    EXPECT_EQ(rig.newLifeCalls(),
              (Lines{"Load TANMER64", "Create TANMER64 1", "Free TANMER64 1", "Unload TANMER64"}));
}

TEST(EffectCoreClose, LeavesNoThread) {
    const std::size_t before = test::threadCountAtRest();
    {
        EffectRig rig;
        rig.install({});
        rig.begin();
        rig.lock();
    }
    EXPECT_TRUE(test::waitUntil([&] { return test::threadCount() == before; })) << test::threadCount();
}

TEST(EffectCoreClose, DropsWhatIsPosted) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    const Ref<EffectCore> core = rig.coreRef();
    rig.on([&] {
        core->onEffectsProperty(params::hardwarePulseKey);
        core->onEffectsProperty(params::clientListKey);
        core->close();
    });
    rig.settle();
    EXPECT_FALSE(core->hardwarePulse.read());
    EXPECT_EQ(core->clientList.read(), nullptr);
}

// In the middle of a change.

/// Closes the core from the first call of a listener.
template <class T>
class Closer {
public:
    Closer(EffectCore& closed, framework::Observable<T>& value, bool isBefore) : core(closed) {
        value.subscribe(this, isBefore ? &run : nullptr, isBefore ? nullptr : &run);
    }

    std::atomic<bool> hasClosed{false};

private:
    static void run(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
                    const void*, framework::Reason) {
        auto& self = *static_cast<Closer*>(context);
        self.hasClosed = true;
        self.core.close();
    }

    EffectCore& core;
};

/// Closes in the middle of the change from one endpoint to the other, while a stream runs.
template <class T>
void closeAmongListenersOf(framework::Observable<T> EffectCore::*value, bool isBefore) {
    EffectRig rig;
    rig.install({.fxId = effectGuid(1), .presetVersion = 3});
    rig.installAt(rig.otherEndpoint,
                  {.fxId = effectGuid(2), .presetVersion = 4, .modeFlags = 1, .engineId = test::thirdEngine});
    const platform::RegistryKey watched = rig.endpoint.makeSet(params::property_set::user);
    platform::RegistryWatch watch;  // holds the thread that the registry may have
    ASSERT_EQ(watch.arm(watched), 0);
    const std::size_t threads = test::threadCountAtRest();
    rig.begin();
    rig.lock();
    std::optional<Closer<T>> closer;
    rig.on([&] { closer.emplace(rig.core(), rig.core().*value, isBefore); });
    rig.begin(rig.otherEndpoint.id());
    ASSERT_TRUE(closer->hasClosed);
    rig.settle();
    rig.on([&] {
        EXPECT_FALSE(rig.core().dspEngine.value());
        EXPECT_FALSE(rig.core().isAlive.value());
        EXPECT_FALSE(rig.core().realtime().hardwareMode.get());
    });
    EXPECT_EQ(rig.core().outEndpointId.read(), "") << "the chain clears";
    EXPECT_FALSE(rig.core().userStore.read());
    EXPECT_EQ(rig.core().chunkReaders.read(), nullptr);
    EXPECT_TRUE(test::waitUntil([&] { return test::threadCount() == threads; })) << test::threadCount();
    EXPECT_EQ(rig.play(std::vector<float>(96, 0.5f)), std::vector<float>(96, 0.5f));
    const Lines calls = rig.newLifeCalls();
    EXPECT_EQ(
        std::ranges::count_if(calls, [](const std::string& call) { return call.starts_with("Create"); }),
        std::ranges::count_if(calls, [](const std::string& call) { return call.starts_with("Free"); }));
    EXPECT_EQ(
        std::ranges::count_if(calls, [](const std::string& call) { return call.starts_with("Initialize"); }),
        std::ranges::count_if(calls,
                              [](const std::string& call) { return call.starts_with("Uninitialize"); }));
    rig.close();
    EXPECT_EQ(rig.newLifeCalls(), Lines{}) << "nothing was left to do";
}

template <class T>
void closeAmongAllListenersOf(framework::Observable<T> EffectCore::*value) {
    closeAmongListenersOf(value, true);
    closeAmongListenersOf(value, false);
}

TEST(EffectCoreCloseInAChange, OfTheIdentifier) {
    closeAmongAllListenersOf(&EffectCore::endpointIdStrW);
    closeAmongAllListenersOf(&EffectCore::outEndpointId);
}

TEST(EffectCoreCloseInAChange, OfTheDevice) {
    closeAmongAllListenersOf(&EffectCore::device);
}

TEST(EffectCoreCloseInAChange, OfTheStores) {
    closeAmongAllListenersOf(&EffectCore::effectsStore);
    closeAmongAllListenersOf(&EffectCore::userStore);
}

TEST(EffectCoreCloseInAChange, OfTheEffect) {
    closeAmongAllListenersOf(&EffectCore::fxId);
    closeAmongAllListenersOf(&EffectCore::presetVersion);
    closeAmongAllListenersOf(&EffectCore::modeFlags);
    closeAmongAllListenersOf(&EffectCore::chunkReaders);
}

TEST(EffectCoreCloseInAChange, OfTheEngine) {
    closeAmongAllListenersOf(&EffectCore::dspEngine);
}

/// Closes in the middle of the change to the first endpoint.
template <class T>
void closeAmongFirstListenersOf(framework::Observable<T> EffectCore::*value, bool isBefore) {
    EffectRig rig;
    rig.install({});
    const platform::RegistryKey watched = rig.endpoint.makeSet(params::property_set::user);
    platform::RegistryWatch watch;  // holds the thread that the registry may have
    ASSERT_EQ(watch.arm(watched), 0);
    const std::size_t threads = test::threadCountAtRest();
    std::optional<Closer<T>> closer;
    rig.on([&] { closer.emplace(rig.core(), rig.core().*value, isBefore); });
    rig.begin();
    ASSERT_TRUE(closer->hasClosed);
    rig.settle();
    EXPECT_EQ(rig.core().outEndpointId.read(), "") << "the chain clears";
    EXPECT_FALSE(rig.core().userStore.read());
    EXPECT_FALSE(rig.core().dspEngine.read());
    EXPECT_TRUE(test::waitUntil([&] { return test::threadCount() == threads; })) << test::threadCount();
}

TEST(EffectCoreCloseInAChange, OfTheFirstIdentifier) {
    for (const bool isBefore : {true, false}) {
        closeAmongFirstListenersOf(&EffectCore::outEndpointId, isBefore);
        closeAmongFirstListenersOf(&EffectCore::device, isBefore);
        closeAmongFirstListenersOf(&EffectCore::effectsStore, isBefore);
        closeAmongFirstListenersOf(&EffectCore::presetVersion, isBefore);
        closeAmongFirstListenersOf(&EffectCore::dspEngine, isBefore);
    }
}

TEST(EffectCoreCloseInAChange, OfTheFirstEngine) {
    for (const bool isBefore : {true, false}) {
        EffectRig rig;
        rig.install({});
        rig.core().engineAllowed.set(false);
        rig.begin();
        std::optional<Closer<Held<DspEngine>>> closer;
        rig.on([&] { closer.emplace(rig.core(), rig.core().dspEngine, isBefore); });
        rig.core().engineAllowed.set(true);
        ASSERT_TRUE(closer->hasClosed);
        rig.settle();
        EXPECT_FALSE(rig.core().dspEngine.read());
        EXPECT_EQ(rig.newLifeCalls(),
                  (Lines{"Load TANMER64", "Create TANMER64 1", "Free TANMER64 1", "Unload TANMER64"}));
    }
}

// While others work.

TEST(EffectCoreClose, DoesNotWaitForThoseWhoWriteAllTheTime) {
    std::atomic<bool> goesOn{true};
    EffectRig rig;
    rig.install({});
    std::atomic<std::uint32_t> written{0};
    std::thread writer([&] {
        const platform::RegistryKey key = rig.endpoint.makeSet(params::property_set::user);
        const std::string name = platform::KeyToText({effectGuid(1), 3000});
        while (goesOn) {
            const std::uint32_t number = ++written;
            static_cast<void>(
                key.setValue(name, platform::registry_type::dword, std::as_bytes(std::span(&number, 1))));
        }
    });
    EXPECT_TRUE(test::waitUntil([&] { return written.load() > 0; }));
    for (int round = 0; round < 5; ++round) {
        rig.begin();
        rig.lock();
        rig.unlock();
        rig.begin("");
    }
    rig.begin();
    const std::uint32_t seen = written.load();
    EXPECT_TRUE(test::waitUntil([&] { return written.load() > seen; }));
    rig.close();
    goesOn = false;
    writer.join();
    EXPECT_EQ(callsOf("Free", rig.recording.calls()).size(), callsOf("Create", rig.recording.calls()).size());
}

TEST(EffectCoreClose, ServesThoseWhoSetValuesMeanwhile) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    const Ref<EffectCore> core = rig.coreRef();
    std::atomic<bool> goesOn{true};
    std::atomic<std::uint32_t> rounds{0};
    std::thread setter([&] {
        while (goesOn) {
            core->endpointIdStrW.set(
                platform::toWide(++rounds % 2 == 0 ? rig.endpoint.id() : rig.otherEndpoint.id()));
        }
    });
    EXPECT_TRUE(test::waitUntil([&] { return rounds.load() > 4; }));
    rig.close();
    const std::uint32_t seen = rounds.load();
    EXPECT_TRUE(test::waitUntil([&] { return rounds.load() > seen + 2; }));
    goesOn = false;
    setter.join();
    EXPECT_EQ(core->outEndpointId.read(), "");
    EXPECT_FALSE(core->dspEngine.read());
    rig.settle();
    EXPECT_EQ(callsOf("Free", rig.recording.calls()).size(), callsOf("Create", rig.recording.calls()).size());
}

}  // namespace
}  // namespace korva::engine
