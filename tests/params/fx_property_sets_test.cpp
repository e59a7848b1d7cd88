#include "params/fx_property_sets.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "framework/wait_any.h"
#include "params/effect_keys.h"
#include "params/property_set_path.h"
#include "platform/property_key.h"
#include "platform/published/results.h"
#include "tests/support/fake_device.h"
#include "tests/support/own_endpoint.h"
#include "tests/support/registry_numbers.h"
#include "tests/support/wait_until.h"

namespace korva::params {
namespace {

using framework::create;
using framework::Held;
using framework::Ref;
using platform::RegistryKey;
using test::FakeDevice;
using test::OwnEndpoint;
using test::setNumber;
using test::waitUntil;

using Open = HRESULT STDMETHODCALLTYPE (FxPropertySets::*)(DWORD, IPropertyStore**);

constexpr auto standardSet = published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_DEFAULT;
constexpr auto userSet = published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_USER;
constexpr auto volatileSet = published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_VOLATILE;

constexpr DWORD readWrite = 2;

/// Text of a key of the test's own.
std::string name(std::uint32_t pid) {
    return "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}," + std::to_string(pid);
}

/// A key with its set, as it was reported.
using Report = std::pair<std::uint32_t, std::string>;

/// The sets of an endpoint, on a thread of their own.
class FxPropertySetsTest : public testing::Test {
protected:
    ~FxPropertySetsTest() override { close(); }

    void makeSets(FxPropertySets::OnChange onChange = {}) {
        makeSets(create<FakeDevice>(endpoint.id()), std::move(onChange));
    }
    void makeSets(Ref<IMMDevice> device, FxPropertySets::OnChange onChange) {
        onOwner([&] {
            sets =
                Held<FxPropertySets>::first(create<FxPropertySets>(std::move(device), std::move(onChange)));
        });
    }
    /// With a handler that notes what it is told.
    void makeReportingSets() {
        makeSets([this](FxPropertySets::SetType type, REFPROPERTYKEY key) {
            EXPECT_TRUE(owner->isOwnThread());
            reports.emplace_back(type, platform::KeyToText(key));
            ++reportCount;
        });
    }

    void close() {
        onOwner([&] { sets = nullptr; });
    }

    template <class Callable>
    void onOwner(const Callable& callable) {
        owner->runSynchronously(callable);
    }

    [[nodiscard]] Ref<IPropertyStore> open(Open method, DWORD mode = readWrite) {
        IPropertyStore* store = nullptr;
        EXPECT_EQ((sets.get()->*method)(mode, &store), published::ok);
        return Ref<IPropertyStore>::adopt(store);
    }

    /// All that has been reported, each once.
    [[nodiscard]] std::set<Report> allReports() {
        std::set<Report> all;
        onOwner([&] { all = {reports.begin(), reports.end()}; });
        return all;
    }

    OwnEndpoint endpoint;
    framework::DispatcherUse owner = framework::Dispatcher::start();
    Held<FxPropertySets> sets;
    std::vector<Report> reports;  // the owner's thread only
    std::atomic<int> reportCount{0};
};

struct SetCase {
    const char* setName;
    Open open;
    FxPropertySets::SetType type;
};

class EachPropertySet : public FxPropertySetsTest, public testing::WithParamInterface<SetCase> {};

INSTANTIATE_TEST_SUITE_P(
    , EachPropertySet,
    testing::Values(SetCase{"Default", &FxPropertySets::OpenDefaultPropertyStore, standardSet},
                    SetCase{"User", &FxPropertySets::OpenUserPropertyStore, userSet},
                    SetCase{"Volatile", &FxPropertySets::OpenVolatilePropertyStore, volatileSet}),
    [](const auto& instance) { return std::string(instance.param.setName); });

TEST_P(EachPropertySet, GivesAStoreOfItsOwnValues) {
    const RegistryKey key = endpoint.makeSet(GetParam().setName);
    ASSERT_TRUE(setNumber(key, name(7), 41));
    makeSets();
    const Ref<IPropertyStore> store = open(GetParam().open);
    ASSERT_TRUE(store);
    DWORD count = 0;
    EXPECT_EQ(store->GetCount(&count), published::ok);
    EXPECT_EQ(count, 1U);
    PROPVARIANT value{};
    EXPECT_EQ(store->GetValue({selectionFormat, 7}, &value), published::ok);
    EXPECT_EQ(value.vt, VT_UI4);
    EXPECT_EQ(value.ulVal, 41U);
}

TEST_P(EachPropertySet, WithoutAKeyIsNullAndNoFailure) {
    makeSets();
    IPropertyStore* store = reinterpret_cast<IPropertyStore*>(this);
    EXPECT_EQ((sets.get()->*GetParam().open)(readWrite, &store), published::ok);
    EXPECT_EQ(store, nullptr);
}

TEST_P(EachPropertySet, OpensAlikeWithAnyMode) {
    static_cast<void>(endpoint.makeSet(GetParam().setName));
    makeSets();
    for (const DWORD mode : {0U, 1U, 2U, 0xFFFFFFFFU}) {
        EXPECT_TRUE(open(GetParam().open, mode)) << mode;
    }
}

TEST_P(EachPropertySet, RefusesANullPointer) {
    makeSets();
    EXPECT_EQ((sets.get()->*GetParam().open)(readWrite, nullptr), published::nullPointer);
}

TEST_P(EachPropertySet, OpenedTwiceGivesTwoStoresOfWhichTheFirstIsClosed) {
    static_cast<void>(endpoint.makeSet(GetParam().setName));
    makeSets();
    const Ref<IPropertyStore> first = open(GetParam().open);
    const Ref<IPropertyStore> second = open(GetParam().open);
    ASSERT_TRUE(first && second);
    EXPECT_NE(first, second);
    DWORD count = 0;
    EXPECT_EQ(first->GetCount(&count), published::invalidHandle);
    EXPECT_EQ(second->GetCount(&count), published::ok);
}

TEST_P(EachPropertySet, OfOneChangedValueReportsEveryKeyWithItsType) {
    const RegistryKey key = endpoint.makeSet(GetParam().setName);
    ASSERT_TRUE(setNumber(key, name(1), 1));
    ASSERT_TRUE(setNumber(key, name(2), 1));
    makeReportingSets();
    ASSERT_TRUE(setNumber(key, name(3), 2));
    ASSERT_TRUE(waitUntil([&] { return reportCount.load() == 3; }));
    const std::uint32_t type = GetParam().type;
    const std::set<Report> expected{{type, name(1)}, {type, name(2)}, {type, name(3)}};
    EXPECT_EQ(allReports(), expected);
    EXPECT_EQ(reportCount.load(), 3);
}

TEST_P(EachPropertySet, IsReportedWhenItsKeyIsMade) {
    makeReportingSets();
    ASSERT_TRUE(setNumber(endpoint.makeSet(GetParam().setName), name(1), 1));
    ASSERT_TRUE(waitUntil([&] { return reportCount.load() != 0; }));
    EXPECT_EQ(allReports(), (std::set<Report>{{GetParam().type, name(1)}}));
}

TEST_F(FxPropertySetsTest, ASetThatHasLostItsKeyClosesItsStore) {
    static_cast<void>(endpoint.makeSet(property_set::user));
    makeSets();
    const Ref<IPropertyStore> store = open(&FxPropertySets::OpenUserPropertyStore);
    endpoint.deleteSet(property_set::user);
    EXPECT_FALSE(open(&FxPropertySets::OpenUserPropertyStore));
    onOwner([&] { EXPECT_FALSE(sets->userStore.value()); });
    DWORD count = 0;
    EXPECT_EQ(store->GetCount(&count), published::invalidHandle);
}

TEST_F(FxPropertySetsTest, AStoreBelongsToTheSetsThreadWhoeverOpensIt) {
    static_cast<void>(endpoint.makeSet(property_set::user));
    makeSets();
    const Ref<IPropertyStore> store = open(&FxPropertySets::OpenUserPropertyStore);
    onOwner([&] {
        ASSERT_TRUE(sets->userStore.value());
        EXPECT_TRUE(sets->userStore.value()->isOwnerThread());
        EXPECT_EQ(sets->userStore.value().get(), store.get());
    });
}

TEST_F(FxPropertySetsTest, AStoreLivesAsLongAsItsReference) {
    static_cast<void>(endpoint.makeSet(property_set::user));
    makeSets();
    const Ref<IPropertyStore> store = open(&FxPropertySets::OpenUserPropertyStore);
    close();
    DWORD count = 0;
    EXPECT_EQ(store->GetCount(&count), published::invalidHandle);
}

TEST_F(FxPropertySetsTest, SeveralThreadsMayOpenAtOnce) {
    static_cast<void>(endpoint.makeSet(property_set::user));
    makeSets();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int times = 0; times < 50; ++times) {
                EXPECT_TRUE(open(&FxPropertySets::OpenUserPropertyStore));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(FxPropertySetsTest, NothingIsReset) {
    makeSets();
    EXPECT_EQ(sets->ResetUserPropertyStore(), published::unspecifiedFailure);
    EXPECT_EQ(sets->ResetVolatilePropertyStore(), published::unspecifiedFailure);
}

TEST_F(FxPropertySetsTest, NobodyIsRegistered) {
    makeSets();
    EXPECT_EQ(sets->RegisterPropertyChangeNotification(nullptr), published::unspecifiedFailure);
    EXPECT_EQ(sets->UnregisterPropertyChangeNotification(nullptr), published::unspecifiedFailure);
}

TEST_F(FxPropertySetsTest, WithoutAHandlerThereIsNoThread) {
    const std::uint32_t before = framework::liveThreadCount().get();
    makeSets();
    EXPECT_EQ(framework::liveThreadCount().get(), before);
}

TEST_F(FxPropertySetsTest, WithAHandlerEachSetHasAThreadUntilTheyClose) {
    const std::uint32_t before = framework::liveThreadCount().get();
    makeReportingSets();
    EXPECT_TRUE(waitUntil([&] { return framework::liveThreadCount().get() == before + 3; }));
    close();
    EXPECT_EQ(framework::liveThreadCount().get(), before);
}

TEST_F(FxPropertySetsTest, WhatIsThereFromTheStartIsNotReported) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    ASSERT_TRUE(setNumber(key, name(1), 1));
    const RegistryKey other = endpoint.makeSet(property_set::standard);
    makeReportingSets();
    ASSERT_TRUE(setNumber(other, name(2), 1));
    ASSERT_TRUE(waitUntil([&] { return reportCount.load() != 0; }));
    EXPECT_EQ(allReports(), (std::set<Report>{{standardSet, name(2)}}));
}

TEST_F(FxPropertySetsTest, EveryFurtherChangeIsReported) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    makeReportingSets();
    for (int i = 1; i <= 10; ++i) {
        ASSERT_TRUE(setNumber(key, name(1), static_cast<std::uint32_t>(i)));
        ASSERT_TRUE(waitUntil([&] { return reportCount.load() == i; })) << i;
    }
}

TEST_F(FxPropertySetsTest, NamesThatAreNoKeysAreSkipped) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    for (const char* const text : {"", "level", "{00000000-0000-0000-0000-000000000000},5", "{6dcc1ac8},3"}) {
        ASSERT_TRUE(setNumber(key, text, 1));
    }
    makeReportingSets();
    ASSERT_TRUE(setNumber(key, name(9), 1));
    ASSERT_TRUE(waitUntil([&] { return reportCount.load() != 0; }));
    EXPECT_EQ(allReports(), (std::set<Report>{{userSet, name(9)}}));
    EXPECT_EQ(reportCount.load(), 1);
}

TEST_F(FxPropertySetsTest, ALongNameHidesNoneOfThoseAfterIt) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    for (const std::size_t length : {254U, 255U, 256U, 257U, 511U, 512U, 5000U}) {
        ASSERT_TRUE(setNumber(key, std::string(length, 'x'), 1));
    }
    makeReportingSets();
    ASSERT_TRUE(setNumber(key, name(9), 1));
    ASSERT_TRUE(waitUntil([&] { return reportCount.load() != 0; }));
    EXPECT_EQ(allReports(), (std::set<Report>{{userSet, name(9)}}));
}

TEST_F(FxPropertySetsTest, NothingIsReportedOnceTheyAreClosed) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    for (std::uint32_t i = 0; i < 50; ++i) {
        makeReportingSets();
        int reported = 0;
        // The report may be on its way, and waits for this thread.
        onOwner([&] {
            ASSERT_TRUE(setNumber(key, name(1), i));
            std::this_thread::sleep_for(std::chrono::milliseconds(i % 4));
            reported = reportCount.load();
            sets = nullptr;
        });
        EXPECT_EQ(reportCount.load(), reported) << i;
    }
}

TEST_F(FxPropertySetsTest, TheHandlerMayCloseThem) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    ASSERT_TRUE(setNumber(key, name(1), 1));
    std::atomic<int> reported{0};
    const std::uint32_t before = framework::liveThreadCount().get();
    makeSets([&](FxPropertySets::SetType, REFPROPERTYKEY) {
        ++reported;
        sets = nullptr;
    });
    ASSERT_TRUE(setNumber(key, name(2), 1));
    ASSERT_TRUE(waitUntil([&] { return reported != 0; }));
    EXPECT_TRUE(waitUntil([&] { return framework::liveThreadCount().get() == before; }));
    EXPECT_EQ(reported, 1);
}

TEST_F(FxPropertySetsTest, ClosedTheyOpenNothing) {
    static_cast<void>(endpoint.makeSet(property_set::user));
    makeSets();
    const Ref<FxPropertySets> kept = sets.ref();
    close();
    IPropertyStore* store = reinterpret_cast<IPropertyStore*>(this);
    EXPECT_EQ(kept->OpenUserPropertyStore(readWrite, &store), published::ok);
    EXPECT_EQ(store, nullptr);
}

TEST_F(FxPropertySetsTest, ClosedTheyLetGoOfTheDeviceAndTheHandler) {
    const Ref<FakeDevice> device = create<FakeDevice>(endpoint.id());
    const auto held = std::make_shared<int>(0);
    makeSets(device, [held](FxPropertySets::SetType, REFPROPERTYKEY) {});
    const Ref<FxPropertySets> kept = sets.ref();
    close();
    EXPECT_EQ(held.use_count(), 1);
    device->AddRef();
    EXPECT_EQ(device->Release(), 1U);
}

TEST_F(FxPropertySetsTest, ADeviceThatDoesntTellItsIdentifierHasAnEmptyOne) {
    static_cast<void>(endpoint.makeSet(property_set::user));
    makeSets(create<FakeDevice>(std::nullopt), [](FxPropertySets::SetType, REFPROPERTYKEY) {});
    EXPECT_FALSE(open(&FxPropertySets::OpenUserPropertyStore));
}

TEST_F(FxPropertySetsTest, AnIdentifierWithASlashHasNoSets) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    for (const char slash : {'\\', '/'}) {
        makeSets(create<FakeDevice>(endpoint.id() + slash + "x"),
                 [&](FxPropertySets::SetType, REFPROPERTYKEY) { ++reportCount; });
        EXPECT_FALSE(open(&FxPropertySets::OpenUserPropertyStore));
        EXPECT_FALSE(open(&FxPropertySets::OpenDefaultPropertyStore));
        EXPECT_FALSE(open(&FxPropertySets::OpenVolatilePropertyStore));
        close();
    }
    EXPECT_EQ(reportCount.load(), 0);
}

TEST_F(FxPropertySetsTest, TheyAreOneObjectWithThePublishedInterface) {
    makeSets();
    void* found = nullptr;
    EXPECT_EQ(sets->QueryInterface(published::iidOf<published::IAudioSystemEffectsPropertyStore>, &found),
              published::ok);
    EXPECT_EQ(found, static_cast<published::IAudioSystemEffectsPropertyStore*>(sets.get()));
    sets->Release();
}

}  // namespace
}  // namespace korva::params
