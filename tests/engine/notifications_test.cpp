// What the system tells an effect, and what it makes of it.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/volume_level.h"
#include "params/effect_keys.h"
#include "params/effects_store_provider.h"
#include "platform/last_error.h"
#include "platform/property_key.h"
#include "tests/engine/effect_test.h"
#include "tests/support/byte_list.h"
#include "tests/support/fake_effects_store.h"
#include "tests/support/variants.h"

namespace korva::engine {
namespace {

using framework::create;
using framework::Ref;
using published::APO_NOTIFICATION;
using test::bytes;
using test::EffectRig;
using test::FakeDevice;
using test::Lines;
using test::MemoryPropertyStore;
using test::sharedBytes;

constexpr PROPERTYKEY disableSysFxKey = {
    {0x1DA5D803, 0xD492, 0x4EDD, {0x8C, 0x23, 0xE0, 0xC0, 0xFF, 0xEE, 0x7F, 0x0E}}, 5};
constexpr GUID otherGuid = {0x598D00DA, 0xD0C7, 0x49B2, {0x91, 0xC9, 0x96, 0x75, 0x30, 0x04, 0x71, 0x36}};

std::string inCapitals(std::string text) {
    for (char& character : text) {
        character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    }
    return text;
}

void tell(EffectRig& rig, const APO_NOTIFICATION& notification) {
    rig.on([&] { rig.core().onApoNotification(notification); });
}

void tellVolume(EffectRig& rig, IMMDevice* endpoint, float scalar) {
    AUDIO_VOLUME_NOTIFICATION_DATA data{};
    data.fMasterVolume = scalar;
    APO_NOTIFICATION notification{};
    notification.type = published::APO_NOTIFICATION_TYPE_ENDPOINT_VOLUME;
    notification.audioEndpointVolumeChange = {endpoint, &data};
    tell(rig, notification);
}

class VolumeNotice : public test::EffectTest {
protected:
    [[nodiscard]] float levelDb() { return rig.core().masterVolumeDb.read(); }
};

TEST_F(VolumeNotice, OfTheOwnEndpointGoesToTheModule) {
    rig.device->volume = create<test::FakeVolume>();
    beginStream();
    tellVolume(rig, rig.device.get(), 0.5f);
    const float expected = volumeDb(0.5f);
    EXPECT_EQ(levelDb(), expected);
    EXPECT_EQ(newCalls(), Lines{test::parameterText(1, 4, 24, std::as_bytes(std::span(&expected, 1)))});
}

TEST_F(VolumeNotice, OfSilenceIsMinus130Db) {
    begin();
    tellVolume(rig, rig.device.get(), 0.0f);
    EXPECT_EQ(levelDb(), -130.0f);
}

TEST_F(VolumeNotice, WithoutAnActiveDeviceIsKeptAndNotSent) {
    rig.device->state = published::deviceStateUnplugged;
    beginStream();
    tellVolume(rig, rig.device.get(), 0.5f);
    EXPECT_EQ(levelDb(), volumeDb(0.5f));
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(VolumeNotice, OfAnotherEndpointIsIgnored) {
    begin();
    tellVolume(rig, create<FakeDevice>("{0.0.0.00000000}.{another}").get(), 0.5f);
    EXPECT_EQ(levelDb(), 0.0f);
}

TEST_F(VolumeNotice, OfAnEndpointThatDoesNotTellIsIgnored) {
    begin();
    tellVolume(rig, nullptr, 0.5f);
    tellVolume(rig, create<FakeDevice>(std::nullopt).get(), 0.5f);
    tellVolume(rig, create<FakeDevice>("").get(), 0.5f);
    EXPECT_EQ(levelDb(), 0.0f);
}

TEST_F(VolumeNotice, WithoutAVolumeIsIgnored) {
    begin();
    APO_NOTIFICATION notification{};
    notification.type = published::APO_NOTIFICATION_TYPE_ENDPOINT_VOLUME;
    notification.audioEndpointVolumeChange = {rig.device.get(), nullptr};
    tell(rig, notification);
    EXPECT_EQ(levelDb(), 0.0f);
}

TEST_F(VolumeNotice, KnowsItsEndpointInCapitals) {
    begin();
    tellVolume(rig, create<FakeDevice>(inCapitals(rig.endpoint.id())).get(), 0.5f);
    EXPECT_EQ(levelDb(), volumeDb(0.5f));
}

TEST_F(VolumeNotice, KnowsItsEndpointInCapitalsOfOtherScripts) {
    rig.begin("{0.0.0.00000000}.{\u00e9\u0436\u03c9}");
    tellVolume(rig, create<FakeDevice>("{0.0.0.00000000}.{\u00c9\u0416\u03a9}").get(), 0.5f);
    EXPECT_EQ(levelDb(), volumeDb(0.5f));
    tellVolume(rig, create<FakeDevice>("{0.0.0.00000000}.{e\u0436\u03c9}").get(), 0.25f);
    EXPECT_EQ(levelDb(), volumeDb(0.5f));
}

TEST_F(VolumeNotice, BeforeThereIsAnIdentifierComesFromEndpointsWithoutOne) {
    tellVolume(rig, nullptr, 0.5f);
    EXPECT_EQ(levelDb(), volumeDb(0.5f));
    tellVolume(rig, create<FakeDevice>(std::nullopt).get(), 0.25f);
    EXPECT_EQ(levelDb(), volumeDb(0.25f));
    tellVolume(rig, rig.device.get(), 0.125f);
    EXPECT_EQ(levelDb(), volumeDb(0.25f));
}

class PropertyNotice : public test::EffectTest {
protected:
    [[nodiscard]] static APO_NOTIFICATION notice(IMMDevice* endpoint, IPropertyStore* store,
                                                 REFPROPERTYKEY key = disableSysFxKey) {
        APO_NOTIFICATION notification{};
        notification.type = published::APO_NOTIFICATION_TYPE_ENDPOINT_PROPERTY_CHANGE;
        notification.audioEndpointPropertyChange = {endpoint, store, key};
        return notification;
    }
    /// Whether effects are disabled after such a notice.
    bool isDisabledAfter(const APO_NOTIFICATION& notification) {
        tell(rig, notification);
        rig.settle();
        return rig.core().sysFxDisabled.read();
    }

    const Ref<MemoryPropertyStore> properties = MemoryPropertyStore::make();
};

TEST_F(PropertyNotice, OfDisabledEffectsGoesToTheModuleAndBack) {
    beginStream();
    properties->putWord(disableSysFxKey, 1);
    EXPECT_TRUE(isDisabledAfter(notice(rig.device.get(), properties.get())));
    properties->putWord(disableSysFxKey, 0);
    EXPECT_FALSE(isDisabledAfter(notice(rig.device.get(), properties.get())));
    EXPECT_EQ(newCalls(), (Lines{"SetParameter #1 -1:-18 01", "SetParameter #1 -1:-18 00"}));
}

TEST_F(PropertyNotice, IsReadAtOnceAndTakenOverLater) {
    begin();
    properties->putWord(disableSysFxKey, 1);
    rig.on([&] {
        rig.core().onApoNotification(notice(rig.device.get(), properties.get()));
        EXPECT_FALSE(rig.core().sysFxDisabled.value());
        properties->putWord(disableSysFxKey, 0);
    });
    rig.settle();
    EXPECT_TRUE(rig.core().sysFxDisabled.read());
}

TEST_F(PropertyNotice, OfAnythingButTheNumber1MeansThatEffectsAreOn) {
    begin();
    const auto isDisabledAfterOther = [&] {
        rig.core().sysFxDisabled.set(true);
        return isDisabledAfter(notice(rig.device.get(), properties.get()));
    };
    EXPECT_FALSE(isDisabledAfterOther()) << "nothing there";
    properties->putWord(disableSysFxKey, 2);
    EXPECT_FALSE(isDisabledAfterOther()) << "2";
    properties->putPlain(disableSysFxKey, test::signedVariant(1));
    EXPECT_FALSE(isDisabledAfterOther()) << "a signed 1";
    properties->putBlob(disableSysFxKey, bytes(1, 0, 0, 0));
    EXPECT_FALSE(isDisabledAfterOther()) << "a blob";
    properties->putText(disableSysFxKey, "1");
    EXPECT_FALSE(isDisabledAfterOther()) << "a text";
    rig.core().sysFxDisabled.set(true);
    EXPECT_FALSE(isDisabledAfter(notice(rig.device.get(), nullptr))) << "no store";
}

TEST_F(PropertyNotice, OfAnotherKeyIsIgnored) {
    begin();
    for (const PROPERTYKEY& key : {PROPERTYKEY{disableSysFxKey.fmtid, 4}, PROPERTYKEY{otherGuid, 5}}) {
        properties->putWord(key, 1);
        EXPECT_FALSE(isDisabledAfter(notice(rig.device.get(), properties.get(), key)));
    }
    EXPECT_EQ(properties->readCount, 0U);
}

TEST_F(PropertyNotice, OfAnotherEndpointIsIgnored) {
    begin();
    properties->putWord(disableSysFxKey, 1);
    EXPECT_FALSE(isDisabledAfter(notice(create<FakeDevice>("another").get(), properties.get())));
    EXPECT_FALSE(isDisabledAfter(notice(nullptr, properties.get())));
}

TEST_F(PropertyNotice, ThatIsOnItsWayAtTheCloseReachesNoModule) {
    beginStream();
    properties->putWord(disableSysFxKey, 1);
    rig.on([&] {
        rig.core().onApoNotification(notice(rig.device.get(), properties.get()));
        rig.close();
    });
    rig.settle();
    EXPECT_EQ(newCalls(), (Lines{"Uninitialize #1", "Free #1", "Unload PELLUX64"}));
}

/// Effect properties in a store of memory, which tells nobody of changes: what is heard is what a test tells.
class EffectsProperty : public test::EffectTest {
protected:
    EffectsProperty() {
        put(test::effectGuid(1), test::thirdEngine);
        user().putText(rig.fxIdKey(), platform::guidText(test::effectGuid(1)));
        rig.begin();
        rig.core().overrideStore.set(stores);
        rig.lock();
        static_cast<void>(newCalls());
    }

    [[nodiscard]] MemoryPropertyStore& user() const { return *stores->user.store; }
    void put(const GUID& fxId, const GUID& engineId) {
        user().putWord({fxId, params::effect_property::presetVersion}, 1);
        user().putText({fxId, params::effect_property::engineId}, platform::guidText(engineId));
    }
    [[nodiscard]] static PROPERTYKEY chunkKey(std::uint32_t index, std::uint8_t effect = 1) {
        return {test::effectGuid(effect), params::effect_property::firstChunk + index};
    }
    /// Tells of a change, and waits for what comes of it.
    void change(REFPROPERTYKEY key) {
        rig.on([&] { rig.core().onEffectsProperty(key); });
        rig.settle();
    }
    [[nodiscard]] GUID fxId() { return rig.core().fxId.read(); }

    const Ref<test::FakeEffectsStore> stores = create<test::FakeEffectsStore>();
};

TEST_F(EffectsProperty, OfAChunkIsReadByATaskOfItsOwn) {
    user().putBlob(chunkKey(0), bytes(0, 0, 0, 0, 7));
    rig.on([&] {
        rig.core().onEffectsProperty(chunkKey(0));
        EXPECT_EQ(parameter(-1, -39).effective.value(), sharedBytes(0));
    });
    rig.settle();
    EXPECT_EQ(newCalls(), Lines{"SetParameter #1 -1:-39 07"});
}

TEST_F(EffectsProperty, OfAChunkThatChangesTwiceIsReadOnce) {
    user().putBlob(chunkKey(0), bytes(0, 0, 0, 0, 7));
    const std::uint32_t before = user().readsOf(chunkKey(0));
    rig.on([&] {
        rig.core().onEffectsProperty(chunkKey(0));
        rig.core().onEffectsProperty(chunkKey(0));
    });
    rig.settle();
    EXPECT_EQ(user().readsOf(chunkKey(0)), before + 1);
}

TEST_F(EffectsProperty, OfEachChunkIsThatChunks) {
    std::uint32_t count = 0;
    rig.on([&] { count = static_cast<std::uint32_t>(rig.core().chunkReaders.value()->size()); });
    ASSERT_EQ(count, 4U);
    for (std::uint32_t index = 0; index < count; ++index) {
        user().putBlob(chunkKey(index), bytes(0, 0, 1, 0, 0, 0, 2, 0, 0xAB, 0xC0 + index));
    }
    for (std::uint32_t index = 0; index < count; ++index) {
        const std::uint32_t before = user().readsOf(chunkKey(index));
        change(chunkKey(index));
        EXPECT_EQ(user().readsOf(chunkKey(index)), before + 1);
        const Lines calls = newCalls();
        ASSERT_LE(calls.size(), 1U);
        EXPECT_TRUE(calls.empty() || calls[0].ends_with(" abc" + std::to_string(index))) << index;
    }
}

TEST_F(EffectsProperty, PastTheLastChunkIsIgnored) {
    for (const std::uint32_t index : {4U, 5U, 0xFFFFFFFFU - 3000U}) {
        user().putBlob(chunkKey(index), bytes(0, 0, 0, 0, 7));
        change(chunkKey(index));
        EXPECT_EQ(user().readsOf(chunkKey(index)), 0U);
    }
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(EffectsProperty, OfTheEnginesChoiceChangesNothingUntilTheIdentityDoes) {
    using namespace params::effect_property;
    const GUID own = test::effectGuid(1);
    user().putWord({own, presetVersion}, 2);
    user().putWord({own, modeFlags}, 1);
    user().putText({own, engineId}, platform::guidText(test::firstEngine));
    for (const std::uint32_t pid : {presetVersion, modeFlags, engineId, firstChunk - 1}) {
        change({own, pid});
    }
    EXPECT_EQ(newCalls(), Lines{});
    EXPECT_EQ(rig.core().presetVersion.read(), 1U);
    EXPECT_TRUE(rig.core().engineId.read() == test::thirdEngine);
}

TEST_F(EffectsProperty, OfAnyKindFollowsAnIdentityThatHasChanged) {
    put(test::effectGuid(2), test::firstEngine);
    user().putText(rig.fxIdKey(), platform::guidText(test::effectGuid(2)));
    EXPECT_TRUE(fxId() == test::effectGuid(1));
    change({otherGuid, 99});
    EXPECT_TRUE(fxId() == test::effectGuid(2));
    EXPECT_EQ(newCalls(),
              test::joined({{"Uninitialize #1", "Load TANMER64", "Create #2", "Free #1", "Unload PELLUX64"},
                            test::startCalls({.engineId = test::firstEngine, .instance = 2})}));
}

TEST_F(EffectsProperty, OfAChunkOfTheNextIdentityIsRead) {
    put(test::effectGuid(2), test::thirdEngine);
    user().putWord({test::effectGuid(2), params::effect_property::presetVersion}, 2);
    user().putText(rig.fxIdKey(), platform::guidText(test::effectGuid(2)));
    rig.on([&] {
        rig.core().onEffectsProperty(chunkKey(0, 2));
        user().putBlob(chunkKey(0, 2), bytes(0, 0, 0, 0, 7));
    });
    rig.settle();
    EXPECT_EQ(effective(-1, -39), sharedBytes(7));
}

TEST_F(EffectsProperty, OfAChunkOfTheLastIdentityIsReadNoMore) {
    put(test::effectGuid(2), test::thirdEngine);
    user().putText(rig.fxIdKey(), platform::guidText(test::effectGuid(2)));
    const std::uint32_t before = user().readsOf(chunkKey(0));
    change(chunkKey(0));
    EXPECT_EQ(user().readsOf(chunkKey(0)), before);
}

TEST_F(EffectsProperty, KeepsAnIdentityThatIsWrittenOtherwise) {
    for (const std::string& text : {inCapitals(platform::guidText(test::effectGuid(1))),
                                    "(" + platform::guidText(test::effectGuid(1)).substr(1)}) {
        user().putText(rig.fxIdKey(), text);
        change(rig.fxIdKey());
        EXPECT_TRUE(fxId() == test::effectGuid(1)) << text;
    }
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(EffectsProperty, KeepsAnIdentityThatIsNoText) {
    user().putWord(rig.fxIdKey(), 5);
    change(rig.fxIdKey());
    user().putBlob(rig.fxIdKey(), bytes(1, 2, 3));
    change(rig.fxIdKey());
    user().remove(rig.fxIdKey());
    change(rig.fxIdKey());
    EXPECT_TRUE(fxId() == test::effectGuid(1));
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(EffectsProperty, KeepsAnIdentityThatIsGoneWithoutAnError) {
    user().remove(rig.fxIdKey());
    rig.on([&] {
        platform::setLastError(0);
        rig.core().onEffectsProperty(rig.fxIdKey());
    });
    EXPECT_TRUE(fxId() == test::effectGuid(1));
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(EffectsProperty, OfATextThatIsNoGuidEndsTheEngineUntilTheNextOne) {
    user().putText(rig.fxIdKey(), "none");
    change(rig.fxIdKey());
    EXPECT_TRUE(fxId() == GUID{});
    EXPECT_EQ(newCalls(), Lines{"Uninitialize #1"});
    EXPECT_EQ(play({1.0f, 0.5f}), (std::vector<float>{1.0f, 0.5f}));
    user().putText(rig.fxIdKey(), platform::guidText(test::effectGuid(1)));
    change(rig.fxIdKey());
    EXPECT_EQ(newCalls(), test::startCalls({.engineId = test::thirdEngine}));
}

TEST_F(EffectsProperty, OfTheHardwareIsNoticedByATaskOfItsOwn) {
    rig.on([&] {
        rig.core().onEffectsProperty(params::hardwarePulseKey);
        EXPECT_FALSE(rig.core().hardwarePulse.value());
    });
    rig.settle();
    EXPECT_TRUE(rig.core().hardwarePulse.read());
    change(params::hardwarePulseKey);
    EXPECT_TRUE(rig.core().hardwarePulse.read());
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(EffectsProperty, OfTheClientsIsReadByATaskOfItsOwn) {
    user().putTexts(params::clientListKey, {"one", "two"});
    rig.on([&] {
        rig.core().onEffectsProperty(params::clientListKey);
        EXPECT_FALSE(rig.core().hasClientList.value());
    });
    rig.settle();
    EXPECT_TRUE(rig.core().hasClientList.read());
    rig.on([&] { EXPECT_EQ(*rig.core().clientList.value(), (std::vector<std::string>{"one", "two"})); });
    EXPECT_EQ(newCalls(), Lines{"WakeUp #1"});
    user().remove(params::clientListKey);
    change(params::clientListKey);
    EXPECT_FALSE(rig.core().hasClientList.read());
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(EffectsProperty, OfTheClientsThatChangeTwiceIsReadOnce) {
    const std::uint32_t before = user().readsOf(params::clientListKey);
    rig.on([&] {
        rig.core().onEffectsProperty(params::clientListKey);
        rig.core().onEffectsProperty(params::clientListKey);
    });
    rig.settle();
    EXPECT_EQ(user().readsOf(params::clientListKey), before + 1);
}

TEST_F(EffectsProperty, OfNobodysKeyIsIgnored) {
    const std::uint32_t before = user().readCount;
    change({params::selectionFormat, 6});
    change({params::selectionFormat, 9});
    change({GUID{}, params::effect_property::firstChunk});
    EXPECT_EQ(user().readCount, before + 3) << "only the identity is looked at";
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(EffectsProperty, WithoutAStoreIsIgnored) {
    rig.on([&] { rig.core().overrideStore.reset(); });
    rig.begin("{0.0.0.00000000}.{nowhere}");
    const std::uint32_t before = user().readCount;
    change(params::hardwarePulseKey);
    change(chunkKey(0));
    EXPECT_FALSE(rig.core().hardwarePulse.read());
    EXPECT_EQ(user().readCount, before);
}

TEST_F(EffectsProperty, OnItsWayAtTheCloseIsDropped) {
    user().putBlob(chunkKey(0), bytes(0, 0, 0, 0, 7));
    rig.on([&] {
        rig.core().onEffectsProperty(chunkKey(0));
        rig.core().onEffectsProperty(params::hardwarePulseKey);
        rig.core().onEffectsProperty(params::clientListKey);
        rig.close();
    });
    rig.settle();
    EXPECT_EQ(newCalls(), (Lines{"Uninitialize #1", "Free #1", "Unload PELLUX64"}));
}

/// The same as the system tells it.
class EffectsNotice : public EffectsProperty {
protected:
    [[nodiscard]] static APO_NOTIFICATION notice(IMMDevice* endpoint, REFPROPERTYKEY key,
                                                 const GUID& context = params::storeContext,
                                                 published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE type =
                                                     published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_USER) {
        APO_NOTIFICATION notification{};
        notification.type = published::APO_NOTIFICATION_TYPE_SYSTEM_EFFECTS_PROPERTY_CHANGE;
        notification.audioSystemEffectsPropertyChange = {endpoint, context, type, nullptr, key};
        return notification;
    }
    /// What the module is told after such a notice.
    [[nodiscard]] Lines callsAfter(const APO_NOTIFICATION& notification) {
        tell(rig, notification);
        rig.settle();
        return newCalls();
    }
};

TEST_F(EffectsNotice, OfTheOwnSetsCounts) {
    user().putBlob(chunkKey(0), bytes(0, 0, 0, 0, 7));
    EXPECT_EQ(callsAfter(notice(rig.device.get(), chunkKey(0))), Lines{"SetParameter #1 -1:-39 07"});
}

TEST_F(EffectsNotice, OfTheOtherSetsReadsTheUsersToo) {
    std::uint8_t value = 7;
    for (const auto type : {published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_DEFAULT,
                            published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_VOLATILE}) {
        user().putBlob(chunkKey(0), bytes(0, 0, 0, 0, ++value));
        EXPECT_EQ(callsAfter(notice(rig.device.get(), chunkKey(0), params::storeContext, type)),
                  Lines{"SetParameter #1 -1:-39 0" + std::to_string(value)});
    }
}

TEST_F(EffectsNotice, OfSomebodyElsesSetsIsIgnored) {
    user().putBlob(chunkKey(0), bytes(0, 0, 0, 0, 7));
    EXPECT_EQ(callsAfter(notice(rig.device.get(), chunkKey(0), otherGuid)), Lines{});
    EXPECT_EQ(callsAfter(notice(rig.device.get(), chunkKey(0), GUID{})), Lines{});
}

TEST_F(EffectsNotice, OfAnotherEndpointIsIgnored) {
    user().putBlob(chunkKey(0), bytes(0, 0, 0, 0, 7));
    EXPECT_EQ(callsAfter(notice(create<FakeDevice>("another").get(), chunkKey(0))), Lines{});
    EXPECT_EQ(callsAfter(notice(nullptr, chunkKey(0))), Lines{});
    EXPECT_EQ(callsAfter(notice(create<FakeDevice>(inCapitals(rig.endpoint.id())).get(), chunkKey(0))),
              Lines{"SetParameter #1 -1:-39 07"});
}

TEST_F(EffectsNotice, OfAnUnknownTypeIsIgnored) {
    user().putBlob(chunkKey(0), bytes(0, 0, 0, 0, 7));
    for (const std::uint32_t type : {0U, 4U, 99U}) {
        APO_NOTIFICATION notification = notice(rig.device.get(), chunkKey(0));
        notification.type = static_cast<published::APO_NOTIFICATION_TYPE>(type);
        EXPECT_EQ(callsAfter(notification), Lines{});
    }
}

TEST(EffectsPropertyOfNoEffect, IsIgnored) {
    EffectRig rig({}, 7);
    rig.begin();
    rig.on([&] { EXPECT_TRUE(rig.core().userStore.value()); });
    rig.on([&] { rig.core().onEffectsProperty(params::hardwarePulseKey); });
    rig.settle();
    EXPECT_FALSE(rig.core().hardwarePulse.read());
}

}  // namespace
}  // namespace korva::engine
