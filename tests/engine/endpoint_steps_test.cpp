// How each value of an endpoint's chain is made of those before it.
#include "engine/endpoint_steps.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "framework/framework_scope.h"
#include "params/effect_keys.h"
#include "platform/property_key.h"
#include "platform/published/results.h"
#include "tests/support/engines.h"
#include "tests/support/fake_device.h"
#include "tests/support/fake_effects_store.h"
#include "tests/support/memory_property_store.h"
#include "tests/support/variants.h"

namespace korva::engine {
namespace {

using framework::create;
using framework::Ref;
using test::FakeDevice;
using test::FakeDevices;
using test::FakeEffectsStore;
using test::FakeSet;
using test::FakeVolume;
using test::MemoryPropertyStore;

constexpr GUID effect = {0x5AB10000, 0, 0, {0, 0, 0, 0, 0, 0, 0, 1}};
constexpr PROPERTYKEY anyKey = {effect, 9};

bool isZero(const GUID& guid) {
    return guid == GUID{};
}

platform::WideString wide(const std::string& text) {
    return platform::toWide(text);
}

using Modes = std::vector<DWORD>;

TEST(EndpointIdOf, IsTheIdentifierInUtf8WhileTheObjectLives) {
    EXPECT_EQ(endpointIdOf(wide("{0.0.0}.K\303\266rva"), true), "{0.0.0}.K\303\266rva");
    EXPECT_EQ(endpointIdOf(wide("{0.0.0}"), false), "");
    EXPECT_EQ(endpointIdOf({}, true), "");
}

TEST(EndpointIdOf, PutsAReplacementForWhatIsNoText) {
    platform::WideString broken = wide("a");
    broken.push_back(static_cast<WCHAR>(0xD800));
    EXPECT_EQ(endpointIdOf(broken, true), "a\357\277\275");
}

TEST(GuidTextIn, IsTheFirstGuidInBraces) {
    const std::string first = "{5ab10000-0000-0000-0000-000000000001}";
    const std::string second = "{5AB10000-0000-0000-0000-00000000000F}";
    EXPECT_EQ(guidTextIn("{0.0.0.00000000}." + first), first);
    EXPECT_EQ(guidTextIn(second + first), second) << "as it is written";
    EXPECT_EQ(guidTextIn("{" + first), first);
    EXPECT_EQ(guidTextIn("x" + first + "y"), first);
}

TEST(GuidTextIn, IsEmptyForAllThatOnlyLooksLikeOne) {
    for (const char* text :
         {"", "{", "}", "{0.0.0.00000000}", "5ab10000-0000-0000-0000-000000000001",
          "{5ab10000-0000-0000-0000-000000000001", "{5ab10000-0000-0000-0000-00000000001}",
          "{5ab10000-0000-0000-0000-0000000000011}", "{5ab1000g-0000-0000-0000-000000000001}",
          "{5ab10000-0000-0000-0000_000000000001}", "{5ab1-00000000-0000-0000-000000000001}",
          "{5ab10000-0000-0000-0000-000000000001 }"}) {
        EXPECT_EQ(guidTextIn(text), "") << text;
    }
}

class DeviceStep : public testing::Test {
protected:
    framework::FrameworkScope scope{{}};
    Ref<FakeDevice> device = create<FakeDevice>("A");
    Ref<FakeDevices> devices = create<FakeDevices>();
};

TEST_F(DeviceStep, ADeviceIsFoundByItsIdentifier) {
    devices->put("K\303\266rva", device);
    EXPECT_EQ(deviceOf(devices, "K\303\266rva").get(), device.get());
    EXPECT_FALSE(deviceOf(devices, "another"));
}

TEST_F(DeviceStep, NothingIsAskedForWithoutAnIdentifier) {
    EXPECT_FALSE(deviceOf(devices, ""));
    EXPECT_EQ(devices->requests.load(), 0);
    EXPECT_FALSE(deviceOf(nullptr, "A"));
}

TEST_F(DeviceStep, AnActiveDeviceGivesItsVolume) {
    device->volume = create<FakeVolume>();
    EXPECT_EQ(volumeOf(device).get(), device->volume.get());
    EXPECT_EQ(device->volumeClassContext, 23U);
}

TEST_F(DeviceStep, ADeviceThatIsNotActiveIsNotAskedForItsVolume) {
    device->volume = create<FakeVolume>();
    for (const DWORD state : {0U, 2U, 3U, 4U, 8U}) {
        device->state = state;
        EXPECT_FALSE(volumeOf(device)) << state;
    }
    device->state = published::deviceStateActive;
    device->stateResult = published::unspecifiedFailure;
    EXPECT_FALSE(volumeOf(device));
    EXPECT_EQ(device->volumeActivations, 0);
}

TEST_F(DeviceStep, ARefusedVolumeIsNone) {
    EXPECT_FALSE(volumeOf(device));
    EXPECT_EQ(device->volumeActivations, 1);
    EXPECT_FALSE(volumeOf(nullptr));
}

TEST_F(DeviceStep, PropertiesAreOpenedToReadAndWrite) {
    device->properties = MemoryPropertyStore::make();
    EXPECT_EQ(propertiesOf(device).get(), device->properties.get());
    EXPECT_EQ(device->openedFor, (Modes{2}));
}

TEST_F(DeviceStep, PropertiesThatRefuseThatAreOpenedToRead) {
    device->properties = MemoryPropertyStore::make();
    device->propertiesAreReadOnly = true;
    EXPECT_EQ(propertiesOf(device).get(), device->properties.get());
    EXPECT_EQ(device->openedFor, (Modes{2, 0}));
}

TEST_F(DeviceStep, PropertiesThatRefuseBothAreNone) {
    EXPECT_FALSE(propertiesOf(device));
    EXPECT_EQ(device->openedFor, (Modes{2, 0}));
    EXPECT_FALSE(propertiesOf(nullptr));
}

/// The three sets have a step each, and one way to be opened.
struct SetStep {
    PropertyStore (*step)(const EffectsStore&);
    FakeSet FakeEffectsStore::*set;
};

class SetSteps : public testing::TestWithParam<SetStep> {
protected:
    PropertyStore open() { return GetParam().step(stores); }
    FakeSet& set() { return (*stores).*GetParam().set; }
    [[nodiscard]] std::size_t opened() const {
        return stores->standard.openedFor.size() + stores->user.openedFor.size() +
               stores->temporary.openedFor.size();
    }

    framework::FrameworkScope scope{{}};
    Ref<FakeEffectsStore> stores = create<FakeEffectsStore>();
};

TEST_P(SetSteps, ASetIsOpenedToReadAndWrite) {
    EXPECT_EQ(open().get(), set().store.get());
    EXPECT_EQ(set().openedFor, (Modes{2}));
    EXPECT_EQ(opened(), 1U) << "and no other";
}

TEST_P(SetSteps, ASetThatRefusesThatIsOpenedToRead) {
    set().isReadOnly = true;
    EXPECT_EQ(open().get(), set().store.get());
    EXPECT_EQ(set().openedFor, (Modes{2, 0}));
}

TEST_P(SetSteps, ASetThatRefusesBothIsNone) {
    set().isRefused = true;
    EXPECT_FALSE(open());
    EXPECT_EQ(set().openedFor, (Modes{2, 0}));
}

TEST_P(SetSteps, AMissingSetIsNoneAndNotTriedAgain) {
    set().isMissing = true;
    EXPECT_FALSE(open());
    EXPECT_EQ(set().openedFor, (Modes{2}));
}

TEST_P(SetSteps, WithoutAProviderThereIsNone) {
    EXPECT_FALSE(GetParam().step(nullptr));
}

INSTANTIATE_TEST_SUITE_P(Each, SetSteps,
                         testing::Values(SetStep{defaultStoreOf, &FakeEffectsStore::standard},
                                         SetStep{userStoreOf, &FakeEffectsStore::user},
                                         SetStep{volatileStoreOf, &FakeEffectsStore::temporary}));

class ReadStep : public testing::Test {
protected:
    [[nodiscard]] std::uint32_t versionOf(REFPROPVARIANT value) const {
        memory->putPlain({effect, params::effect_property::presetVersion}, value);
        return presetVersionIn(memory, effect);
    }
    [[nodiscard]] GUID guidOf(const std::string& text) const {
        memory->putText(anyKey, text);
        return guidAt(memory, anyKey);
    }
    void putFlags(std::uint32_t flags) const {
        memory->putWord({effect, params::effect_property::modeFlags}, flags);
    }

    framework::FrameworkScope scope{{}};
    const Ref<MemoryPropertyStore> memory = MemoryPropertyStore::make();
};

TEST_F(ReadStep, AGuidIsReadFromItsText) {
    EXPECT_TRUE(guidOf("{5ab10000-0000-0000-0000-000000000001}") == effect);
    EXPECT_TRUE(guidOf("5AB10000000000000000000000000001") == effect);
}

TEST_F(ReadStep, ATextThatIsNoGuidIsNone) {
    EXPECT_TRUE(isZero(guidOf("")));
    EXPECT_TRUE(isZero(guidOf("none at all")));
    EXPECT_TRUE(isZero(guidOf("{5ab10000-0000-0000-0000-00000000001}")));
    EXPECT_TRUE(isZero(guidOf("FX{5ab10000-0000-0000-0000-000000000001}"))) << "its F is a digit";
}

TEST_F(ReadStep, AGuidThatIsStoredAsAnythingButATextIsNone) {
    memory->putWord(anyKey, 5);
    EXPECT_TRUE(isZero(guidAt(memory, anyKey)));
    memory->putTexts(anyKey, {"{5ab10000-0000-0000-0000-000000000001}"});
    EXPECT_TRUE(isZero(guidAt(memory, anyKey)));
    memory->remove(anyKey);
    EXPECT_TRUE(isZero(guidAt(memory, anyKey)));
    EXPECT_TRUE(isZero(guidAt(nullptr, anyKey)));
}

TEST_F(ReadStep, NothingIsReadAtAKeyThatIsAllZero) {
    memory->putText({}, "{5ab10000-0000-0000-0000-000000000001}");
    EXPECT_TRUE(isZero(guidAt(memory, {})));
    EXPECT_EQ(memory->readCount.load(), 0U);
}

TEST_F(ReadStep, TheTextOfAGuidIsInLowerCaseAndEmptyForNone) {
    constexpr GUID guid = {0x5AB1000A, 0xBC, 0xD, {0, 0, 0, 0, 0, 0, 0, 0xEF}};
    EXPECT_EQ(textOf(guid), "{5ab1000a-00bc-000d-0000-0000000000ef}");
    EXPECT_EQ(wideTextOf(guid), wide(textOf(guid)));
    EXPECT_EQ(textOf({}), "");
    EXPECT_TRUE(wideTextOf({}).empty());
}

TEST_F(ReadStep, ANumberMayBeOfAnyKindUpTo32Bits) {
    PROPVARIANT value = test::variantOfKind(VT_UI1);
    value.bVal = 0xFE;
    EXPECT_EQ(versionOf(value), 0xFEU);
    value = test::variantOfKind(VT_UI2);
    value.uiVal = 0xFFFE;
    EXPECT_EQ(versionOf(value), 0xFFFEU);
    EXPECT_EQ(versionOf(test::unsignedVariant(0xFFFFFFFE)), 0xFFFFFFFEU);
}

TEST_F(ReadStep, ASignedNumberKeepsItsSign) {
    PROPVARIANT value = test::variantOfKind(VT_I1);
    value.cVal = static_cast<char>(-2);
    EXPECT_EQ(versionOf(value), 0xFFFFFFFEU);
    value = test::variantOfKind(VT_I2);
    value.iVal = -2;
    EXPECT_EQ(versionOf(value), 0xFFFFFFFEU);
    EXPECT_EQ(versionOf(test::signedVariant(-2)), 0xFFFFFFFEU);
}

TEST_F(ReadStep, ANumberThatIsStoredAsAnythingElseIsNone) {
    EXPECT_EQ(versionOf(test::wideVariant(7)), 0U);
    PROPVARIANT value = test::variantOfKind(VT_R4);
    value.fltVal = 7;
    EXPECT_EQ(versionOf(value), 0U);
    memory->putText({effect, params::effect_property::presetVersion}, "7");
    EXPECT_EQ(presetVersionIn(memory, effect), 0U);
    memory->remove({effect, params::effect_property::presetVersion});
    EXPECT_EQ(presetVersionIn(memory, effect), 0U);
}

TEST_F(ReadStep, NothingIsReadWithoutAnEffectOrAStore) {
    memory->putWord({{}, params::effect_property::presetVersion}, 7);
    EXPECT_EQ(presetVersionIn(memory, {}), 0U);
    EXPECT_EQ(modeFlagsIn(memory, {}), 0U);
    EXPECT_TRUE(isZero(engineIdIn(memory, {})));
    EXPECT_EQ(readersOf(memory, {}, parametersOf(test::thirdEngine)), nullptr);
    EXPECT_EQ(memory->readCount.load(), 0U);
    EXPECT_EQ(presetVersionIn(nullptr, effect), 0U);
    EXPECT_EQ(modeFlagsIn(nullptr, effect), 0U);
    EXPECT_TRUE(isZero(engineIdIn(nullptr, effect)));
    EXPECT_EQ(readersOf(nullptr, effect, parametersOf(test::thirdEngine)), nullptr);
}

TEST_F(ReadStep, SimulationIsNotReadFromAStore) {
    for (const std::uint32_t flags : {0U, 1U, 2U, 3U, 0xFFFFFFFFU}) {
        putFlags(flags);
        EXPECT_EQ(modeFlagsIn(memory, effect), flags & ~2U) << flags;
    }
}

TEST_F(ReadStep, AnEngineIsReadFromItsText) {
    memory->putText({effect, params::effect_property::engineId}, platform::guidText(test::firstEngine));
    EXPECT_TRUE(engineIdIn(memory, effect) == test::firstEngine);
    memory->putWord({effect, params::effect_property::engineId}, 1);
    EXPECT_TRUE(isZero(engineIdIn(memory, effect)));
}

TEST_F(ReadStep, AnUnknownEngineHasASetWithoutParametersAndNoneHasNoSet) {
    const auto unknown = parametersOf(test::unknownEngine);
    ASSERT_NE(unknown, nullptr);
    EXPECT_TRUE(unknown->parameters().empty());
    EXPECT_EQ(parametersOf({}), nullptr);
}

TEST_F(ReadStep, AnUnknownEngineHasAListWithoutReadersAndNoneHasNoList) {
    const auto readers = readersOf(memory, effect, parametersOf(test::unknownEngine));
    ASSERT_NE(readers, nullptr);
    EXPECT_TRUE(readers->empty());
    EXPECT_EQ(readersOf(memory, effect, nullptr), nullptr);
}

TEST_F(ReadStep, EachChunkIsReadOnceFromItsProperty) {
    const auto parameters = parametersOf(test::thirdEngine);
    const auto readers = readersOf(memory, effect, parameters);
    ASSERT_NE(readers, nullptr);
    ASSERT_EQ(readers->size(), parameters->chunks().size());
    for (DWORD k = 0; k < readers->size(); ++k) {
        EXPECT_EQ((*readers)[k]->parameters(), parameters->chunks()[k].parameters) << k;
        EXPECT_EQ(memory->readsOf({effect, 3000 + k}), 1U) << k;
    }
    EXPECT_EQ(memory->readCount.load(), readers->size());
}

TEST_F(ReadStep, ClientsAreAListOfTexts) {
    memory->putTexts(params::clientListKey, {"K\303\266rva", "", "b"});
    const auto clients = clientListIn(memory);
    ASSERT_NE(clients, nullptr);
    EXPECT_EQ(*clients, (std::vector<std::string>{"K\303\266rva", "", "b"}));
    EXPECT_TRUE(hasEntries(clients));
}

TEST_F(ReadStep, AnEmptyListOfClientsIsAListWithoutEntries) {
    memory->putTexts(params::clientListKey, {});
    const auto clients = clientListIn(memory);
    ASSERT_NE(clients, nullptr);
    EXPECT_FALSE(hasEntries(clients));
}

TEST_F(ReadStep, WhatIsNoListOfClientsHasNoEntries) {
    EXPECT_FALSE(hasEntries(clientListIn(nullptr)));
    memory->putText(params::clientListKey, "one");
    EXPECT_FALSE(hasEntries(clientListIn(memory)));
    memory->remove(params::clientListKey);
    EXPECT_FALSE(hasEntries(clientListIn(memory)));
}

}  // namespace
}  // namespace korva::engine
