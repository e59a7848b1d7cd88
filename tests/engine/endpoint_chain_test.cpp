// Which values an identifier leads to, how often each is made, and how they come apart again.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "params/effect_keys.h"
#include "params/property_set_path.h"
#include "platform/property_key.h"
#include "platform/published/results.h"
#include "platform/registry.h"
#include "tests/support/effect_rig.h"
#include "tests/support/fake_effects_store.h"
#include "tests/support/thread_count.h"
#include "tests/support/value_log.h"
#include "tests/support/wait_until.h"

namespace korva::engine {
namespace {

using framework::create;
using framework::Ref;
using test::effectGuid;
using test::EffectRig;
using test::EngineChoice;
using test::FakeEffectsStore;
using test::MemoryPropertyStore;
using test::ValueLog;

using Lines = std::vector<std::string>;
using Modes = std::vector<DWORD>;

/// Puts into a store what selects an engine.
void choose(MemoryPropertyStore& store, const EngineChoice& choice) {
    using namespace params::effect_property;
    store.putWord({choice.fxId, presetVersion}, choice.presetVersion);
    store.putWord({choice.fxId, modeFlags}, choice.modeFlags);
    store.putText({choice.fxId, engineId}, platform::guidText(choice.engineId));
    store.putText(params::selectionKey(params::EffectKind::mode), platform::guidText(choice.fxId));
}

/// A provider whose user set selects an engine.
Ref<FakeEffectsStore> providerOf(const EngineChoice& choice) {
    Ref<FakeEffectsStore> provider = create<FakeEffectsStore>();
    choose(*provider->user.store, choice);
    return provider;
}

/// All values of the chain that are set, by their names.
Lines setValues(EffectRig& rig) {
    Lines names;
    rig.on([&] {
        EffectCore& core = rig.core();
        const auto look = [&](const char* name, const framework::ObservableBase& value) {
            if (!value.isDefault()) {
                names.emplace_back(name);
            }
        };
        look("outEndpointId", core.outEndpointId);
        look("endpointGuidText", core.endpointGuidText);
        look("endpointGuid", core.endpointGuid);
        look("deviceEnumerator", core.deviceEnumerator);
        look("device", core.device);
        look("endpointVolume", core.endpointVolume);
        look("endpointProperties", core.endpointProperties);
        look("effectsStore", core.effectsStore);
        look("defaultStore", core.defaultStore);
        look("userStore", core.userStore);
        look("volatileStore", core.volatileStore);
        look("fxId", core.fxId);
        look("fxIdText", core.fxIdText);
        look("fxIdTextW", core.fxIdTextW);
        look("presetVersion", core.presetVersion);
        look("modeFlags", core.modeFlags);
        look("engineId", core.engineId);
        look("parameterSet", core.parameterSet);
        look("chunkReaders", core.chunkReaders);
        look("clientList", core.clientList);
        look("hasClientList", core.hasClientList);
    });
    return names;
}

/// A rig whose device has all there is, by a provider of the test's.
class EndpointChain : public testing::Test {
protected:
    EndpointChain() {
        choose(*provider->user.store, {.modeFlags = 1, .engineId = test::thirdEngine});
        provider->user.store->putTexts(params::clientListKey, {"one"});
        useProvider(provider);
        rig.device->volume = create<test::FakeVolume>();
        rig.device->properties = MemoryPropertyStore::make();
        rig.devices->put(identifier, rig.device);
    }
    ~EndpointChain() override { rig.close(); }

    void useProvider(const Ref<FakeEffectsStore>& supplied) {
        rig.device->activated = supplied.get();
        rig.device->activationResult = published::ok;
    }

    /// Its blobs are counted by this too.
    [[nodiscard]] std::uint32_t reads(DWORD pid) const {
        return provider->user.store->readsOf({effectGuid(1), pid});
    }

    const std::string identifier = "{0.0.0.00000000}.{5AB1000A-0000-0000-0000-000000000007}";
    Ref<FakeEffectsStore> provider = create<FakeEffectsStore>();
    EffectRig rig{test::RigOptions{.systemSuppliesStores = true}};
};

TEST_F(EndpointChain, NothingIsSetBeforeAnIdentifierIs) {
    EXPECT_EQ(setValues(rig), Lines{});
    EXPECT_EQ(rig.enumerations.load(), 0);
}

TEST_F(EndpointChain, AnIdentifierSetsThemAll) {
    rig.begin(identifier);
    EXPECT_EQ(setValues(rig),
              (Lines{"outEndpointId", "endpointGuidText", "endpointGuid",       "deviceEnumerator",
                     "device",        "endpointVolume",   "endpointProperties", "effectsStore",
                     "defaultStore",  "userStore",        "volatileStore",      "fxId",
                     "fxIdText",      "fxIdTextW",        "presetVersion",      "modeFlags",
                     "engineId",      "parameterSet",     "chunkReaders",       "clientList",
                     "hasClientList"}));
}

TEST_F(EndpointChain, EachValueIsWhatItsSourcesGive) {
    rig.begin(identifier);
    rig.on([&] {
        EffectCore& core = rig.core();
        EXPECT_EQ(core.outEndpointId.value(), identifier);
        EXPECT_EQ(core.endpointGuidText.value(), "{5AB1000A-0000-0000-0000-000000000007}");
        EXPECT_TRUE(core.endpointGuid.value() ==
                    platform::GuidFromText("{5ab1000a-0000-0000-0000-000000000007}"));
        EXPECT_EQ(core.deviceEnumerator.value().get(), rig.devices.get());
        EXPECT_EQ(core.device.value().get(), rig.device.get());
        EXPECT_EQ(core.endpointVolume.value().get(), rig.device->volume.get());
        EXPECT_EQ(core.endpointProperties.value().get(), rig.device->properties.get());
        EXPECT_EQ(core.effectsStore.value().get(), provider.get());
        EXPECT_EQ(core.defaultStore.value().get(), provider->standard.store.get());
        EXPECT_EQ(core.userStore.value().get(), provider->user.store.get());
        EXPECT_EQ(core.volatileStore.value().get(), provider->temporary.store.get());
        EXPECT_TRUE(core.fxId.value() == effectGuid(1));
        EXPECT_EQ(core.fxIdText.value(), "{5ab10000-0000-0000-0000-000000000001}");
        EXPECT_EQ(core.fxIdTextW.value(), platform::toWide(core.fxIdText.value()));
        EXPECT_EQ(core.presetVersion.value(), 1U);
        EXPECT_EQ(core.modeFlags.value(), 1U);
        EXPECT_TRUE(core.engineId.value() == test::thirdEngine);
        EXPECT_EQ(core.chunkReaders.value()->size(), core.parameterSet.value()->chunks().size());
        EXPECT_EQ(*core.clientList.value(), Lines{"one"});
        EXPECT_TRUE(core.hasClientList.value());
    });
}

TEST_F(EndpointChain, TheWholeChainClearsFromTheTop) {
    rig.begin(identifier);
    rig.begin("");
    EXPECT_EQ(setValues(rig), Lines{});
}

TEST_F(EndpointChain, ItClearsAtTheClose) {
    rig.begin(identifier);
    const Ref<EffectCore> core = rig.coreRef();
    rig.on([&] {
        rig.core().close();
        EXPECT_FALSE(core->isAlive.value());
        EXPECT_EQ(core->endpointIdStrW.value(), platform::toWide(identifier)) << "it came from outside";
    });
    EXPECT_EQ(setValues(rig), Lines{});
}

TEST_F(EndpointChain, AnIdentifierThatComesAfterTheCloseLeadsNowhere) {
    rig.on([&] { rig.core().close(); });
    rig.begin(identifier);
    EXPECT_EQ(setValues(rig), Lines{});
    EXPECT_EQ(rig.enumerations.load(), 0);
}

TEST_F(EndpointChain, AnIdentifierMakesEachValueOnce) {
    rig.begin(identifier);
    EXPECT_EQ(rig.enumerations.load(), 1);
    EXPECT_EQ(rig.devices->requests.load(), 1);
    EXPECT_EQ(rig.device->volumeActivations, 1);
    EXPECT_EQ(rig.device->openedFor, (Modes{2}));
    EXPECT_EQ(rig.device->activations, 1);
    EXPECT_EQ(provider->standard.openedFor, (Modes{2}));
    EXPECT_EQ(provider->user.openedFor, (Modes{2}));
    EXPECT_EQ(provider->temporary.openedFor, (Modes{2}));
    MemoryPropertyStore& user = *provider->user.store;
    EXPECT_EQ(user.readsOf(rig.fxIdKey()), 1U);
    EXPECT_EQ(user.readsOf(params::clientListKey), 1U);
    std::uint32_t blobs = 0;
    rig.on([&] { blobs = static_cast<std::uint32_t>(rig.core().chunkReaders.value()->size()); });
    ASSERT_EQ(blobs, 4U);
    for (const DWORD pid : {0U, 1U, 2U, 3000U, 3001U, 3002U, 3003U}) {
        EXPECT_EQ(reads(pid), 1U) << pid;
    }
    EXPECT_EQ(user.readCount.load(), 5U + blobs);
}

TEST_F(EndpointChain, AnotherIdentifierMakesEachValueOnceMore) {
    rig.begin(identifier);
    MemoryPropertyStore& user = *provider->user.store;
    const std::uint32_t readsOfOne = user.readCount.load();
    rig.devices->put("other", rig.device);
    rig.begin("other");
    EXPECT_EQ(rig.devices->requests.load(), 2);
    EXPECT_EQ(user.readCount.load(), readsOfOne) << "the same device leads to the same stores";

    const Ref<FakeEffectsStore> second = providerOf({.fxId = effectGuid(2), .engineId = test::thirdEngine});
    rig.otherDevice->activated = second.get();
    rig.otherDevice->activationResult = published::ok;
    rig.begin(rig.otherEndpoint.id());
    EXPECT_EQ(rig.enumerations.load(), 3);
    EXPECT_EQ(rig.devices->requests.load(), 3);
    EXPECT_EQ(rig.otherDevice->activations, 1);
    EXPECT_EQ(second->user.openedFor, (Modes{2}));
    EXPECT_EQ(second->user.store->readCount.load(), readsOfOne);
    EXPECT_EQ(user.readCount.load(), readsOfOne) << "the former one's are left alone";
}

TEST_F(EndpointChain, AnotherEffectIsReadOnceFromTheSameStores) {
    rig.begin(identifier);
    MemoryPropertyStore& user = *provider->user.store;
    choose(user, {.fxId = effectGuid(2), .presetVersion = 9, .engineId = test::firstEngine});
    const std::uint32_t readsBefore = user.readCount.load();
    rig.on([&] { rig.core().onEffectsProperty(rig.fxIdKey()); });
    std::uint32_t blobs = 0;
    rig.on([&] { blobs = static_cast<std::uint32_t>(rig.core().chunkReaders.value()->size()); });
    ASSERT_EQ(blobs, 13U);
    for (DWORD pid = 0; pid < 3; ++pid) {
        EXPECT_EQ(user.readsOf({effectGuid(2), pid}), 1U) << pid;
    }
    for (DWORD k = 0; k < blobs; ++k) {
        EXPECT_EQ(user.readsOf({effectGuid(2), 3000 + k}), 1U) << k;
    }
    EXPECT_EQ(user.readCount.load() - readsBefore, 1U + 3U + blobs) << "the first one is the identity's";
    EXPECT_EQ(provider->user.openedFor, (Modes{2}));
    EXPECT_EQ(rig.devices->requests.load(), 1);
}

TEST_F(EndpointChain, AnotherProviderIsReadOnce) {
    rig.begin(identifier);
    const Ref<FakeEffectsStore> second = providerOf({.presetVersion = 5, .engineId = test::thirdEngine});
    rig.core().overrideStore.set(EffectsStore(second));
    EXPECT_EQ(second->user.openedFor, (Modes{2}));
    EXPECT_EQ(second->standard.openedFor, (Modes{2}));
    EXPECT_EQ(second->temporary.openedFor, (Modes{2}));
    EXPECT_EQ(second->user.store->readCount.load(), 5U + 4U);
    EXPECT_EQ(rig.core().presetVersion.read(), 5U);
    EXPECT_EQ(rig.devices->requests.load(), 1);
    EXPECT_EQ(rig.device->openedFor, (Modes{2}));
    EXPECT_EQ(rig.device->activations, 1);
}

TEST_F(EndpointChain, AProviderThatIsSetGoesFirst) {
    const Ref<FakeEffectsStore> second = providerOf({.presetVersion = 5});
    rig.core().overrideStore.set(EffectsStore(second));
    EXPECT_EQ(rig.core().presetVersion.read(), 5U) << "even without a device";
    rig.begin(identifier);
    EXPECT_EQ(rig.device->activations, 0);
    EXPECT_EQ(rig.core().presetVersion.read(), 5U);
    rig.core().overrideStore.reset();
    EXPECT_EQ(rig.device->activations, 1);
    EXPECT_EQ(rig.core().presetVersion.read(), 1U);
}

TEST_F(EndpointChain, WhereTheSystemRefusesItsProviderTheRegistryServes) {
    rig.device->activationResult = published::noInterface;
    rig.install({.presetVersion = 6});
    rig.begin();
    EXPECT_EQ(rig.device->activations, 1);
    EXPECT_EQ(rig.core().presetVersion.read(), 6U);
}

TEST_F(EndpointChain, AnInactiveDeviceHasNoVolumeAndIsReadAllTheSame) {
    rig.device->state = 8;
    rig.begin(identifier);
    EXPECT_FALSE(rig.core().endpointVolume.read());
    EXPECT_EQ(rig.core().presetVersion.read(), 1U);
    EXPECT_TRUE(rig.core().endpointProperties.read());
    EXPECT_TRUE(rig.core().dspEngine.read());
}

TEST_F(EndpointChain, StoresThatRefuseToBeWrittenAreRead) {
    rig.device->propertiesAreReadOnly = true;
    provider->standard.isReadOnly = true;
    provider->user.isReadOnly = true;
    provider->temporary.isReadOnly = true;
    rig.begin(identifier);
    EXPECT_EQ(rig.device->openedFor, (Modes{2, 0}));
    EXPECT_EQ(provider->user.openedFor, (Modes{2, 0}));
    EXPECT_EQ(setValues(rig).size(), 21U);
}

TEST_F(EndpointChain, WithoutAUserSetThereIsNoEffect) {
    provider->user.isMissing = true;
    rig.begin(identifier);
    EXPECT_EQ(setValues(rig), (Lines{"outEndpointId", "endpointGuidText", "endpointGuid", "deviceEnumerator",
                                     "device", "endpointVolume", "endpointProperties", "effectsStore",
                                     "defaultStore", "volatileStore"}));
    EXPECT_FALSE(rig.core().dspEngine.read());
}

TEST_F(EndpointChain, WithoutTheOtherSetsTheEffectIsThere) {
    provider->standard.isMissing = true;
    provider->temporary.isRefused = true;
    rig.begin(identifier);
    EXPECT_FALSE(rig.core().defaultStore.read());
    EXPECT_FALSE(rig.core().volatileStore.read());
    EXPECT_TRUE(rig.core().dspEngine.read());
}

TEST_F(EndpointChain, AnIdentifierThatNoDeviceHasLeadsNoFurther) {
    rig.begin("unknown");
    EXPECT_EQ(setValues(rig), (Lines{"outEndpointId", "deviceEnumerator"}));
    EXPECT_EQ(rig.devices->requests.load(), 1);
}

TEST(EndpointChainWithoutDevices, LeadsToNothingAndPassesSound) {
    EffectRig rig(test::RigOptions{.hasEnumerator = false});
    rig.begin();
    EXPECT_EQ(rig.enumerations.load(), 1);
    EXPECT_EQ(setValues(rig), Lines{"outEndpointId"});
    rig.lock();
    EXPECT_EQ(rig.play(std::vector<float>(960, 0.5f)), std::vector<float>(960, 0.5f));
}

TEST_F(EndpointChain, AnEffectWithoutAVersionHasItsOtherValues) {
    provider->user.store->remove({effectGuid(1), params::effect_property::presetVersion});
    rig.begin(identifier);
    EXPECT_EQ(rig.core().presetVersion.read(), 0U);
    EXPECT_NE(rig.core().chunkReaders.read(), nullptr);
    EXPECT_FALSE(rig.core().dspEngine.read());
}

TEST_F(EndpointChain, AnIdentityThatIsNoGuidIsNone) {
    for (const char* text : {"none", "FX{5ab10000-0000-0000-0000-000000000001}", ""}) {
        provider->user.store->putText(rig.fxIdKey(), text);
        rig.begin("");
        rig.begin(identifier);
        EXPECT_TRUE(rig.core().fxId.read() == GUID{}) << text;
        EXPECT_EQ(rig.core().fxIdText.read(), "");
        EXPECT_FALSE(rig.core().dspEngine.read());
    }
    provider->user.store->putWord(rig.fxIdKey(), 5);
    rig.begin("");
    rig.begin(identifier);
    EXPECT_TRUE(rig.core().fxId.read() == GUID{});
}

TEST_F(EndpointChain, AVersionOfAnotherKindIsNoneOrHasItsSign) {
    const PROPERTYKEY key{effectGuid(1), params::effect_property::presetVersion};
    PROPVARIANT value{};
    value.vt = VT_I2;
    value.iVal = -2;
    provider->user.store->putPlain(key, value);
    rig.begin(identifier);
    EXPECT_EQ(rig.core().presetVersion.read(), 0xFFFFFFFEU);
    value.vt = VT_UI8;
    provider->user.store->putPlain(key, value);
    rig.begin("");
    rig.begin(identifier);
    EXPECT_EQ(rig.core().presetVersion.read(), 0U);
    provider->user.store->putText(key, "5");
    rig.begin("");
    rig.begin(identifier);
    EXPECT_EQ(rig.core().presetVersion.read(), 0U);
}

TEST_F(EndpointChain, AValueThatStaysTheSameTellsNobody) {
    rig.begin(identifier);
    std::optional<ValueLog<std::uint32_t>> versions;
    std::optional<ValueLog<std::uint32_t>> flags;
    std::optional<ValueLog<GUID>> engines;
    rig.on([&] {
        versions.emplace(rig.core().presetVersion);
        flags.emplace(rig.core().modeFlags);
        engines.emplace(rig.core().engineId);
    });
    const Ref<FakeEffectsStore> second = providerOf({.modeFlags = 0, .engineId = test::thirdEngine});
    rig.core().overrideStore.set(EffectsStore(second));
    rig.on([&] {
        EXPECT_EQ(versions->values, (std::vector<std::uint32_t>{}));
        EXPECT_EQ(flags->values, (std::vector<std::uint32_t>{0}));
        EXPECT_EQ(engines->values.size(), 0U);
        versions.reset();
        flags.reset();
        engines.reset();
    });
}

TEST_F(EndpointChain, AnEffectStartsFromItsDefaultsAndNotFromWhatWasBefore) {
    const PROPERTYKEY firstChunk{effectGuid(1), params::effect_property::firstChunk};
    std::vector<std::byte> blob(4096, std::byte{0x11});
    blob[0] = blob[1] = blob[2] = blob[3] = std::byte{0};
    provider->user.store->putBlob(firstChunk, blob);
    rig.begin(identifier);
    const auto firstBytes = [&] {
        std::vector<std::byte> bytes;
        rig.on([&] {
            const auto& parameters = rig.core().chunkReaders.value()->front()->parameters();
            for (const params::Parameter* parameter : parameters) {
                const auto preset = parameter->PresetValue.value().bytes();
                bytes.insert(bytes.end(), preset.begin(), preset.end());
            }
        });
        return bytes;
    };
    EXPECT_FALSE(firstBytes().empty());
    // The same effect and the same engine, in a store without blobs.
    const Ref<FakeEffectsStore> second = providerOf({.modeFlags = 1, .engineId = test::thirdEngine});
    rig.core().overrideStore.set(EffectsStore(second));
    EXPECT_TRUE(firstBytes().empty());
    // Another effect of the same engine.
    provider->user.store->putBlob(firstChunk, blob);
    rig.core().overrideStore.reset();
    EXPECT_FALSE(firstBytes().empty());
    choose(*provider->user.store, {.fxId = effectGuid(2), .engineId = test::thirdEngine});
    rig.on([&] { rig.core().onEffectsProperty(rig.fxIdKey()); });
    EXPECT_TRUE(firstBytes().empty());
}

TEST_F(EndpointChain, ClientsAreThoseOfThePresentStore) {
    rig.begin(identifier);
    std::optional<ValueLog<bool>> has;
    rig.on([&] { has.emplace(rig.core().hasClientList); });
    const Ref<FakeEffectsStore> second = providerOf({.engineId = test::thirdEngine});
    rig.core().overrideStore.set(EffectsStore(second));
    rig.on([&] {
        EXPECT_EQ(has->values, std::vector<bool>{false});
        has.reset();
    });
    EXPECT_EQ(callsOf("WakeUp", rig.recording.calls()).size(), 1U) << "the second store has none";
}

TEST_F(EndpointChain, SetsThatComeLaterAreFoundByAnotherIdentifierOnly) {
    provider->user.isMissing = true;
    rig.begin(identifier);
    provider->user.isMissing = false;
    rig.on([&] { rig.core().onEffectsProperty(rig.fxIdKey()); });
    EXPECT_FALSE(rig.core().userStore.read());
    rig.begin(identifier);
    EXPECT_FALSE(rig.core().userStore.read()) << "the same one again changes nothing";
    EXPECT_EQ(rig.devices->requests.load(), 1);
    rig.begin("");
    rig.begin(identifier);
    EXPECT_TRUE(rig.core().userStore.read());
    EXPECT_TRUE(rig.core().dspEngine.read());
}

// With the stores of the registry.

TEST(EndpointChainOfTheRegistry, AUserSetThatIsMadeLaterDoesNothing) {
    EffectRig rig;
    rig.endpoint.deleteSet(params::property_set::user);
    rig.begin();
    EXPECT_FALSE(rig.core().userStore.read());
    rig.install({});
    rig.settle();
    rig.begin();
    EXPECT_FALSE(rig.core().userStore.read());
    rig.begin(rig.otherEndpoint.id());
    rig.begin();
    EXPECT_TRUE(rig.core().dspEngine.read());
}

TEST(EndpointChainOfTheRegistry, ThreeThreadsWatchADeviceWhicheverItIs) {
    EffectRig rig;
    static_cast<void>(rig.otherEndpoint.makeSet(params::property_set::user));
    // The registry itself may have a thread for all who watch, from the first one on.
    const platform::RegistryKey watched = rig.endpoint.makeSet(params::property_set::user);
    platform::RegistryWatch watch;
    ASSERT_EQ(watch.arm(watched), 0);
    const std::size_t without = test::threadCountAtRest();
    const auto becomes = [](std::size_t count) {
        return test::waitUntil([count] { return test::threadCount() == count; });
    };
    rig.begin();
    EXPECT_TRUE(becomes(without + 3)) << test::threadCount();
    for (int round = 0; round < 3; ++round) {
        rig.begin(rig.otherEndpoint.id());
        rig.settle();
        EXPECT_TRUE(becomes(without + 3)) << test::threadCount();
        rig.begin();
        rig.settle();
        EXPECT_TRUE(becomes(without + 3)) << test::threadCount();
    }
    rig.core().overrideStore.set(EffectsStore(create<FakeEffectsStore>()));
    rig.settle();
    EXPECT_TRUE(becomes(without)) << test::threadCount();
    rig.core().overrideStore.reset();
    EXPECT_TRUE(becomes(without + 3)) << test::threadCount();
    rig.begin("");
    rig.settle();
    EXPECT_TRUE(becomes(without)) << test::threadCount();
    rig.begin();
    rig.on([&] { rig.core().close(); });
    EXPECT_TRUE(becomes(without)) << test::threadCount() << ", from the close on";
}

TEST(EndpointChainOfTheRegistry, ChangesOfTheFormerDevicesSetsAreNotHeard) {
    EffectRig rig;
    rig.install({});
    rig.installAt(rig.otherEndpoint, {.fxId = effectGuid(2)});
    rig.begin();
    rig.begin(rig.otherEndpoint.id());
    rig.settle();
    rig.install({.fxId = effectGuid(3)});
    rig.settle();
    EXPECT_TRUE(rig.core().fxId.read() == effectGuid(2));
}

// From one to the other.

TEST(EndpointChange, BuildsOneEngineForEachAndNoneOfBoth) {
    EffectRig rig;
    rig.install({.fxId = effectGuid(1), .presetVersion = 3, .engineId = test::firstEngine});
    rig.installAt(rig.otherEndpoint,
                  {.fxId = effectGuid(2), .presetVersion = 4, .engineId = test::thirdEngine});
    rig.begin();
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Load TANMER64", "Create TANMER64 1"}));
    rig.begin(rig.otherEndpoint.id());
    EXPECT_EQ(rig.newLifeCalls(),
              (Lines{"Load PELLUX64", "Create PELLUX64 2", "Free TANMER64 1", "Unload TANMER64"}));
    rig.begin();
    EXPECT_EQ(rig.newLifeCalls(),
              (Lines{"Load TANMER64", "Create TANMER64 3", "Free PELLUX64 2", "Unload PELLUX64"}));
    rig.begin("");
    EXPECT_EQ(rig.newLifeCalls(), Lines{}) << "the last engine stays, and is stopped";
    const auto document = [](const char* engine, const std::string& id, const char* module, int version) {
        return std::string("{\"EngineId\":\"") + engine + "\",\"OutEndpointId\":\"" + id +
               "\",\"PlatformModuleNames\":[\"" + module +
               "\"],\"PlatformName\":\"Float\",\"PresetVersion\":" + std::to_string(version) + "}";
    };
    const std::string own =
        document("{14a6de13-1380-0e52-aee0-8803e93e40c8}", rig.endpoint.id(), "TANMER64", 3);
    const std::string other =
        document("{c9f475bc-13e4-6150-ae88-790995afc7c1}", rig.otherEndpoint.id(), "PELLUX64", 4);
    EXPECT_EQ(rig.documents(), (Lines{own, other, own}));
}

TEST(EndpointChange, WithEqualSettingsBuildsAnEngineForTheOther) {
    EffectRig rig;
    rig.install({});
    rig.installAt(rig.otherEndpoint, {});
    rig.begin();
    rig.begin(rig.otherEndpoint.id());
    EXPECT_EQ(rig.newLifeCalls(),
              (Lines{"Load TANMER64", "Create TANMER64 1", "Create TANMER64 2", "Free TANMER64 1"}))
        << "the library is the same";
    ASSERT_EQ(rig.documents().size(), 2U);
    EXPECT_NE(rig.documents()[0].find(rig.endpoint.id()), std::string::npos);
    EXPECT_NE(rig.documents()[1].find(rig.otherEndpoint.id()), std::string::npos);
}

TEST(EndpointChange, WhileLockedStartsTheOtherEngineOnce) {
    EffectRig rig;
    rig.install({});
    rig.installAt(rig.otherEndpoint, {.engineId = test::thirdEngine});
    rig.begin();
    rig.lock();
    static_cast<void>(rig.newLifeCalls());
    rig.begin(rig.otherEndpoint.id());
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Uninitialize TANMER64 1", "Load PELLUX64", "Create PELLUX64 2",
                                         "Free TANMER64 1", "Unload TANMER64", "Initialize PELLUX64 2"}));
    EXPECT_EQ(rig.play(std::vector<float>(960, 0.5f)), std::vector<float>(960, 0.25f));
    rig.begin("");
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Uninitialize PELLUX64 2"}));
    EXPECT_EQ(rig.play(std::vector<float>(960, 0.5f)), std::vector<float>(960, 0.5f)) << "the mixer's";
}

TEST(EndpointChange, ToOneWithoutSettingsStopsTheEngine) {
    EffectRig rig;
    rig.install({});
    rig.begin();
    rig.lock();
    static_cast<void>(rig.newLifeCalls());
    rig.begin("unknown");
    EXPECT_EQ(rig.newLifeCalls(), (Lines{"Uninitialize TANMER64 1"}));
}

}  // namespace
}  // namespace korva::engine
