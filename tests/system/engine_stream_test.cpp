// Streams of an object whose endpoint has an engine, by what its module is told.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/thread_count.h"
#include "tests/support/wait_until.h"
#include "tests/system/class_test.h"
#include "tests/system/support/hosted_effect.h"

namespace korva::test {
namespace {

using published::APO_CONNECTION_PROPERTY;
using Samples = std::vector<float>;

/// What a module is told of a block beside its samples.
struct BlockFacts {
    std::uint32_t maxChannels = 0;
    std::uint32_t maxFrames = 0;
    std::uint32_t inChannels = 0;
    std::uint32_t outChannels = 0;
    std::uint32_t frames = 0;
    std::uint32_t reserved = 0;
};

std::vector<BlockFacts> blocksOf(const HostedEffect& effect) {
    std::vector<BlockFacts> blocks;
    for (const RecordedCall& call : callsOf("process", effect.recording.calls())) {
        const auto bytes = call.bytes("block").value();
        EXPECT_EQ(bytes.size(), sizeof(BlockFacts));
        std::memcpy(&blocks.emplace_back(), bytes.data(), sizeof(BlockFacts));
    }
    return blocks;
}

std::size_t linesWith(const std::string& beginning, const std::vector<std::string>& lines) {
    return static_cast<std::size_t>(
        std::ranges::count_if(lines, [&](const std::string& line) { return line.starts_with(beginning); }));
}

class EngineStream : public testing::TestWithParam<ClassFacts> {
protected:
    /// An object with the engine.
    void begin(const char* engineId = engine::third, const GUID& mode = mode::standard) {
        effect.install(GetParam(), engineId);
        EXPECT_EQ(effect.initialize(object, mode), result::ok);
    }

    HostedEffect effect;
    HostedObject object{effect.library, GetParam()};
};

TEST_P(EngineStream, GoesThroughTheModule) {
    begin();
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    EXPECT_EQ(object.play(Samples{1.0f, 0.5f}, 2, 2), (Samples{0.5f, 0.25f}));
    EXPECT_EQ(effect.count("process"), 1U);
}

TEST_P(EngineStream, BeginsWithTheFirstLockAndNotBefore) {
    begin();
    EXPECT_EQ(effect.count("Create"), 1U);
    EXPECT_EQ(effect.count("Initialize"), 0U);
    static_cast<void>(object.play(Samples{1.0f, 1.0f}, 2, 2));
    EXPECT_EQ(effect.count("process"), 0U);
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    EXPECT_EQ(effect.count("Initialize"), 1U);
}

TEST_P(EngineStream, IsCutIntoBlocks) {
    begin();
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    const Samples samples(2000, 1.0f);
    EXPECT_EQ(object.play(samples, 2, 2), Samples(2000, 0.5f));
    EXPECT_EQ(object.play(Samples(1024, 1.0f), 2, 2), Samples(1024, 0.5f));
    static_cast<void>(object.play(Samples{}, 2, 2));
    const auto blocks = blocksOf(effect);
    ASSERT_EQ(blocks.size(), 3U);
    EXPECT_EQ(blocks[0].frames, 512U);
    EXPECT_EQ(blocks[1].frames, 488U);
    EXPECT_EQ(blocks[2].frames, 512U);
    for (const BlockFacts& block : blocks) {
        EXPECT_EQ(block.maxChannels, 8U);
        EXPECT_EQ(block.maxFrames, 512U);
        EXPECT_EQ(block.inChannels, 2U);
        EXPECT_EQ(block.outChannels, 2U);
        EXPECT_EQ(block.reserved, 0U);
    }
}

TEST_P(EngineStream, InPlaceIsTheSame) {
    begin();
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    Samples samples(2000, 1.0f);
    APO_CONNECTION_PROPERTY input = bufferOf(samples, 1000);
    APO_CONNECTION_PROPERTY output = bufferOf(samples, 0);
    object.process(input, output);
    EXPECT_EQ(samples, Samples(2000, 0.5f));
}

TEST_P(EngineStream, OfSilenceStillGoesThroughTheModuleAndCountsAsSound) {
    begin();
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    Samples samples(20, 1.0f);
    Samples played(20, 7.0f);
    APO_CONNECTION_PROPERTY input = bufferOf(samples, 10, 2);
    APO_CONNECTION_PROPERTY output = bufferOf(played, 0, 0);
    object.process(input, output);
    EXPECT_EQ(played, Samples(20, 0.0f));
    EXPECT_EQ(output.u32BufferFlags, 1U);
    EXPECT_EQ(effect.count("process"), 1U);
}

TEST_P(EngineStream, IntoSilenceSkipsTheModule) {
    begin();
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    Samples samples(20, 1.0f);
    APO_CONNECTION_PROPERTY input = bufferOf(samples, 10);
    APO_CONNECTION_PROPERTY output = bufferOf({}, 0);
    object.process(input, output);
    EXPECT_EQ(effect.count("process"), 0U);
    EXPECT_EQ(output.u32BufferFlags, 2U);
}

TEST_P(EngineStream, InRawModeGoesThroughTheModuleOfAnEndpointEffectOnly) {
    begin(engine::third, mode::raw);
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    static_cast<void>(object.play(Samples{1.0f, 1.0f}, 2, 2));
    EXPECT_EQ(effect.count("process"), GetParam().clsid == endpointClass.clsid ? 1U : 0U);
}

TEST_P(EngineStream, GetsEachParameterOnceAndTheFlagTwice) {
    begin();
    static_cast<void>(effect.newCalls());
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    const auto calls = effect.newCalls();
    // 48 of the third engine's 58 parameters have a value to begin with, the flag among them.
    EXPECT_EQ(linesWith("SetParameter", calls), 48U + 1 + 1);
    EXPECT_EQ(linesWith("SetParameter #1 -1:-18 ", calls), 2U);
    EXPECT_EQ(linesWith("SetParameter #1 4:24 ", calls), 1U) << "the volume, whatever modules there are";
}

TEST_P(EngineStream, LockedAgainWithOtherChannelsIsClearedAndNotInitialisedAgain) {
    begin();
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    ASSERT_EQ(object.unlock(), result::ok);
    static_cast<void>(effect.newCalls());
    ASSERT_EQ(object.lock(floats(6)), result::ok);
    const auto calls = effect.newCalls();
    EXPECT_EQ(linesWith("Initialize", calls), 0U);
    EXPECT_EQ(linesWith("Uninitialize", calls), 0U);
    EXPECT_EQ(linesWith("SetParameter", calls), 0U);
    EXPECT_EQ(linesWith("Clear #1 -1", calls), 1U);
    EXPECT_EQ(object.play(Samples(6, 1.0f), 6, 6), Samples(6, 0.5f));
    EXPECT_EQ(blocksOf(effect).back().inChannels, 6U);
    EXPECT_EQ(blocksOf(effect).back().outChannels, 6U);
}

TEST_P(EngineStream, LockedAgainAtAnotherRateIsInitialisedAgain) {
    begin();
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    ASSERT_EQ(object.unlock(), result::ok);
    ASSERT_EQ(object.lock(floats(2, 44100)), result::ok);
    EXPECT_EQ(effect.count("Initialize"), 2U);
    EXPECT_EQ(effect.count("Uninitialize"), 1U);
    EXPECT_EQ(effect.count("Create"), 1U);
}

TEST_P(EngineStream, UnlockedLeavesTheModuleAsItIs) {
    begin();
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    static_cast<void>(effect.newCalls());
    ASSERT_EQ(object.unlock(), result::ok);
    EXPECT_EQ(effect.newCalls(), std::vector<std::string>{});
    EXPECT_EQ(object.play(Samples{1.0f, 1.0f}, 2, 2), (Samples{0.5f, 0.5f})) << "a late buffer";
}

TEST_P(EngineStream, ThatFailsToLockLeavesTheModuleAsItIs) {
    begin();
    static_cast<void>(effect.newCalls());
    EXPECT_EQ(object.lock(floats(2), floats(2, 48000.25f)), result::connectionFormatInvalid);
    EXPECT_EQ(linesWith("Initialize", effect.newCalls()), 0U);
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    EXPECT_EQ(object.play(Samples{1.0f, 1.0f}, 2, 2), (Samples{0.5f, 0.5f}));
}

TEST_P(EngineStream, EndsWithTheLastReferenceAndNotLater) {
    const std::size_t threads = [&] {
        object.release();
        return threadCountAtRest();
    }();
    HostedObject other(effect.library, GetParam());
    effect.install(GetParam());
    ASSERT_EQ(effect.initialize(other), result::ok);
    ASSERT_EQ(other.lock(floats(2)), result::ok);
    static_cast<void>(effect.newCalls());
    EXPECT_GT(threadCount(), threads);
    EXPECT_EQ(other.release(), 0U);
    EXPECT_EQ(effect.newCalls(), (std::vector<std::string>{"Uninitialize #1", "Free #1", "Unload PELLUX64"}));
    EXPECT_EQ(effect.library.canUnloadNow(), result::ok);
    // The system may count a thread for a moment after its end.
    EXPECT_TRUE(waitUntil([&] { return threadCount() == threads; }));
}

KORVA_OF_EACH_CLASS(EngineStream);

class EngineWithoutModule : public testing::Test {
protected:
    EngineWithoutModule() {
        effect.install(streamClass, engine::withoutModule);
        EXPECT_EQ(effect.initialize(object), result::ok);
    }

    HostedEffect effect;
    HostedObject object{effect.library, streamClass};
};

TEST_F(EngineWithoutModule, PassesPlanesAndFoldsNothing) {
    ASSERT_EQ(object.lock(floats(1, 48000, 0x4), floats(2)), result::ok);
    EXPECT_EQ(object.play(Samples{1.0f}, 1, 2), (Samples{0.0f, 0.0f}));
    ASSERT_EQ(object.unlock(), result::ok);
    ASSERT_EQ(object.lock(floats(8), floats(2)), result::ok);
    EXPECT_EQ(object.play(Samples{1, 2, 3, 4, 5, 6, 7, 8}, 8, 2), (Samples{1, 2}));
    EXPECT_EQ(effect.calls(), std::vector<std::string>{});
}

TEST(EngineModules, ThatAreNotThereLeaveAnEngineThatPassesPlanes) {
    HostedEffect effect;
    HostedObject object(effect.library, streamClass);
    for (const auto& entry : std::filesystem::directory_iterator(effect.library.folder())) {
        if (entry.path() != effect.library.path()) {
            std::filesystem::remove(entry.path());
        }
    }
    effect.install(streamClass);
    ASSERT_EQ(effect.initialize(object), result::ok);
    ASSERT_EQ(object.lock(floats(1, 48000, 0x4), floats(2)), result::ok);
    EXPECT_EQ(object.play(Samples{1.0f}, 1, 2), (Samples{0.0f, 0.0f}));
}

TEST(EngineModules, ThatMakeNoInstanceLeaveAnEngineThatPassesPlanes) {
    HostedEffect effect("create=null");
    HostedObject object(effect.library, streamClass);
    effect.install(streamClass);
    ASSERT_EQ(effect.initialize(object), result::ok);
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    EXPECT_EQ(object.play(Samples{1, 2}, 2, 2), (Samples{1, 2}));
}

TEST(EngineModules, OfTheHardwareAreHeardWhereItIsThere) {
    HostedEffect effect("hardware=1");
    HostedObject object(effect.library, endpointClass);
    effect.install(endpointClass, engine::first, 1);
    ASSERT_EQ(effect.initialize(object), result::ok);
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    EXPECT_EQ(object.play(Samples{1, 2}, 2, 2), (Samples{0.5f, 1}));
    EXPECT_EQ(callsOf("process", effect.recording.calls()).back().module, "DRIVOL64");
}

TEST(EngineModules, OfFloatsAreHeardWhereTheHardwareIsNotThere) {
    HostedEffect effect("hardware=0");
    HostedObject object(effect.library, endpointClass);
    effect.install(endpointClass, engine::first, 1);
    ASSERT_EQ(effect.initialize(object), result::ok);
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    EXPECT_EQ(object.play(Samples{1, 2}, 2, 2), (Samples{0.5f, 1}));
    EXPECT_EQ(callsOf("process", effect.recording.calls()).back().module, "TANMER64");
}

}  // namespace
}  // namespace korva::test
