// What an object takes in at its initialisation, by what its module comes to know of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/call_text.h"
#include "tests/system/class_test.h"
#include "tests/system/support/hosted_effect.h"

namespace korva::test {
namespace {

using published::APOInitSystemEffects2;
using published::APOInitSystemEffects3;

constexpr GUID noMode = {};
constexpr GUID otherMode = {0x9E90EA20, 0xB493, 0x4FD1, {0xA1, 0xA8, 0x7E, 0x13, 0x61, 0xA9, 0x56, 0xCE}};

class Initialization : public testing::TestWithParam<ClassFacts> {
protected:
    Initialization() { effect.install(GetParam()); }

    [[nodiscard]] APOInitSystemEffects2 second(const GUID& mode = mode::standard) {
        return secondRecord(&effect.endpointProperties, &effect.effectsProperties, &effect.devices, mode);
    }
    /// With the devices given instead.
    HRESULT initializeWith(IMMDeviceCollection* devices) {
        auto record = second();
        record.pDeviceCollection = devices;
        return test::initialize(*object.apo, record);
    }
    /// Whether the object has found the engine of its endpoint.
    [[nodiscard]] bool hasEngine() const { return effect.count("Create") > effect.count("Free"); }
    /// Whose streams are heard in raw mode, too.
    [[nodiscard]] static bool isEndpoint() { return GetParam().clsid == endpointClass.clsid; }
    /// The flag that a module gets at a new stream's start.
    [[nodiscard]] std::string disabledFlag() {
        static_cast<void>(effect.newCalls());
        EXPECT_EQ(object.lock(floats(2, ++rate)), result::ok);
        EXPECT_EQ(object.unlock(), result::ok);
        std::string last = "none";
        for (const std::string& line : effect.newCalls()) {
            const std::string beginning = "SetParameter #1 -1:-18 ";
            last = line.starts_with(beginning) ? line.substr(beginning.size()) : last;
        }
        return last;
    }
    /// Whether a new stream goes through the module.
    [[nodiscard]] bool isHeard() {
        const std::size_t before = effect.count("process");
        EXPECT_EQ(object.lock(floats(2)), result::ok);
        static_cast<void>(object.play(std::vector<float>{1, 1}, 2, 2));
        EXPECT_EQ(object.unlock(), result::ok);
        return effect.count("process") != before;
    }
    [[nodiscard]] UINT effectCount() {
        LPGUID ids = nullptr;
        UINT count = 99;
        EXPECT_EQ(object.effects->GetEffectsList(&ids, &count, nullptr), result::ok);
        CoTaskMemFree(ids);
        return count;
    }

    HostedEffect effect;
    HostedObject object{effect.library, GetParam()};

private:
    float rate = 48000.0f;
};

TEST_P(Initialization, OfAnUnknownSizeIsAcceptedAndDoesNothing) {
    auto record = second(otherMode);
    auto* const data = reinterpret_cast<BYTE*>(&record);
    for (const UINT32 size : {0U, 1U, 20U, 56U, 79U, 81U, 87U, 89U, 0xFFFFFFFFU}) {
        EXPECT_EQ(object.apo->Initialize(size, data), result::ok) << size;
        EXPECT_EQ(object.apo->Initialize(size, nullptr), result::ok) << size;
    }
    EXPECT_TRUE(effect.devices.asked.empty());
    EXPECT_FALSE(hasEngine());
    EXPECT_EQ(object.lock(floats(2)), result::ok);
}

TEST_P(Initialization, OfAnUnknownSizeLeavesWhatWasThere) {
    ASSERT_EQ(effect.initialize(object, mode::raw), result::ok);
    EXPECT_EQ(object.apo->Initialize(56, nullptr), result::ok);
    EXPECT_TRUE(hasEngine());
    EXPECT_EQ(isHeard(), isEndpoint());
}

TEST_P(Initialization, WithoutARecordIsRefused) {
    EXPECT_EQ(object.apo->Initialize(88, nullptr), result::badArgument);
    EXPECT_EQ(object.apo->Initialize(80, nullptr), result::badArgument);
    EXPECT_EQ(object.lock(floats(2)), result::ok);
}

TEST_P(Initialization, WithoutPropertiesIsRefusedBeforeAnythingIsRead) {
    for (APOInitSystemEffects2 record : {secondRecord(nullptr, &effect.effectsProperties, &effect.devices),
                                         secondRecord(&effect.endpointProperties, nullptr, &effect.devices),
                                         secondRecord(nullptr, nullptr, &effect.devices)}) {
        EXPECT_EQ(test::initialize(*object.apo, record), result::badArgument);
    }
    auto third = thirdRecord(nullptr, nullptr, &effect.devices);
    EXPECT_EQ(test::initialize(*object.apo, third), result::badArgument);
    EXPECT_TRUE(effect.devices.asked.empty());
    EXPECT_EQ(effect.effectsProperties.questions, 0);
    EXPECT_EQ(effect.initialize(object), result::ok);
    EXPECT_TRUE(hasEngine());
}

TEST_P(Initialization, MayComeAtAnyAddress) {
    const auto record = second();
    std::array<BYTE, sizeof(record) + 1> bytes{};
    std::memcpy(bytes.data() + 1, &record, sizeof(record));
    EXPECT_EQ(object.apo->Initialize(88, bytes.data() + 1), result::ok);
    EXPECT_TRUE(hasEngine());
}

TEST_P(Initialization, FindsTheEndpointWhichIsTheLastDevice) {
    OwnDevice other("{0.0.0.00000000}.{another}");
    OwnDevice unasked("{0.0.0.00000000}.{never asked}");
    unasked.told = result::failure;
    OwnDevices several{&unasked, &other, &effect.device};
    EXPECT_EQ(initializeWith(&several), result::ok);
    EXPECT_EQ(several.asked, std::vector<UINT>{2});
    EXPECT_TRUE(isHeard());
    const auto document = callsOf("Create", effect.recording.calls()).back().text("text");
    EXPECT_NE(document.find(effect.endpoint.id()), std::string::npos);
    OwnDevices otherLast{&effect.device, &other};
    EXPECT_EQ(initializeWith(&otherLast), result::ok);
    EXPECT_FALSE(isHeard()) << "nothing is known of that one";
}

TEST_P(Initialization, WithoutDevicesIsDoneWithoutAnEndpoint) {
    EXPECT_EQ(initializeWith(nullptr), result::ok);
    EXPECT_FALSE(hasEngine());
    OwnDevices none{};
    EXPECT_EQ(initializeWith(&none), result::ok);
    EXPECT_TRUE(none.asked.empty());
    EXPECT_FALSE(hasEngine());
    EXPECT_EQ(effect.initialize(object), result::ok);
    EXPECT_TRUE(isHeard());
    EXPECT_EQ(initializeWith(nullptr), result::ok);
    EXPECT_FALSE(isHeard()) << "the endpoint is gone";
}

TEST_P(Initialization, WithDevicesThatFailOrLieIsDoneWithoutAnEndpoint) {
    OwnDevice idless(effect.endpoint.id());
    idless.givesId = false;
    OwnDevice failing(effect.endpoint.id());
    failing.givesId = false;
    failing.told = result::deviceGone;
    OwnDevices countFails{&effect.device};
    countFails.countTold = result::failure;
    OwnDevices itemFails{};
    itemFails.count = 1;
    itemFails.itemTold = result::deviceGone;
    OwnDevices countsMore{&effect.device};
    countsMore.count = 0xFFFFFFFF;
    OwnDevices givesNull{};
    givesNull.count = 3;
    OwnDevices withoutId{&idless};
    OwnDevices withFailing{&failing};
    for (OwnDevices* const devices :
         {&countFails, &itemFails, &countsMore, &givesNull, &withoutId, &withFailing}) {
        EXPECT_EQ(initializeWith(devices), result::ok);
        EXPECT_FALSE(hasEngine());
        EXPECT_EQ(object.lock(floats(2)), result::ok);
        EXPECT_EQ(object.unlock(), result::ok);
    }
    EXPECT_TRUE(countFails.asked.empty());
    EXPECT_EQ(initializeWith(&effect.devices), result::ok);
    EXPECT_TRUE(hasEngine());
}

TEST_P(Initialization, TakesTheKnownModes) {
    for (const GUID& mode : mode::all) {
        EXPECT_EQ(effect.initialize(object, mode), result::ok);
        EXPECT_EQ(isHeard(), !(mode == mode::raw) || isEndpoint());
    }
}

TEST_P(Initialization, RefusesAnUnknownModeAndKeepsItAllTheSame) {
    for (const GUID& unknown : {otherMode, noMode, iid::nobodys}) {
        ASSERT_EQ(effect.initialize(object, mode::raw), result::ok);
        const UINT before = effectCount();
        EXPECT_EQ(effect.initialize(object, unknown), result::badArgument);
        EXPECT_EQ(isHeard(), isEndpoint()) << "what a raw stream had set";
        EXPECT_EQ(effectCount() > before, !isEndpoint()) << "the mode is no longer raw";
    }
}

TEST_P(Initialization, WithAnUnknownModeHasFoundItsEndpoint) {
    EXPECT_EQ(effect.initialize(object, noMode), result::badArgument);
    EXPECT_TRUE(hasEngine());
    EXPECT_EQ(effect.effectsProperties.questions, 0) << "the flag is read later";
}

TEST_P(Initialization, TellsTheModuleWhetherEffectsAreDisabled) {
    const auto flagOf = [&](VARTYPE kind, std::uint32_t number) {
        effect.effectsProperties.value = PROPVARIANT{};
        effect.effectsProperties.value.vt = kind;
        effect.effectsProperties.value.ulVal = number;
        EXPECT_EQ(effect.initialize(object), result::ok);
        return disabledFlag();
    };
    EXPECT_EQ(flagOf(VT_UI4, 1), "01");
    EXPECT_EQ(flagOf(VT_UI4, 0), "00");
    EXPECT_EQ(flagOf(VT_UI4, 1), "01");
    EXPECT_EQ(flagOf(VT_UI4, 2), "00");
    EXPECT_EQ(flagOf(VT_UI4, 1), "01");
    EXPECT_EQ(flagOf(VT_I4, 1), "00");
    EXPECT_EQ(flagOf(VT_UI4, 1), "01");
    EXPECT_EQ(flagOf(VT_BOOL, 1), "00");
    EXPECT_EQ(flagOf(VT_UI4, 1), "01");
    EXPECT_EQ(flagOf(VT_EMPTY, 1), "00");
}

TEST_P(Initialization, FreesWhatTheFlagsPropertyHolds) {
    effect.effectsProperties.value.vt = VT_LPWSTR;
    effect.effectsProperties.value.pwszVal = static_cast<LPWSTR>(CoTaskMemAlloc(4));
    std::memset(effect.effectsProperties.value.pwszVal, 0, 4);
    EXPECT_EQ(effect.initialize(object), result::ok);
    effect.effectsProperties.value = PROPVARIANT{};
    EXPECT_EQ(disabledFlag(), "00");
}

TEST_P(Initialization, GivesTheResultOfAStoreThatFailsAndKeepsTheFlag) {
    effect.effectsProperties.value.vt = VT_UI4;
    effect.effectsProperties.value.ulVal = 1;
    ASSERT_EQ(effect.initialize(object), result::ok);
    effect.effectsProperties.value.ulVal = 0;
    effect.effectsProperties.told = result::deviceGone;
    EXPECT_EQ(effect.initialize(object, mode::raw), result::deviceGone);
    EXPECT_EQ(disabledFlag(), "01");
    EXPECT_EQ(isHeard(), isEndpoint()) << "all else is set up";
    effect.effectsProperties.told = result::no;
    EXPECT_EQ(effect.initialize(object), result::no);
    EXPECT_EQ(disabledFlag(), "00") << "a success of another kind is one";
}

TEST_P(Initialization, HoldsNothingOfTheHosts) {
    ASSERT_EQ(effect.initialize(object), result::ok);
    EXPECT_EQ(effect.endpointProperties.references(), 0);
    EXPECT_EQ(effect.effectsProperties.references(), 0);
    EXPECT_EQ(effect.devices.references(), 0);
    EXPECT_EQ(effect.device.references(), 0);
}

KORVA_OF_EACH_CLASS(Initialization);

/// The third generation, which brings services.
class Services : public testing::TestWithParam<ClassFacts> {
protected:
    Services() { effect.install(GetParam()); }

    HRESULT initializeWith(IServiceProvider* provider, const GUID& mode = mode::standard) {
        auto record = thirdRecord(&effect.endpointProperties, provider, &effect.devices, mode);
        return test::initialize(*object.apo, record);
    }
    [[nodiscard]] bool hasEngine() const { return effect.count("Create") > effect.count("Free"); }

    HostedEffect effect;
    OwnLog log;
    OwnLog otherLog;
    OwnWorkQueue queue;
    OwnServices services;
    HostedObject object{effect.library, GetParam()};
};

TEST_P(Services, AreTakenWhereTheyAreThere) {
    services.log = &log;
    services.logTold = result::ok;
    services.queue = &queue;
    services.queueTold = result::ok;
    EXPECT_EQ(initializeWith(&services), result::ok);
    EXPECT_EQ(queue.questions, 1);
    EXPECT_EQ(queue.references(), 0) << "asked once and let go";
    EXPECT_EQ(log.references(), 1);
    EXPECT_EQ(services.references(), 0);
    EXPECT_TRUE(hasEngine());
    EXPECT_EQ(object.release(), 0U);
    EXPECT_EQ(log.references(), 0);
}

TEST_P(Services, WithoutATraceAreNoFault) {
    services.queue = &queue;
    services.queueTold = result::ok;
    EXPECT_EQ(initializeWith(&services), result::ok);
    services.logTold = result::ok;
    EXPECT_EQ(initializeWith(&services), result::ok) << "null with success";
}

TEST_P(Services, OfNoProviderAreMissedThoughAllIsSetUp) {
    EXPECT_EQ(initializeWith(nullptr), result::nullPointer);
    EXPECT_TRUE(hasEngine());
    EXPECT_EQ(object.lock(floats(2)), result::ok);
}

TEST_P(Services, WithoutAWorkQueueGiveTheProvidersResultThoughAllIsSetUp) {
    services.queueTold = result::deviceGone;
    EXPECT_EQ(initializeWith(&services), result::deviceGone);
    EXPECT_TRUE(hasEngine());
    services.queueTold = result::ok;
    EXPECT_TRUE(published::failed(initializeWith(&services))) << "null with success";
}

TEST_P(Services, OfAWorkQueueGiveItsResult) {
    services.queue = &queue;
    services.queueTold = result::ok;
    for (const HRESULT told : {result::failure, result::no, result::deviceGone, result::ok}) {
        queue.told = told;
        EXPECT_EQ(initializeWith(&services), told);
        EXPECT_EQ(queue.references(), 0);
    }
}

TEST_P(Services, AreReplacedByTheNextInitialisation) {
    services.queue = &queue;
    services.queueTold = result::ok;
    services.log = &log;
    services.logTold = result::ok;
    ASSERT_EQ(initializeWith(&services), result::ok);
    services.log = &otherLog;
    ASSERT_EQ(initializeWith(&services), result::ok);
    EXPECT_EQ(log.references(), 0);
    EXPECT_EQ(otherLog.references(), 1);
    ASSERT_EQ(effect.initialize(object), result::ok);
    EXPECT_EQ(otherLog.references(), 1) << "the second generation brings none";
    services.log = nullptr;
    services.logTold = result::noInterface;
    ASSERT_EQ(initializeWith(&services), result::ok);
    EXPECT_EQ(otherLog.references(), 0);
}

TEST_P(Services, AreTakenBeforeTheRecordIsRefused) {
    services.log = &log;
    services.logTold = result::ok;
    auto record = thirdRecord(nullptr, &services, &effect.devices);
    EXPECT_EQ(test::initialize(*object.apo, record), result::badArgument);
    EXPECT_EQ(log.references(), 1);
    EXPECT_EQ(queue.questions, 0);
}

TEST_P(Services, DoNotExcuseAnUnknownMode) {
    services.queue = &queue;
    services.queueTold = result::ok;
    EXPECT_EQ(initializeWith(&services, noMode), result::badArgument);
    EXPECT_EQ(queue.questions, 1);
    EXPECT_TRUE(hasEngine());
    EXPECT_EQ(initializeWith(&services, mode::raw), result::ok);
}

KORVA_OF_EACH_CLASS(Services);

}  // namespace
}  // namespace korva::test
