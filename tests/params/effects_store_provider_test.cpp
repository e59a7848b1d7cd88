#include "params/effects_store_provider.h"

#include <gtest/gtest.h>

#include "framework/framework_scope.h"
#include "platform/published/results.h"
#include "platform/system_version.h"
#include "tests/support/fake_device.h"
#include "tests/support/own_endpoint.h"

namespace korva::params {
namespace {

using framework::create;
using framework::Held;
using framework::Ref;
using published::IAudioSystemEffectsPropertyStore;
using test::FakeDevice;

constexpr DWORD inProcess = 1;  // CLSCTX_INPROC_SERVER

/// Which of the two the choice of `openEffectsStore` fell on is told by the object.
class EffectsStoreProviderTest : public testing::Test {
protected:
    [[nodiscard]] EffectsStore openFor(std::uint32_t major, std::uint32_t build) {
        return open(device, nullptr, systemSuppliesEffectStores(major, build));
    }
    [[nodiscard]] static EffectsStore open(const Ref<FakeDevice>& of,
                                           const Ref<IAudioSystemEffectsPropertyStore>& overrideStore,
                                           bool systemSupplies) {
        return openEffectsStore(of, overrideStore, systemSupplies, {});
    }

    test::OwnEndpoint endpoint;
    framework::FrameworkScope scope{{}};
    Ref<FakeDevice> device = create<FakeDevice>(endpoint.id());
    /// Stands for the system's.
    Held<FxPropertySets> supplied =
        Held<FxPropertySets>::first(create<FxPropertySets>(device, FxPropertySets::OnChange{}));
};

TEST_F(EffectsStoreProviderTest, Build22000WithMajorVersion10UsesTheSystemsFirst) {
    device->activated = supplied.get();
    device->activationResult = published::ok;
    const EffectsStore chosen = openFor(10, 22000);
    EXPECT_EQ(device->activations, 1);
    EXPECT_EQ(chosen.store.get(), supplied.get());
    EXPECT_FALSE(chosen.fallback);
}

TEST_F(EffectsStoreProviderTest, Build21999NeverTriesTheSystems) {
    device->activated = supplied.get();
    device->activationResult = published::ok;
    const EffectsStore chosen = openFor(10, 21999);
    EXPECT_EQ(device->activations, 0);
    ASSERT_TRUE(chosen.fallback);
    EXPECT_EQ(chosen.store.get(), chosen.fallback.get());
    EXPECT_NE(chosen.fallback, supplied);
}

TEST_F(EffectsStoreProviderTest, TheSystemsIsAskedForInThisProcessAndWithTheContext) {
    static_cast<void>(openFor(10, 22000));
    ASSERT_EQ(device->activations, 1);
    EXPECT_TRUE(device->lastActivation.interfaceId == published::iidOf<IAudioSystemEffectsPropertyStore>);
    EXPECT_EQ(device->lastActivation.classContext, inProcess);
    EXPECT_EQ(device->lastActivation.parameterType, VT_CLSID);
    EXPECT_TRUE(device->lastActivation.parameter == storeContext);
}

TEST_F(EffectsStoreProviderTest, WhereTheSystemRefusesItIsOurs) {
    device->activationResult = published::noInterface;
    const EffectsStore chosen = openFor(10, 22000);
    EXPECT_EQ(device->activations, 1);
    ASSERT_TRUE(chosen.fallback);
    EXPECT_EQ(chosen.store.get(), chosen.fallback.get());
}

TEST_F(EffectsStoreProviderTest, OfARefusalNothingElseIsTaken) {
    device->activated = supplied.get();
    device->activationResult = published::unspecifiedFailure;
    const EffectsStore chosen = openFor(10, 22000);
    EXPECT_NE(chosen.store.get(), supplied.get());
}

TEST_F(EffectsStoreProviderTest, ASuccessWithoutAStoreIsARefusal) {
    device->activated = nullptr;
    device->activationResult = published::ok;
    EXPECT_TRUE(openFor(10, 22000).fallback);
}

TEST_F(EffectsStoreProviderTest, TheSystemsReferenceIsTakenOver) {
    device->activated = supplied.get();
    device->activationResult = published::ok;
    {
        const EffectsStore chosen = openFor(10, 22000);
        supplied->AddRef();
        EXPECT_EQ(supplied->Release(), 2U);
    }
    supplied->AddRef();
    EXPECT_EQ(supplied->Release(), 1U);
}

TEST_F(EffectsStoreProviderTest, AStoreThatTakesTheirPlaceIsUsedEvenWithoutADevice) {
    for (const Ref<FakeDevice>& of : {device, Ref<FakeDevice>()}) {
        const EffectsStore chosen = open(of, supplied.ref(), true);
        EXPECT_EQ(chosen.store.get(), supplied.get());
        EXPECT_FALSE(chosen.fallback);
    }
    EXPECT_EQ(device->activations, 0);
}

TEST_F(EffectsStoreProviderTest, WithoutADeviceThereIsNone) {
    for (const bool systemSupplies : {false, true}) {
        const EffectsStore chosen = open(nullptr, nullptr, systemSupplies);
        EXPECT_FALSE(chosen.store);
        EXPECT_FALSE(chosen.fallback);
    }
}

TEST_F(EffectsStoreProviderTest, OursIsOfTheDevicesSets) {
    static_cast<void>(endpoint.makeSet("User"));
    const EffectsStore chosen = openFor(0, 0);
    IPropertyStore* store = nullptr;
    EXPECT_EQ(chosen.store->OpenUserPropertyStore(2, &store), published::ok);
    ASSERT_NE(store, nullptr);
    store->Release();
}

TEST(SystemEffectStores, AreThereFromMajorVersion10AndBuild22000On) {
    EXPECT_TRUE(systemSuppliesEffectStores(10, 22000));
    EXPECT_TRUE(systemSuppliesEffectStores(10, 26100));
    EXPECT_TRUE(systemSuppliesEffectStores(11, 22000));
    EXPECT_FALSE(systemSuppliesEffectStores(10, 21999));
    EXPECT_FALSE(systemSuppliesEffectStores(9, 22000));
    EXPECT_FALSE(systemSuppliesEffectStores(0, 0));
    EXPECT_FALSE(systemSuppliesEffectStores(11, 0));
}

TEST(SystemEffectStores, GoByTheVersionOfTheRunningSystem) {
    const platform::SystemVersion& version = platform::systemVersion();
    EXPECT_EQ(systemSuppliesEffectStores(), systemSuppliesEffectStores(version.major, version.build));
}

}  // namespace
}  // namespace korva::params
