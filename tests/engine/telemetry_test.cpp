#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "params/property_set_path.h"
#include "platform/named_mutex.h"
#include "platform/process_clock.h"
#include "platform/property_key.h"
#include "platform/property_value.h"
#include "platform/registry.h"
#include "platform/tick_clock.h"
#include "platform/unicode.h"
#include "tests/support/effect_rig.h"
#include "tests/support/fake_effects_store.h"
#include "tests/support/memory_property_store.h"
#include "tests/support/registry_numbers.h"
#include "tests/support/shown_values.h"
#include "tests/support/telemetry_base.h"
#include "tests/support/wait_until.h"

namespace korva::test {
namespace {

namespace property_set = params::property_set;

/// What the module answers to everything that it may be asked for.
const std::string fullAnswers =
    "data:-1:-32=07000300,data:-1:-33=11000000,data:-1:-34=22000000,"
    "data:-1:-36=0000803f0000003f00000000000000000000000000000000000000000000803e,"
    "data:-1:-37=0000003f00000000000000000000000000000000000000000000000000000000,"
    "data:-1:-39=39000000,data:-1:-43=010000000200000003000000,data:-1:-44=040000000500000006000000";

const std::vector<float> frame{0.5F, 0.25F};

/// An instance that may show itself, on an endpoint with all three sets of properties.
class Telemetry : public testing::Test {
protected:
    void SetUp() override { static_cast<void>(rig.endpoint.makeSet(property_set::temporary)); }

    void begin() {
        rig.install({.engineId = thirdEngine});
        rig.begin();
    }
    void beginStream() {
        begin();
        rig.lock();
    }

    /// The only instance's name.
    [[nodiscard]] std::string name() const {
        const std::vector<std::string> names = rig.telemetryBase->instances();
        EXPECT_EQ(names.size(), 1U);
        return names.empty() ? std::string() : names.front();
    }
    [[nodiscard]] platform::RegistryKey key() const { return rig.telemetryBase->open(name()); }
    [[nodiscard]] ShownValues values() const { return shownValuesOf(key()); }

    EffectRig rig{RigOptions{.hasTelemetry = true}};
};

TEST_F(Telemetry, AnInstanceHasItsKeyAndItsMutexFromTheFirstMoment) {
    EXPECT_TRUE(platform::isMutexHeld("Global\\" + name()));
    EXPECT_TRUE(values().empty());
}

TEST_F(Telemetry, AnInstancesNameIsAGuidInLowerCaseAndBraces) {
    const std::string guid = name();
    EXPECT_EQ(platform::guidText(platform::GuidFromText(guid)), guid);
}

TEST_F(Telemetry, TheLastReleaseTakesKeyAndMutex) {
    beginStream();
    const std::string guid = name();
    rig.close();
    EXPECT_TRUE(rig.telemetryBase->instances().empty());
    EXPECT_FALSE(platform::isMutexHeld("Global\\" + guid));
}

TEST_F(Telemetry, TheLastReleaseTakesWhatAToolPutBelowTheKey) {
    platform::RegistryKey below;
    ASSERT_EQ(key().create("Tool\\Deeper\\Deepest", platform::RegistryAccess::readWrite, below), 0);
    ASSERT_TRUE(setNumber(below, "Value", 1));
    ASSERT_EQ(key().create("Other", platform::RegistryAccess::readWrite, below), 0);
    rig.close();
    EXPECT_TRUE(rig.telemetryBase->instances().empty());
}

TEST_F(Telemetry, AKeyBelowThatPointsElsewhereGoesAndItsTargetStays) {
    const std::string target = rig.endpoint.setPath(property_set::user);
    platform::RegistryKey link;
    ASSERT_EQ(key().create("Link", platform::RegistryAccess::readWrite, link), 0);
    ASSERT_EQ(
        link.setValue("SymbolicLinkValue", platform::registry_type::binary, std::as_bytes(std::span(target))),
        0);
    link = {};
    rig.close();
    EXPECT_TRUE(rig.telemetryBase->instances().empty());
    platform::RegistryKey kept;
    EXPECT_EQ(platform::RegistryKey::root(platform::RegistryRoot::localMachine)
                  .open(target, platform::RegistryAccess::read, kept),
              0);
}

TEST_F(Telemetry, ALockedStreamsValuesHaveTheirTypesAndBytes) {
    rig.recording.answer(fullAnswers);
    begin();
    const std::uint32_t before = platform::tickClockMs();
    rig.lock({.channels = 6, .rate = 44100, .mask = 0x3F}, {.channels = 2, .rate = 44100, .mask = 3});
    const ShownValues shown = values();
    const std::uint32_t after = platform::tickClockMs();
    EXPECT_EQ(shown.at("APOTypeStr"), "1:4d465800");
    EXPECT_EQ(shown.at("EndpointIdStrW"), "1:" + hexOf(rig.endpoint.id()) + "00");
    EXPECT_EQ(shown.at("DSPInputLevelMeters"),
              "3:0000803f0000003f00000000000000000000000000000000000000000000803e");
    EXPECT_EQ(shown.at("ModuleVersion"), "11:1100020001000200");
    EXPECT_EQ(shown.at("SampleRate"), "4:44ac0000");
    EXPECT_EQ(shown.at("DSPModuleVersion"), "4:07000300");
    EXPECT_EQ(shown.at("PresetLoad_ParamBytesReceivedByDSP"), "4:01000000");
    EXPECT_EQ(shown.at("PresetLoadCount"), "4:01000000");
    for (const char* const side : {"", "DSP"}) {
        EXPECT_EQ(shown.at(std::string(side) + "InChannelMask"), "4:3f000000");
        EXPECT_EQ(shown.at(std::string(side) + "InputChannelCount"), "4:06000000");
        EXPECT_EQ(shown.at(std::string(side) + "OutChannelMask"), "4:03000000");
        EXPECT_EQ(shown.at(std::string(side) + "OutputChannelCount"), "4:02000000");
    }
    const std::optional<std::uint32_t> writeTime = numberOf(key(), "WriteTime");
    ASSERT_TRUE(writeTime);
    EXPECT_LE(*writeTime - before, after - before);
    const std::optional<std::uint32_t> loadTime = numberOf(key(), "PresetLoadStartTimeMS");
    ASSERT_TRUE(loadTime);
    EXPECT_LE(*loadTime, platform::processClockMs());
}

TEST_F(Telemetry, ATypeIsFourBytesAndNoUtf16) {
    beginStream();
    platform::RegistryValue value;
    ASSERT_EQ(key().readValue("APOTypeStr", value), 0);
    EXPECT_EQ(value.type, platform::registry_type::string);
    ASSERT_EQ(value.data.size(), 4U);
    EXPECT_EQ(std::memcmp(value.data.data(), "MFX", 4), 0);
}

TEST_F(Telemetry, EachInstanceHasANumberAndANameOfItsOwn) {
    const std::string first = name();
    {
        framework::Held<engine::EffectCore> second;
        rig.on([&] {
            second = framework::Held<engine::EffectCore>::first(framework::create<engine::EffectCore>(1U));
            EXPECT_EQ(second->instanceNumber(), 1U);
        });
        EXPECT_EQ(rig.telemetryBase->instances().size(), 2U);
        rig.on([&] { second = nullptr; });
    }
    EXPECT_EQ(name(), first);
}

TEST_F(Telemetry, SeventeenInstancesHaveTheNumbersUpTo16AndTheLastOneThatIsFreeIsNext) {
    std::vector<framework::Held<engine::EffectCore>> cores;
    const auto makeOne = [&] {
        cores.push_back(
            framework::Held<engine::EffectCore>::first(framework::create<engine::EffectCore>(1U)));
        return cores.back()->instanceNumber();
    };
    rig.on([&] {
        EXPECT_EQ(rig.core().instanceNumber(), 0U);
        for (std::uint32_t number = 1; number < 17; ++number) {
            EXPECT_EQ(makeOne(), number);
        }
        cores[3] = nullptr;
        cores[8] = nullptr;
        EXPECT_EQ(makeOne(), 9U);
        EXPECT_EQ(makeOne(), 4U);
        EXPECT_EQ(makeOne(), 17U);
    });
    EXPECT_EQ(rig.telemetryBase->instances().size(), 18U);
    rig.on([&] { cores.clear(); });
    EXPECT_EQ(rig.telemetryBase->instances().size(), 1U);
}

TEST_F(Telemetry, WithoutAVolatileSetTheKeyStaysEmpty) {
    rig.endpoint.deleteSet(property_set::temporary);
    beginStream();
    EXPECT_TRUE(values().empty());
}

TEST_F(Telemetry, ValuesStayInTheKeyWhenTheStreamIsUnlocked) {
    beginStream();
    const ShownValues locked = values();
    rig.unlock();
    EXPECT_EQ(values(), locked);
}

TEST_F(Telemetry, WhatChangesWhileNoStreamIsLockedIsShownWithTheNextOne) {
    beginStream();
    rig.unlock();
    rig.on([&] { rig.core().dspModuleVersion.set(99); });
    EXPECT_NE(values()["DSPModuleVersion"], "4:63000000");
    rig.lock();
    EXPECT_EQ(values()["DSPModuleVersion"], "4:63000000");
}

TEST_F(Telemetry, AValueThatGoesBackToItsDefaultLeavesTheOldOneInTheKey) {
    beginStream();
    rig.on([&] { rig.core().dspCycleCount.set(17); });
    rig.on([&] { rig.core().dspCycleCount.set(0); });
    EXPECT_EQ(values()["DSPCycleCount"], "4:11000000");
}

TEST_F(Telemetry, ACountOfBytesIsThreeNumbers) {
    beginStream();
    rig.on([&] { rig.core().paramBytesSentByDsp.set({1, 2, 3, 4}); });
    const ShownValues shown = values();
    EXPECT_EQ(shown.at("ParamBytesSentByDSP"), "4:01000000");
    EXPECT_EQ(shown.at("ParamBytesSentByDSPClockStart"), "4:02000000");
    EXPECT_EQ(shown.at("ParamBytesSentByDSPClockEnd"), "4:03000000");
}

TEST_F(Telemetry, CountsThatDifferInTheirCaptureClockAloneAreAnotherValue) {
    beginStream();
    rig.on([&] { rig.core().paramBytesSentByDsp.set({1, 2, 3, 4}); });
    ASSERT_TRUE(setNumber(key(), "ParamBytesSentByDSP", 0));
    rig.on([&] { rig.core().paramBytesSentByDsp.set({1, 2, 3, 5}); });
    EXPECT_EQ(values()["ParamBytesSentByDSP"], "4:01000000");
}

TEST_F(Telemetry, AnInstanceWhoseKeyIsDeletedPlaysOnWithoutOne) {
    beginStream();
    ASSERT_EQ(platform::RegistryKey::root(platform::RegistryRoot::localMachine)
                  .deleteTree(TelemetryBase::pathOf(name())),
              0);
    rig.on([&] { rig.core().dspModuleVersion.set(99); });
    EXPECT_EQ(rig.play(frame).size(), 2U);
    rig.unlock();
    rig.lock();
    EXPECT_TRUE(rig.telemetryBase->instances().empty());
    EXPECT_EQ(rig.play(frame).size(), 2U);
}

/// The store that the system supplies, where the properties of values are seen.
class TelemetryProperties : public testing::Test {
protected:
    void SetUp() override {
        rig.device->activated = provider.get();
        rig.device->activationResult = published::ok;
        provider->user.store->putText(rig.fxIdKey(), platform::guidText(effectGuid(1)));
        provider->user.store->putWord({effectGuid(1), 0}, 1);
        provider->user.store->putText({effectGuid(1), 2}, platform::guidText(thirdEngine));
    }

    ~TelemetryProperties() override { rig.close(); }

    /// With the instance's number.
    [[nodiscard]] PROPERTYKEY keyOf(const char* guid) {
        return {platform::GuidFromText(guid), rig.core().instanceNumber()};
    }
    [[nodiscard]] std::string property(const char* guid) {
        platform::PropertyValue value;
        EXPECT_EQ(provider->temporary.store->GetValue(keyOf(guid), value.out()), 0);
        return variantText(value.get());
    }

    framework::Ref<FakeEffectsStore> provider = framework::create<FakeEffectsStore>();
    EffectRig rig{RigOptions{.systemSuppliesStores = true, .hasTelemetry = true}};
};

TEST_F(TelemetryProperties, EachValueIsAPropertyOfItsOwnKind) {
    rig.recording.answer(fullAnswers);
    rig.begin();
    rig.lock({.channels = 6, .rate = 44100, .mask = 0x3F}, {.channels = 2, .rate = 44100, .mask = 3});
    rig.on([&] {
        rig.core().dspCycleCount.set(0x11);
        rig.core().dspFrameCount.set(0x22);
        rig.core().paramBytesSentByDsp.set({1, 2, 3, 4});
        rig.core().paramBytesReceivedByDsp.set({5, 6, 7, 8});
        rig.core().bufferSizeMs.set(10);
        rig.core().cpuUsage.set(11);
        rig.core().presetDspParamBytesSent.set(12);
        rig.core().inputLevelMeters.set({1, 0, 0, 0, 0, 0, 0, 0});
        rig.core().outputLevelMeters.set({0, 1, 0, 0, 0, 0, 0, 0});
        rig.core().dspInputLevelMeters.set({0, 0, 1, 0, 0, 0, 0, 0});
        rig.core().dspOutputLevelMeters.set({0, 0, 0, 1, 0, 0, 0, 0});
        rig.core().presetLoadParamBytesReceivedByDsp.set({1, 2, 3, 4});
        rig.core().presetLoadStartTimeMs.set(13);
    });
    const std::string one = "0000803f";
    const std::string zero = "00000000";
    EXPECT_EQ(property("{0F1BF368-7A66-4547-AB9D-7A41C5D25FD4}"), "31:MFX");
    EXPECT_EQ(property("{09865C27-C541-400E-BCD5-64FC701A78F8}"), "31:" + rig.endpoint.id());
    EXPECT_EQ(property("{F02829CE-2A44-4ED3-9F4C-B8C8874D0E5F}"), "19:17");
    EXPECT_EQ(property("{10B39166-4297-429B-91BA-2861D28B4A8B}"), "19:34");
    EXPECT_EQ(property("{D122229D-6FFC-4C40-965C-0BDDD7051124}"), "65:01000000020000000300000004000000");
    EXPECT_EQ(property("{D3B717D7-E1D8-446A-8966-DBBB654ABD3A}"), "65:05000000060000000700000008000000");
    EXPECT_EQ(property("{F61726C1-24AC-4DC9-BB2F-11AAB8DFD6C9}"), "19:10");
    EXPECT_EQ(property("{F1B2E56C-276F-4A14-9BA1-A98E0875376E}"), "19:11");
    EXPECT_EQ(property("{430F69F9-A05E-421B-9483-7DE5449149CC}"), "19:12");
    EXPECT_EQ(property("{CCE8008E-0C6E-43F0-A0B9-B759F306D78E}"),
              "65:" + one + zero + zero + zero + zero + zero + zero + zero);
    EXPECT_EQ(property("{406CDD02-E0CE-438F-B7F7-018A454C7702}"),
              "65:" + zero + one + zero + zero + zero + zero + zero + zero);
    EXPECT_EQ(property("{F964E231-B394-46A1-8428-5887288F044D}"),
              "65:" + zero + zero + one + zero + zero + zero + zero + zero);
    EXPECT_EQ(property("{372B87B7-FEFF-4533-83AD-18426A7F8319}"),
              "65:" + zero + zero + zero + one + zero + zero + zero + zero);
    EXPECT_EQ(property("{218DF4CF-2BDC-4E8E-A13E-6068EFCEC4C1}"), "21:562954248519697");
    EXPECT_EQ(property("{C844AA44-6B45-4CD5-AB76-E6D841EE5065}"), "3:44100");
    EXPECT_EQ(property("{DE58414D-47AC-4440-BA30-C9443BCD04AC}"), "19:196615");
    EXPECT_EQ(property("{7A511323-4BBA-49A4-AA9B-AD85EB38A444}"), "65:01000000020000000300000004000000");
    EXPECT_EQ(property("{D1DD5BE5-3E14-48F0-90A4-57C843B743A0}"), "19:13");
    EXPECT_EQ(property("{A685A110-A891-4EA0-BA4B-35FA806DD62C}"), "19:1");
    EXPECT_EQ(property("{4012E3E4-7C8A-4553-B407-4F3E11EA66A8}"), "19:63");
    EXPECT_EQ(property("{E76EA7A8-8672-4B2F-88F2-90B6D530AFC1}"), "3:6");
    EXPECT_EQ(property("{3F2FE4F5-74B0-47EA-A877-828ED00EAF41}"), "19:3");
    EXPECT_EQ(property("{6E0D4AF2-E532-4ACE-BF8B-B446D4CED024}"), "3:2");
    EXPECT_EQ(property("{BCFBEB9C-E193-442E-8103-8436B0F7B608}"), "19:63");
    EXPECT_EQ(property("{1CD3B175-99DC-4AC9-A7AE-A1BC4935D0EB}"), "3:6");
    EXPECT_EQ(property("{C7BD9577-49A3-4A9E-8D37-1B287255CC8B}"), "19:3");
    EXPECT_EQ(property("{6E4E3461-63D6-4367-AEED-114C9066BC41}"), "3:2");
}

TEST_F(TelemetryProperties, APropertyIsEmptiedBeforeItsValueChanges) {
    rig.begin();
    rig.lock();
    rig.on([&] { rig.core().dspCycleCount.set(1); });
    static_cast<void>(provider->temporary.store->newlySet());
    rig.on([&] { rig.core().dspCycleCount.set(2); });
    const std::vector<PROPERTYKEY> set = provider->temporary.store->newlySet();
    const auto isCycleCount = [&](const PROPERTYKEY& key) {
        return platform::KeyToText(key) ==
               platform::KeyToText(keyOf("{F02829CE-2A44-4ED3-9F4C-B8C8874D0E5F}"));
    };
    EXPECT_EQ(std::ranges::count_if(set, isCycleCount), 2);
    EXPECT_EQ(property("{F02829CE-2A44-4ED3-9F4C-B8C8874D0E5F}"), "19:2");
}

TEST_F(TelemetryProperties, AnUnlockEmptiesAllProperties) {
    rig.recording.answer(fullAnswers);
    rig.begin();
    rig.lock();
    EXPECT_FALSE(provider->temporary.store->isEmpty());
    rig.unlock();
    EXPECT_TRUE(provider->temporary.store->isEmpty());
}

TEST_F(TelemetryProperties, AStoreThatGoesIsEmptiedWhileItIsStillThere) {
    const auto replacement = framework::create<FakeEffectsStore>();
    rig.begin();
    rig.lock();
    rig.on([&] { rig.core().overrideStore.set(engine::EffectsStore::share(replacement.get())); });
    EXPECT_TRUE(provider->temporary.store->isEmpty());
}

TEST_F(TelemetryProperties, AStoreThatComesWhileAStreamIsLockedIsFilledAtOnce) {
    const auto replacement = framework::create<FakeEffectsStore>();
    provider->temporary.isMissing = true;
    rig.begin();
    rig.lock();
    EXPECT_TRUE(provider->temporary.store->isEmpty());
    rig.on([&] { rig.core().overrideStore.set(engine::EffectsStore::share(replacement.get())); });
    EXPECT_FALSE(replacement->temporary.store->isEmpty());
    EXPECT_FALSE(shownValuesOf(rig.telemetryBase->open(rig.telemetryBase->instances().front())).empty());
}

TEST(TelemetryWithoutAPlace, AnInstanceHasNeitherKeyNorMutexAndPlays) {
    EffectRig rig;
    static_cast<void>(rig.endpoint.makeSet(property_set::temporary));
    rig.install({.engineId = thirdEngine});
    rig.begin();
    rig.lock();
    EXPECT_EQ(rig.play(frame).size(), 2U);
    platform::RegistryKey base;
    EXPECT_EQ(platform::RegistryKey::root(platform::RegistryRoot::localMachine)
                  .open("Software\\Kestrelwright", platform::RegistryAccess::read, base),
              2);
}

}  // namespace
}  // namespace korva::test
