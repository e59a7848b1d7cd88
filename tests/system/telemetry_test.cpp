// What an audio object shows of itself, as a tool sees it.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/named_mutex.h"
#include "tests/support/conversation.h"
#include "tests/system/shown_object.h"

namespace korva::test {
namespace {

using namespace std::chrono_literals;
using ShownObject = ShownObjectTest;

bool isMutexHeld(const std::string& name) {
    return platform::isMutexHeld("Global\\" + name);
}

TEST_F(ShownObject, HasItsKeyAndItsMutexAsSoonAsItIsMade) {
    HostedObject object(effect.library, modeClass);
    EXPECT_TRUE(isMutexHeld(name()));
    EXPECT_TRUE(shownValuesOf(key()).empty());
    EXPECT_EQ(object.release(), 0U);
}

TEST_F(ShownObject, ItsLastReleaseTakesBothWithWhatAToolPutThere) {
    HostedObject object(effect.library, modeClass);
    begin(object);
    const std::string guid = name();
    platform::RegistryKey below;
    ASSERT_EQ(key().create("Tool\\Deeper", platform::RegistryAccess::readWrite, below), 0);
    ASSERT_TRUE(setNumber(below, "v", 1));
    below = {};
    EXPECT_EQ(object.release(), 0U);
    EXPECT_TRUE(base.instances().empty());
    EXPECT_FALSE(isMutexHeld(guid));
}

TEST_F(ShownObject, ShowsItsWholeTableWithTypesAndBytes) {
    HostedObject object(effect.library, modeClass);
    ASSERT_EQ(effect.initialize(object), result::ok);
    ASSERT_TRUE(setNumber(key(), "CaptureLevelMeters", 1));
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    static_cast<void>(object.play(std::vector<float>(2 * 480, 0.5f), 2, 2));
    for (const char* const request : {"CaptureDSPCycleCount", "CaptureDSPFrameCount",
                                      "CaptureParamBytesSentByDSP", "CaptureParamBytesReceivedByDSP"}) {
        ASSERT_TRUE(setNumber(key(), request, 1));
    }
    ASSERT_TRUE(setNumber(key(), "CaptureLevelMeters", 2));
    EXPECT_TRUE(becomes("BufferSizeMS", "4:0a000000"));
    EXPECT_TRUE(becomes("ParamBytesReceivedByDSP", "4:01000000"));
    EXPECT_TRUE(becomes("PresetDSPParamBytesSent", "4:39000000"));
    const std::string rest(48, '0');
    const ShownValues expected = {
        {"APOTypeStr", "1:4d465800"},
        {"EndpointIdStrW", "1:" + hexOf(effect.endpoint.id()) + "00"},
        {"DSPCycleCount", "4:11000000"},
        {"DSPFrameCount", "4:22000000"},
        {"ParamBytesSentByDSPClockStart", "4:05000000"},
        {"ParamBytesSentByDSPClockEnd", "4:06000000"},
        {"ParamBytesSentByDSP", "4:04000000"},
        {"ParamBytesReceivedByDSPClockStart", "4:02000000"},
        {"ParamBytesReceivedByDSPClockEnd", "4:03000000"},
        {"ParamBytesReceivedByDSP", "4:01000000"},
        {"BufferSizeMS", "4:0a000000"},
        {"PresetDSPParamBytesSent", "4:39000000"},
        {"InputLevelMeters", "3:0000003f0000003f" + rest},
        {"OutputLevelMeters", "3:0000803e0000803e" + rest},
        {"DSPInputLevelMeters", "3:0000803f0000003f" + rest.substr(8) + "0000803e"},
        {"DSPOutputLevelMeters", "3:0000003f" + rest + "00000000"},
        {"ModuleVersion", "11:1100020001000200"},
        {"SampleRate", "4:80bb0000"},
        {"DSPModuleVersion", "4:07000300"},
        {"PresetLoad_ParamBytesReceivedByDSP", "4:01000000"},
        {"PresetLoadCount", "4:01000000"},
        {"InChannelMask", "4:03000000"},
        {"InputChannelCount", "4:02000000"},
        {"OutChannelMask", "4:03000000"},
        {"OutputChannelCount", "4:02000000"},
        {"DSPInChannelMask", "4:03000000"},
        {"DSPInputChannelCount", "4:02000000"},
        {"DSPOutChannelMask", "4:03000000"},
        {"DSPOutputChannelCount", "4:02000000"},
    };
    ShownValues shown = shownValuesOf(key());
    for (const char* const time : {"WriteTime", "PresetLoadStartTimeMS"}) {
        EXPECT_EQ(shown[time].size(), 10U) << time;
        EXPECT_EQ(shown[time].substr(0, 2), "4:") << time;
        shown.erase(time);
    }
    // A buffer may take less than a thousandth of its time, which is then not shown.
    shown.erase("CPUUsage");
    std::erase_if(shown, [](const auto& value) { return value.first.starts_with("Capture"); });
    EXPECT_EQ(shown, expected);
    EXPECT_EQ(object.release(), 0U);
}

TEST_F(ShownObject, EachClassTellsItsType) {
    for (const auto& [facts, type] :
         {std::pair(streamClass, "1:53465800"), std::pair(modeClass, "1:4d465800"),
          std::pair(endpointClass, "1:45465800")}) {
        effect.install(facts);
        HostedObject object(effect.library, facts);
        begin(object);
        EXPECT_EQ(valueOf("APOTypeStr"), type) << facts;
        EXPECT_EQ(object.release(), 0U);
    }
}

TEST_F(ShownObject, SeventeenHaveAsManyNames) {
    std::vector<std::unique_ptr<HostedObject>> objects;
    for (std::size_t n = 0; n < 17; ++n) {
        objects.push_back(std::make_unique<HostedObject>(effect.library, allClasses[n % allClasses.size()]));
        ASSERT_EQ(effect.initialize(*objects.back()), result::ok);
        ASSERT_EQ(objects.back()->lock(floats(2)), result::ok);
    }
    const std::vector<std::string> names = base.instances();
    EXPECT_EQ(std::set(names.begin(), names.end()).size(), 17U);
    EXPECT_TRUE(std::ranges::all_of(names, isMutexHeld));
    for (std::size_t n = 0; n < 17; ++n) {
        EXPECT_EQ(objects[n]->release(), 0U);
        EXPECT_EQ(base.instances().size(), 16U - n);
    }
    EXPECT_TRUE(std::ranges::none_of(names, isMutexHeld));
}

TEST_F(ShownObject, TakesTheSameRequestOnceAndNoneOfAnotherType) {
    HostedObject object(effect.library, modeClass);
    begin(object);
    const auto cycleQueries = [&] {
        const std::vector<std::string> calls = effect.calls();
        return std::ranges::count_if(
            calls, [](const std::string& call) { return call.starts_with("SetGetData #1 -1:-33 "); });
    };
    // A request after it tells that it was looked at.
    std::uint32_t turn = 0;
    const auto lookedAt = [&] {
        const std::string answer = std::to_string(10 + ++turn);
        effect.recording.answer("data:-1:-34=" + answer + "000000," + moduleAnswers);
        ASSERT_TRUE(setNumber(key(), "CaptureDSPFrameCount", turn));
        ASSERT_TRUE(becomes("DSPFrameCount", "4:" + answer + "000000"));
    };
    ASSERT_TRUE(setNumber(key(), "CaptureDSPCycleCount", 5));
    ASSERT_TRUE(becomes("DSPCycleCount", "4:11000000"));
    ASSERT_TRUE(setNumber(key(), "CaptureDSPCycleCount", 5));
    lookedAt();
    EXPECT_EQ(cycleQueries(), 1);
    const std::array<std::byte, 4> bytes = {std::byte{9}, std::byte{0}, std::byte{0}, std::byte{0}};
    ASSERT_EQ(key().setValue("CaptureDSPCycleCount", platform::registry_type::binary, bytes), 0);
    lookedAt();
    EXPECT_EQ(cycleQueries(), 1);
    ASSERT_TRUE(setNumber(key(), "CaptureDSPCycleCount", 6));
    lookedAt();
    EXPECT_EQ(cycleQueries(), 2);
    EXPECT_EQ(object.release(), 0U);
}

TEST_F(ShownObject, ServesRequestsOfAnotherProcess) {
    HostedObject object(effect.library, modeClass);
    begin(object);
    Conversation tool(KORVA_TELEMETRY_COMPANION);
    const std::string path = TelemetryBase::pathOf(name());
    EXPECT_EQ(tool.ask("ask " + path + " 3"), "yes");
    EXPECT_TRUE(waitUntil([&] { return tool.ask("read " + path + " DSPCycleCount") == "11000000"; }));
    EXPECT_TRUE(waitUntil(
        [&] { return tool.ask("read " + path + " DSPOutputLevelMeters").starts_with("0000003f"); }));
    EXPECT_EQ(object.release(), 0U);
}

TEST_F(ShownObject, OfAKilledProcessLeavesItsKeyAndNoMutex) {
    HostedObject own(effect.library, modeClass);
    const std::string ownName = name();
    Conversation other(KORVA_TELEMETRY_COMPANION);
    ASSERT_EQ(other.ask("hold"), "yes");
    std::vector<std::string> names = base.instances();
    ASSERT_EQ(names.size(), 2U);
    std::erase(names, ownName);
    EXPECT_TRUE(isMutexHeld(names.front()));
    other.kill();
    EXPECT_EQ(base.instances().size(), 2U);
    EXPECT_FALSE(isMutexHeld(names.front()));
    EXPECT_TRUE(isMutexHeld(ownName));
    EXPECT_EQ(own.release(), 0U);
    EXPECT_EQ(base.instances(), names);
}

TEST_F(ShownObject, PlaysOnWithoutItsKey) {
    HostedObject object(effect.library, modeClass);
    begin(object);
    ASSERT_EQ(machine().deleteTree(TelemetryBase::pathOf(name())), 0);
    expectSound(object);
    EXPECT_EQ(object.unlock(), result::ok);
    EXPECT_EQ(object.lock(floats(2)), result::ok);
    expectSound(object);
    EXPECT_TRUE(base.instances().empty());
    EXPECT_EQ(object.release(), 0U);
}

TEST_F(ShownObject, WritesNothingToAKeyThatTookThePlaceOfItsOwn) {
    HostedObject object(effect.library, modeClass);
    begin(object);
    const std::string path = TelemetryBase::pathOf(name());
    ASSERT_EQ(machine().deleteTree(path), 0);
    platform::RegistryKey other;
    ASSERT_EQ(machine().create(path, platform::RegistryAccess::readWrite, other), 0);
    ASSERT_TRUE(setNumber(other, "CaptureDSPCycleCount", 1));
    expectSound(object);
    EXPECT_EQ(object.unlock(), result::ok);
    EXPECT_EQ(object.lock(floats(2)), result::ok);
    EXPECT_EQ(shownValuesOf(other), (ShownValues{{"CaptureDSPCycleCount", "4:01000000"}}));
    EXPECT_EQ(object.release(), 0U);
}

TEST_F(ShownObject, SoundsWhileAToolOfAnotherProcessAsksForAllTwentyTimesASecond) {
    HostedObject object(effect.library, modeClass);
    begin(object);
    const std::string path = TelemetryBase::pathOf(name());
    Conversation tool(KORVA_TELEMETRY_COMPANION);
    std::atomic<bool> mayEnd{false};
    std::atomic<int> wrong{0};
    std::thread audio([&] {
        const std::vector<float> samples(2 * 480, 1.0f);
        const std::vector<float> expected(2 * 480, 0.5f);
        while (!mayEnd) {
            wrong += object.play(samples, 2, 2) == expected ? 0 : 1;
        }
    });
    auto next = std::chrono::steady_clock::now();
    for (std::uint32_t turn = 1; turn <= 40; ++turn) {
        EXPECT_EQ(tool.ask("ask " + path + " " + std::to_string(turn)), "yes");
        static_cast<void>(tool.ask("read " + path + " InputLevelMeters"));
        next += 50ms;
        std::this_thread::sleep_until(next);
    }
    EXPECT_TRUE(becomes("BufferSizeMS", "4:0a000000"));
    mayEnd = true;
    audio.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(valueOf("InputLevelMeters").substr(0, 18), "3:0000803f0000803f");
    EXPECT_EQ(object.release(), 0U);
}

}  // namespace
}  // namespace korva::test
