#include "korva/host/audio_object.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "apo/effect_class.h"
#include "korva/host/audio_object_library.h"
#include "platform/com_apartment.h"
#include "tests/host/expected_error.h"
#include "tests/support/own_registry.h"
#include "tests/support/seeded_endpoint.h"

namespace korva::tool {
namespace {

using platform::Reference;
using test::failsWith;

constexpr SoundFormat stereo = {48000, 2, 0x3};
constexpr SoundFormat surround = {48000, 8, 0x63F};

class HostedObject : public testing::Test {
protected:
    explicit HostedObject(const apo::EffectClass& effect = apo::streamEffect)
        : classId(effect.record.clsid), object(library.createObject(classId)) {}

    void initialize(Generation generation = Generation::second) {
        object.initialize(classId, generation, nullptr);
    }

    /// A buffer with every sample at one level, and what becomes of it.
    std::vector<float> played(EngineBuffers& buffers, float level) {
        std::ranges::fill(buffers.input(), level);
        object.process(buffers, buffers.maxFrames());
        return {buffers.output().begin(), buffers.output().end()};
    }

    const platform::ComApartment apartment;
    const AudioObjectLibrary library{KORVA_LIBRARY};
    const CLSID classId;
    AudioObject object;
};

class HostedModeEffect : public HostedObject {
protected:
    HostedModeEffect() : HostedObject(apo::modeEffect) {}
};

TEST_F(HostedObject, PassesSoundWhoseFormatStays) {
    initialize();
    EngineBuffers buffers(stereo, stereo, 100);
    object.lock(buffers);
    EXPECT_EQ(played(buffers, 0.5F), std::vector<float>(200, 0.5F));
    object.unlock();
}

TEST_F(HostedObject, FoldsSoundWhoseFormatChanges) {
    initialize();
    EngineBuffers buffers(surround, stereo, 100);
    object.lock(buffers);
    const std::vector<float> folded = played(buffers, 0.25F);
    EXPECT_EQ(folded.size(), 200U);
    EXPECT_GT(folded[0], 0.5F);
    EXPECT_EQ(std::ranges::count(folded, folded[0]), 200);
}

TEST_F(HostedObject, ProcessesTheBeginningOfItsBuffersOnly) {
    initialize();
    EngineBuffers buffers(surround, stereo, 100);
    object.lock(buffers);
    std::ranges::fill(buffers.input(), 0.5F);
    std::ranges::fill(buffers.output(), 7.0F);
    object.process(buffers, 30);
    EXPECT_EQ(std::ranges::count(buffers.output(), 7.0F), 140);
    EXPECT_EQ(buffers.output(30).size(), 60U);
}

TEST_F(HostedObject, IsSetUpByEitherGeneration) {
    initialize(Generation::second);
    initialize(Generation::third);
    EngineBuffers buffers(stereo, stereo, 10);
    object.lock(buffers);
    EXPECT_EQ(played(buffers, 0.5F), std::vector<float>(20, 0.5F));
}

TEST_F(HostedObject, IsSetUpForAnEndpoint) {
    const test::OwnRegistry registry;
    const test::SeededEndpoint seeded;
    const Reference<IMMDevice> endpoint = findEndpoint(seeded.id());
    if (!endpoint) {
        GTEST_SKIP() << "the system has no such device";
    }
    for (const Generation generation : {Generation::second, Generation::third}) {
        object.initialize(classId, generation, endpoint.get());
        object.notifyVolume(0.5F);
        object.notifyEffectProperty({{}, 0});
        object.reset();
    }
}

TEST_F(HostedObject, OfAnUnknownEndpointHasNoDevice) {
    EXPECT_FALSE(findEndpoint("nobody's"));
    EXPECT_FALSE(findEndpoint(""));
}

TEST_F(HostedObject, CanBeToldOfChangesWithoutAnEndpoint) {
    initialize();
    object.notifyVolume(0.5F);
    object.notifyEffectProperty({{}, 0});
    object.reset();
}

TEST_F(HostedObject, IsLockedOnce) {
    initialize();
    EngineBuffers buffers(stereo, stereo, 10);
    object.lock(buffers);
    EXPECT_TRUE(
        failsWith([&] { object.lock(buffers); }, {"can't be locked", "0x887d000a", "already locked"}));
    object.unlock();
    EXPECT_TRUE(failsWith([&] { object.unlock(); }, {"can't be unlocked", "0x887d0006", "already unlocked"}));
}

TEST_F(HostedObject, TakesAnotherStreamAfterOne) {
    initialize();
    for (const SoundFormat& format : {stereo, surround, stereo}) {
        EngineBuffers buffers(format, format, 10);
        object.lock(buffers);
        EXPECT_EQ(played(buffers, 0.5F), std::vector<float>(std::size_t{10} * format.channels, 0.5F));
        object.unlock();
    }
}

TEST_F(HostedModeEffect, KeepsItsNumberOfChannels) {
    initialize();
    EngineBuffers buffers(surround, stereo, 10);
    EXPECT_TRUE(failsWith([&] { object.lock(buffers); }, {"can't be locked", "0x887d0009"}));
}

TEST_F(HostedModeEffect, TakesNoOtherRate) {
    initialize();
    EngineBuffers buffers(stereo, {44100, 2, 0x3}, 10);
    EXPECT_TRUE(failsWith([&] { object.lock(buffers); }, {"refuses these formats"}));
}

TEST(HostedObjects, LackingAFaceAreRefused) {
    const AudioObjectLibrary library(KORVA_LIBRARY);
    class Bare final : public platform::CountedObject<IUnknown> {
        ~Bare() override = default;
    };
    const Reference<IUnknown> bare(new Bare);
    EXPECT_TRUE(failsWith([&] { const AudioObject object(bare); },
                          {"IAudioProcessingObject", "0x80004002", "no such interface"}));
}

}  // namespace
}  // namespace korva::tool
