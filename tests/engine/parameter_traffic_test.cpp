// How what is set reaches the module while its engine runs.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "params/effect_keys.h"
#include "params/property_set_path.h"
#include "platform/property_key.h"
#include "platform/registry.h"
#include "tests/engine/effect_test.h"
#include "tests/support/byte_list.h"
#include "tests/support/wait_until.h"

namespace korva::engine {
namespace {

using params::Parameter;
using test::bytes;
using test::Lines;
using test::sharedBytes;

// Of the third engine's parameters: what their numbers stand for here.
constexpr int byteOfPolicy0 = -39;  // The first one of all, so the first slice of the first chunk.
constexpr int byteOfPolicy1 = -38;  // The second.
constexpr int byteOfPolicy2 = -17;
constexpr int withoutBytes = -26;

class ParameterTraffic : public test::EffectTest {
protected:
    [[nodiscard]] static PROPERTYKEY chunkKey(std::uint32_t index) {
        return {test::effectGuid(1), params::effect_property::firstChunk + index};
    }
    void setPreset(int id, std::span<const std::byte> value) {
        setLayer(-1, id, &Parameter::PresetValue, value);
    }
    /// Reads a chunk as it is in the store now, before anybody else gets to it.
    bool readChunk(std::uint32_t index) {
        bool isRead = false;
        rig.on([&] {
            isRead = (*rig.core().chunkReaders.value())[index]->Read(rig.core().userStore.value().get());
        });
        return isRead;
    }
    [[nodiscard]] EngineControls controls() {
        EngineControls copy;
        rig.on([&] { copy = rig.core().engineControls(); });
        return copy;
    }
    [[nodiscard]] bool soundPasses() { return play({1.0f, 0.5f}) == std::vector<float>{0.5f, 0.25f}; }
};

TEST_F(ParameterTraffic, OneChangeIsOneCallAndEachInItsTurn) {
    beginStream();
    setPreset(byteOfPolicy0, bytes(1));
    setPreset(-32, bytes(1, 2, 3, 4));
    setPreset(byteOfPolicy0, bytes(2));
    EXPECT_EQ(newCalls(), (Lines{"SetParameter #1 -1:-39 01", "SetParameter #1 -1:-32 01020304",
                                 "SetParameter #1 -1:-39 02"}));
}

TEST_F(ParameterTraffic, EqualBytesAreNotSentAgain) {
    beginStream();
    setPreset(byteOfPolicy0, bytes(1));
    setPreset(byteOfPolicy0, bytes(1));
    setLayer(-1, byteOfPolicy0, &Parameter::OverrideTop, bytes(1));
    EXPECT_EQ(newCalls(), Lines{"SetParameter #1 -1:-39 01"});
}

TEST_F(ParameterTraffic, BytesGoAsTheyAreWhateverTheirNumber) {
    beginStream();
    setPreset(byteOfPolicy0, bytes(1, 2, 3));
    setLayer(0, 1, &Parameter::PresetValue, bytes(9));
    EXPECT_EQ(newCalls(), (Lines{"SetParameter #1 -1:-39 010203", "SetParameter #1 0:1 09"}));
}

TEST_F(ParameterTraffic, NothingIsSentOfAParameterThatLosesItsBytes) {
    beginStream();
    setPreset(withoutBytes, bytes(7));
    setPreset(withoutBytes, {});
    EXPECT_EQ(newCalls(), Lines{"SetParameter #1 -1:-26 07"});
    EXPECT_TRUE(effective(-1, withoutBytes).empty());
    setPreset(withoutBytes, bytes(7));
    EXPECT_EQ(newCalls(), Lines{"SetParameter #1 -1:-26 07"});
}

TEST_F(ParameterTraffic, ALayerThatGoesBringsBackTheOneBelow) {
    beginStream();
    setPreset(byteOfPolicy0, bytes(7));
    setPreset(byteOfPolicy0, {});
    EXPECT_EQ(newCalls(), (Lines{"SetParameter #1 -1:-39 07", "SetParameter #1 -1:-39 00"}));
}

TEST_F(ParameterTraffic, OverridesThatAreSetReachTheModuleByTheirRank) {
    beginStream();
    setLayer(-1, byteOfPolicy0, &Parameter::OverrideLow, bytes(1));
    setPreset(byteOfPolicy0, bytes(2));
    setLayer(-1, byteOfPolicy0, &Parameter::OverrideMid, bytes(3));
    setLayer(-1, byteOfPolicy0, &Parameter::OverrideTop, bytes(4));
    setLayer(-1, byteOfPolicy0, &Parameter::OverrideMid, bytes(5));
    EXPECT_EQ(newCalls(), (Lines{"SetParameter #1 -1:-39 01", "SetParameter #1 -1:-39 02",
                                 "SetParameter #1 -1:-39 03", "SetParameter #1 -1:-39 04"}));
}

TEST_F(ParameterTraffic, OfPolicy1NoPresetIsSent) {
    beginStream();
    setPreset(byteOfPolicy1, bytes(1));
    setLayer(-1, byteOfPolicy1, &Parameter::OverrideMid, bytes(2));
    EXPECT_EQ(newCalls(), Lines{});
    setLayer(-1, byteOfPolicy1, &Parameter::OverrideLow, bytes(3));
    setLayer(-1, byteOfPolicy1, &Parameter::OverrideTop, bytes(4));
    EXPECT_EQ(newCalls(), (Lines{"SetParameter #1 -1:-38 03", "SetParameter #1 -1:-38 04"}));
}

TEST_F(ParameterTraffic, OfPolicy2NoLowOverrideIsSent) {
    beginStream();
    setLayer(-1, byteOfPolicy2, &Parameter::OverrideLow, bytes(1));
    EXPECT_EQ(newCalls(), Lines{});
    setPreset(byteOfPolicy2, bytes(2));
    setLayer(-1, byteOfPolicy2, &Parameter::OverrideMid, bytes(3));
    EXPECT_EQ(newCalls(), (Lines{"SetParameter #1 -1:-17 02", "SetParameter #1 -1:-17 03"}));
}

TEST_F(ParameterTraffic, BeforeTheFirstStreamChangesWaitForTheStart) {
    begin();
    static_cast<void>(newCalls());
    setPreset(byteOfPolicy0, bytes(7));
    EXPECT_EQ(newCalls(), Lines{});
    rig.lock();
    const Lines calls = newCalls();
    EXPECT_EQ(std::ranges::count(calls, "SetParameter #1 -1:-39 07"), 1);
    EXPECT_EQ(std::ranges::count(calls, "SetParameter #1 -1:-39 00"), 0);
}

TEST_F(ParameterTraffic, AfterAnUnlockChangesGoOn) {
    beginStream();
    rig.unlock();
    setPreset(byteOfPolicy0, bytes(7));
    EXPECT_EQ(newCalls(), Lines{"SetParameter #1 -1:-39 07"});
}

TEST_F(ParameterTraffic, OfAnEngineThatWasStoppedNothingIsSent) {
    beginStream();
    rig.core().engineAllowed.set(false);
    static_cast<void>(newCalls());
    setPreset(byteOfPolicy0, bytes(7));
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(ParameterTraffic, ParametersOfAnEarlierEffectAreHeardOfNoMore) {
    beginStream();
    const auto earlier = rig.core().parameterSet.read();
    rig.install({.fxId = test::effectGuid(2), .engineId = test::firstEngine});
    rig.on([&] { rig.core().onEffectsProperty(rig.fxIdKey()); });
    static_cast<void>(newCalls());
    rig.on([&] { earlier->find(params::baseModuleIndex, byteOfPolicy0)->OverrideTop.set(sharedBytes(7)); });
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(ParameterTraffic, ControlsAreCopiedAsTheyAreSent) {
    begin();
    EXPECT_EQ(controls(), (EngineControls{50.0f, 0.707f, 1.0f, 0}));
    rig.lock();
    EXPECT_EQ(controls(), (EngineControls{0.0f, 0.0f, 0.0f, 0}));
    setPreset(-27, bytes(0, 0, 0x80, 0x3F));
    setPreset(-28, bytes(0, 0, 0, 0x40));
    setPreset(-31, bytes(0, 0, 0x40, 0x40));
    setPreset(-32, bytes(1, 2, 3, 0x84));
    EXPECT_EQ(controls(), (EngineControls{1.0f, 2.0f, 3.0f, 0x84030201}));
}

TEST_F(ParameterTraffic, ControlsOf3And5BytesAreSentAndCopiedAs0) {
    beginStream();
    setPreset(-27, bytes(0, 0, 0x80, 0x3F));
    setPreset(-32, bytes(1, 2, 3, 4));
    static_cast<void>(newCalls());
    setPreset(-27, bytes(0, 0x80, 0x3F));
    setPreset(-32, bytes(1, 2, 3, 4, 5));
    EXPECT_EQ(newCalls(), (Lines{"SetParameter #1 -1:-27 00803f", "SetParameter #1 -1:-32 0102030405"}));
    EXPECT_EQ(controls(), (EngineControls{0.0f, 0.0f, 0.0f, 0}));
}

TEST_F(ParameterTraffic, AControlThatLosesItsBytesIsCopiedAsTheDefaultThatIsSent) {
    beginStream();
    setPreset(-31, bytes(0, 0, 0x80, 0x3F));
    setPreset(-31, {});
    EXPECT_EQ(controls().parameter31, 0.0f);
}

TEST_F(ParameterTraffic, APresetThatIsThereGoesWithTheStart) {
    rig.setBlob(chunkKey(0), bytes(0, 0, 0, 0, 7, 8));
    begin();
    static_cast<void>(newCalls());
    rig.lock();
    const Lines calls = newCalls();
    EXPECT_EQ(calls[4], "SetParameter #1 -1:-39 07");
    EXPECT_EQ(calls[5], "SetParameter #1 -1:-38 00");
}

TEST_F(ParameterTraffic, APresetWrittenByAnotherProgramReachesTheModule) {
    beginStream();
    rig.setBlob(chunkKey(0), bytes(0, 0, 0, 0, 7));
    EXPECT_TRUE(test::waitUntil([&] { return effective(-1, byteOfPolicy0) == sharedBytes(7); }));
    EXPECT_EQ(newCalls(), Lines{"SetParameter #1 -1:-39 07"});
}

TEST_F(ParameterTraffic, APresetInTheLastChunkReachesTheModule) {
    beginStream();
    std::uint32_t last = 0;
    rig.on([&] { last = static_cast<std::uint32_t>(rig.core().chunkReaders.value()->size() - 1); });
    rig.setBlob(chunkKey(last), bytes(0, 0, 1, 0, 0, 0, 2, 0, 0xAB, 0xCD));
    rig.on([&] { rig.core().onEffectsProperty(chunkKey(last)); });
    Lines calls;
    EXPECT_TRUE(test::waitUntil([&] { return !(calls = newCalls()).empty(); }));
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_TRUE(calls[0].ends_with(" abcd")) << calls[0];
}

TEST_F(ParameterTraffic, ABlobThatIsDeletedLeavesItsValues) {
    rig.setBlob(chunkKey(0), bytes(0, 0, 0, 0, 7));
    beginStream();
    rig.remove(chunkKey(0));
    EXPECT_FALSE(readChunk(0));
    EXPECT_EQ(effective(-1, byteOfPolicy0), sharedBytes(7));
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(ParameterTraffic, ABlobOf3BytesLeavesTheValuesOfTheOneBefore) {
    rig.setBlob(chunkKey(0), bytes(0, 0, 0, 0, 7));
    beginStream();
    rig.setBlob(chunkKey(0), bytes(0, 0, 0));
    EXPECT_FALSE(readChunk(0));
    EXPECT_EQ(effective(-1, byteOfPolicy0), sharedBytes(7));
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(ParameterTraffic, ABlobOfAnotherTypeLeavesTheValuesOfTheOneBefore) {
    rig.setBlob(chunkKey(0), bytes(0, 0, 0, 0, 7));
    beginStream();
    rig.setText(chunkKey(0), "not a blob at all");
    EXPECT_FALSE(readChunk(0));
    rig.setNumber(chunkKey(0), 0x09000000);
    EXPECT_FALSE(readChunk(0));
    rig.setTexts(chunkKey(0), {"neither"});
    EXPECT_FALSE(readChunk(0));
    rig.setBlob(chunkKey(0), {});
    EXPECT_FALSE(readChunk(0));
    EXPECT_EQ(newCalls(), Lines{});
    EXPECT_TRUE(soundPasses());
}

/// A blob that is read, but not as its writer thought.
struct OddBlob {
    std::string_view what;
    std::vector<std::byte> blob;
    Lines sent;
};

TEST_F(ParameterTraffic, BlobsOfEveryWrongFormLeaveSoundPassing) {
    const OddBlob odd[] = {
        {"no slices", bytes(0, 0, 0, 0), {}},
        {"one slice", bytes(0, 0, 0, 0, 1), {"SetParameter #1 -1:-39 01"}},
        {"a head that nobody interprets", bytes(0xFF, 0xFF, 0, 0, 2), {"SetParameter #1 -1:-39 02"}},
        {"an override past the chunk", bytes(0, 0, 1, 0, 0xFF, 0xFF, 9, 0, 3), {"SetParameter #1 -1:-39 03"}},
        {"more overrides than bytes", bytes(0, 0, 0xFF, 0xFF, 4), {"SetParameter #1 -1:-39 04"}},
        {"a slice that is longer than the blob", bytes(0, 0, 1, 0, 0, 0, 0xFF, 0xFF, 5), {}},
        {"a slice of more than its size",
         bytes(0, 0, 1, 0, 0, 0, 3, 0, 6, 6, 6),
         {"SetParameter #1 -1:-39 060606"}},
        {"a slice of no bytes", bytes(0, 0, 1, 0, 0, 0, 0, 0), {"SetParameter #1 -1:-39 00"}},
        {"two overrides of one", bytes(0, 0, 2, 0, 0, 0, 9, 0, 0, 0, 1, 0, 7), {"SetParameter #1 -1:-39 07"}},
    };
    beginStream();
    for (const OddBlob& blob : odd) {
        rig.setBlob(chunkKey(0), blob.blob);
        EXPECT_TRUE(readChunk(0)) << blob.what;
        EXPECT_EQ(newCalls(), blob.sent) << blob.what;
        EXPECT_TRUE(soundPasses()) << blob.what;
    }
}

TEST_F(ParameterTraffic, AnOverlongBlobIsReadAsFarAsThereAreParameters) {
    beginStream();
    std::vector<std::byte> blob = bytes(0, 0, 0, 0);
    blob.resize(60000, std::byte{1});
    rig.setBlob(chunkKey(0), blob);
    EXPECT_TRUE(readChunk(0));
    const Lines calls = newCalls();
    EXPECT_EQ(calls.front(), "SetParameter #1 -1:-39 01");
    EXPECT_TRUE(std::ranges::all_of(
        calls, [](const std::string& call) { return call.starts_with("SetParameter #1 "); }));
    EXPECT_LT(calls.size(), 48U);
    EXPECT_TRUE(soundPasses());
}

TEST_F(ParameterTraffic, NoModuleIsNeededForIt) {
    rig.recording.answer("create=null");
    beginStream();
    setPreset(-27, bytes(0, 0, 0x80, 0x3F));
    EXPECT_EQ(controls().parameter27, 1.0f);
    EXPECT_EQ(newCalls(), Lines{});
}

}  // namespace
}  // namespace korva::engine
