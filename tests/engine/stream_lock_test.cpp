// The life of a stream: what a lock takes over, and what an unlock leaves.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <new>
#include <string>
#include <vector>

#include "platform/counted_object.h"
#include "tests/engine/effect_test.h"
#include "tests/support/stream.h"

namespace korva::engine {
namespace {

using published::APO_CONNECTION_DESCRIPTOR;
using published::UNCOMPRESSEDAUDIOFORMAT;
using test::LockedConnection;

UNCOMPRESSEDAUDIOFORMAT formatOf(DWORD channels, float rate, DWORD mask = 0) {
    return {published::ieeeFloatFormat, channels, 4, 32, rate, mask};
}

class StreamLock : public test::EffectTest {
protected:
    using Descriptors = std::vector<APO_CONNECTION_DESCRIPTOR*>;

    /// A new stream of these formats.
    void relock(const UNCOMPRESSEDAUDIOFORMAT& in, const UNCOMPRESSEDAUDIOFORMAT& out) {
        rig.unlock();
        LockedConnection input(in);
        LockedConnection output(out);
        EXPECT_EQ(rig.lockConnections(Descriptors{input.get()}, Descriptors{output.get()}), published::ok);
    }
    [[nodiscard]] std::uint32_t rateOf(float rate) {
        relock(formatOf(2, rate), formatOf(2, rate));
        return rig.core().sampleRate.read();
    }
    [[nodiscard]] rt::RtProcessor& section() { return rig.core().realtime(); }
};

TEST_F(StreamLock, WithoutAnIdentifierSucceedsAndFolds) {
    rig.lock({.channels = 1, .mask = 0x4}, {.channels = 2});
    EXPECT_EQ(play({1.0f, 0.5f}), (std::vector<float>{1.0f, 1.0f, 0.5f, 0.5f}));
}

TEST_F(StreamLock, HasNotBeenAndACallMarksItsOutputAndWritesNoSample) {
    begin();
    const std::vector<float> samples(960, 0.5f);
    std::vector<float> played(960, test::Stream::untouched);
    auto input = test::connectionTo(samples, 480);
    auto output = test::connectionTo(played, 0, published::BUFFER_INVALID);
    test::process(section(), input, output, 2);
    EXPECT_EQ(output.u32BufferFlags, published::BUFFER_VALID);
    EXPECT_EQ(output.u32ValidFrameCount, 480U);
    EXPECT_EQ(played, std::vector<float>(960, test::Stream::untouched));
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// Raises what a want of memory does.
class RaisingType final : public platform::CountedObject<published::IAudioMediaType> {
public:
    HRESULT STDMETHODCALLTYPE IsCompressedFormat(BOOL*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE IsEqual(published::IAudioMediaType*, DWORD*) override {
        return published::notImplemented;
    }
    const WAVEFORMATEX* STDMETHODCALLTYPE GetAudioFormat() override { return nullptr; }
    HRESULT STDMETHODCALLTYPE GetUncompressedAudioFormat(UNCOMPRESSEDAUDIOFORMAT*) override {
        throw std::bad_alloc();
    }
};

#pragma GCC diagnostic pop

TEST_F(StreamLock, ThatRaisesLeavesNoStreamLockedAndTheNextOneHasItsOwnFormats) {
    begin();
    relock(formatOf(8, 48000), formatOf(8, 48000));
    rig.unlock();
    const platform::Reference<RaisingType> raising(new RaisingType);
    APO_CONNECTION_DESCRIPTOR connection{};
    connection.pFormat = raising.get();
    const Descriptors connections{&connection};
    EXPECT_THROW(static_cast<void>(rig.lockConnections(connections, connections)), std::bad_alloc);
    EXPECT_FALSE(rig.core().locked.read());
    relock(formatOf(2, 48000), formatOf(2, 48000));
    EXPECT_EQ(rig.core().inFormat.read().channelCount, 2);
    EXPECT_EQ(section().outputChannelCount.get(), 2);
}

TEST_F(StreamLock, TakesOverFormatsWithMasksAsTheyAreMended) {
    EffectCore& core = rig.core();
    relock(formatOf(1, 48000, 0x3), formatOf(4, 48000, 0x33));
    EXPECT_EQ(core.sampleRate.read(), 48000U);
    EXPECT_EQ(core.inChannelMask.read(), 0x1U);
    EXPECT_EQ(core.inputChannelCount.read(), 1U);
    EXPECT_EQ(core.outChannelMask.read(), 0x33U);
    EXPECT_EQ(core.outputChannelCount.read(), 4U);
    EXPECT_EQ(core.dspInChannelMask.read(), 0x1U);
    EXPECT_EQ(core.dspInputChannelCount.read(), 1U);
    EXPECT_EQ(core.dspOutChannelMask.read(), 0x33U);
    EXPECT_EQ(core.dspOutputChannelCount.read(), 4U);
    EXPECT_EQ(core.inFormat.read().channelMask, 0x1U);
    EXPECT_EQ(core.outFormat.read().channelCount, 4);
    relock(formatOf(2, 48000), formatOf(2, 48000, 0x7));
    EXPECT_EQ(core.inChannelMask.read(), 0x3U);
    EXPECT_EQ(core.outChannelMask.read(), 0x3U);
}

TEST_F(StreamLock, GivesTheAudioThreadTheSame) {
    relock(formatOf(1, 48000, 0x3), formatOf(4, 48000, 0x33));
    EXPECT_EQ(section().inputChannelCount.get(), 1);
    EXPECT_EQ(section().outputChannelCount.get(), 4);
    EXPECT_EQ(section().outputChannelMask.get(), 0x33U);
    EXPECT_TRUE(section().inFormat.get() == rig.core().inFormat.read());
    EXPECT_TRUE(section().outFormat.get() == rig.core().outFormat.read());
}

TEST_F(StreamLock, RoundsRatesHalvesUp) {
    EXPECT_EQ(rateOf(44099.5f), 44100U);
    EXPECT_EQ(rateOf(44100.4375f), 44100U);
    EXPECT_EQ(rateOf(44100.5f), 44101U);
    EXPECT_EQ(rateOf(0.25f), 0U);
}

TEST_F(StreamLock, TakesARateThatIsNoneForNone) {
    EXPECT_EQ(rateOf(-48000.0f), 0U);
    EXPECT_EQ(rateOf(std::numeric_limits<float>::quiet_NaN()), 0U);
    EXPECT_EQ(rateOf(-std::numeric_limits<float>::infinity()), 0U);
}

TEST_F(StreamLock, TakesTheInputsRateForTheStreams) {
    relock(formatOf(2, 44100), formatOf(2, 48000));
    EXPECT_EQ(rig.core().sampleRate.read(), 44100U);
    EXPECT_EQ(rig.core().outFormat.read().sampleRate, 48000U);
}

TEST_F(StreamLock, LooksAtTheFirstConnectionsOnly) {
    LockedConnection first(formatOf(2, 48000));
    LockedConnection second(formatOf(6, 96000));
    EXPECT_EQ(
        rig.lockConnections(Descriptors{first.get(), second.get()}, Descriptors{second.get(), first.get()}),
        published::ok);
    EXPECT_EQ(rig.core().sampleRate.read(), 48000U);
    EXPECT_EQ(rig.core().inputChannelCount.read(), 2U);
    EXPECT_EQ(rig.core().outputChannelCount.read(), 6U);
}

TEST_F(StreamLock, OfConnectionsThatDoNotTellSucceedsAndHasNoFormat) {
    APO_CONNECTION_DESCRIPTOR formatless{};
    LockedConnection failing(formatOf(2, 48000), published::unspecifiedFailure);
    const Descriptors odd[] = {{}, {nullptr}, {&formatless}, {failing.get()}};
    begin();
    for (const Descriptors& connections : odd) {
        rig.lock();
        rig.unlock();
        EXPECT_EQ(rig.lockConnections(connections, connections), published::ok);
        EXPECT_EQ(rig.core().sampleRate.read(), 0U);
        EXPECT_EQ(rig.core().inputChannelCount.read(), 0U);
        EXPECT_TRUE(rig.core().inFormat.read() == rt::EngineFormat{});
        EXPECT_TRUE(rig.core().outFormat.read() == rt::EngineFormat{});
        rig.unlock();
    }
    EXPECT_EQ(rig.core().presetLoadCount.read(), 4U) << "the engine stopped each time";
}

TEST_F(StreamLock, WhileLockedChangesNothingAndSucceeds) {
    rig.lock();
    LockedConnection other(formatOf(6, 96000));
    EXPECT_EQ(rig.lockConnections(Descriptors{other.get()}, Descriptors{other.get()}), published::ok);
    EXPECT_EQ(rig.core().sampleRate.read(), 48000U);
    EXPECT_EQ(rig.core().inputChannelCount.read(), 2U);
    EXPECT_EQ(section().inputChannelCount.get(), 2);
}

TEST_F(StreamLock, IsAValueUntilTheUnlock) {
    EXPECT_FALSE(rig.core().locked.read());
    rig.lock();
    EXPECT_TRUE(rig.core().locked.read());
    rig.unlock();
    EXPECT_FALSE(rig.core().locked.read());
    rig.unlock();
    EXPECT_FALSE(rig.core().locked.read());
}

TEST_F(StreamLock, IsForgottenByAnUnlockButForItsFormat) {
    rig.lock({.channels = 6, .rate = 44100, .mask = 0x3F});
    rig.unlock();
    EXPECT_EQ(rig.core().sampleRate.read(), 44100U);
    EXPECT_EQ(rig.core().inputChannelCount.read(), 6U);
}

/// What the other values are as the rate changes.
struct SeenAtTheRate {
    EffectCore& core;
    bool isLocked = false;
    rt::EngineFormat in{};
    rt::EngineFormat out{};
    std::uint32_t inputCount = 0;
    std::uint32_t outputMask = 0;

    static void look(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
                     const void*, framework::Reason) {
        auto& self = *static_cast<SeenAtTheRate*>(context);
        self.isLocked = self.core.locked.value();
        self.in = self.core.inFormat.value();
        self.out = self.core.outFormat.value();
        self.inputCount = self.core.inputChannelCount.value();
        self.outputMask = self.core.outChannelMask.value();
    }
};

TEST_F(StreamLock, SetsFormatsBeforeTheRateAndSingleNumbersBehindIt) {
    relock(formatOf(2, 48000), formatOf(2, 48000));
    SeenAtTheRate seen{rig.core()};
    rig.core().sampleRate.subscribe(&seen, nullptr, &SeenAtTheRate::look);
    relock(formatOf(6, 96000, 0x3F), formatOf(4, 96000, 0x33));
    rig.core().sampleRate.unsubscribe(&seen, nullptr, &SeenAtTheRate::look);
    EXPECT_TRUE(seen.isLocked);
    EXPECT_EQ(seen.in.channelCount, 6);
    EXPECT_EQ(seen.in.sampleRate, 96000U);
    EXPECT_EQ(seen.out.channelMask, 0x33U);
    EXPECT_EQ(seen.inputCount, 2U);
    EXPECT_EQ(seen.outputMask, 0x3U);
}

TEST_F(StreamLock, LetsLevelsFallByTheRate) {
    for (const float rate : {44100.0f, 48000.0f, 96000.0f}) {
        relock(formatOf(2, rate), formatOf(2, rate));
        const float ratio = 48000.0f / rate;
        EXPECT_EQ(section().meterReleaseFloor.get(), ratio * 1e-5f) << rate;
        EXPECT_EQ(section().meterReleaseGrowth.get(), ratio * 1.0003f) << rate;
    }
}

TEST_F(StreamLock, AndUnlockMakeTheNextBufferAStreamsFirst) {
    rig.lock();
    EXPECT_FALSE(section().started.get());
    play({1.0f, 1.0f});
    EXPECT_TRUE(section().started.get());
    rig.lock();
    EXPECT_FALSE(section().started.get()) << "a lock while locked";
    play({1.0f, 1.0f});
    rig.unlock();
    EXPECT_FALSE(section().started.get()) << "an unlock";
    play({1.0f, 1.0f});
    rig.unlock();
    EXPECT_TRUE(section().started.get()) << "an unlock of what isn't locked";
}

TEST_F(StreamLock, ForgetsTheLevelsOfTheStreamBefore) {
    section().levelMetersEnabled.set(1);
    rig.lock();
    play({1.0f, 0.5f});
    EXPECT_EQ(section().inputPeak[0].get(), 1.0f);
    rig.unlock();
    rig.lock();
    EXPECT_EQ(section().inputPeak[0].get(), 0.0f);
    EXPECT_EQ(section().outputPeak[1].get(), 0.0f);
    EXPECT_EQ(rig.core().inputLevelMeters.read(), PlaneLevels{});
    EXPECT_EQ(rig.core().outputLevelMeters.read(), PlaneLevels{});
}

/// All that a value of levels becomes.
struct SeenLevels {
    std::vector<PlaneLevels> levels;

    static void look(void* context, framework::ListenedTo&, framework::ActiveObject&, const void* published,
                     void*, const void*, framework::Reason) {
        static_cast<SeenLevels*>(context)->levels.push_back(*static_cast<const PlaneLevels*>(published));
    }
};

TEST_F(StreamLock, PublishesSilenceBeforeTheLevelsThatTheModuleToldLast) {
    begin();
    rig.recording.answer("data:-1:-36=0000803f");
    rig.lock();
    rig.unlock();
    rig.recording.answer("");
    SeenLevels seen;
    rig.core().dspInputLevelMeters.subscribe(&seen, nullptr, &SeenLevels::look);
    rig.lock();
    rig.core().dspInputLevelMeters.unsubscribe(&seen, nullptr, &SeenLevels::look);
    EXPECT_EQ(seen.levels, (std::vector<PlaneLevels>{{}, {1.0f}}));
}

TEST_F(StreamLock, TellsTheModuleWhetherToMeasure) {
    begin();
    section().levelMetersEnabled.set(5);
    rig.lock();
    const test::Lines calls = newCalls();
    EXPECT_EQ(std::ranges::count(calls, "SetGetData #1 -1:-38 in 01"), 1);
    EXPECT_EQ(std::ranges::count(calls, "SetGetData #1 -1:-38 in 00"), 0);
}

// 1.0 is 0000803f.
TEST_F(StreamLock, PublishesTheModulesLevelsWhateverItsCount) {
    std::string digits;
    for (int plane = 0; plane < 8; ++plane) {
        digits += "0000803f";
    }
    begin();
    rig.recording.answer("data:-1:-36=" + digits + ",data:-1:-37=" + digits + ",count:-1:-37=3");
    rig.lock();
    PlaneLevels full;
    full.fill(1.0f);
    EXPECT_EQ(rig.core().dspInputLevelMeters.read(), full);
    EXPECT_EQ(rig.core().dspOutputLevelMeters.read(), full);
    rig.unlock();
    rig.recording.answer("data:-1:-36=00000040");
    rig.lock();
    full[0] = 2.0f;
    EXPECT_EQ(rig.core().dspInputLevelMeters.read(), full) << "what it leaves stays";
}

/// What is heard of a stream by what its engine is.
class StreamSound : public test::EffectTest {
protected:
    static constexpr test::StreamFormat monoCenter = {.channels = 1, .mask = 0x4};

    void putModule(const std::string& library) {
        for (const auto& file : std::filesystem::directory_iterator(rig.modules.path())) {
            if (file.path().stem() == "PELLUX64") {
                std::filesystem::remove(file.path());
                break;
            }
        }
        rig.modules.putLibrary(std::filesystem::path(KORVA_TEST_MODULES) / (library + KORVA_MODULE_SUFFIX),
                               "PELLUX64");
    }
};

TEST_F(StreamSound, WithoutAnEngineIsFolded) {
    rig.begin();
    rig.lock(monoCenter);
    EXPECT_EQ(play({1.0f}), (std::vector<float>{1.0f, 1.0f}));
}

TEST_F(StreamSound, OfAnEngineWithoutAModuleIsNotFolded) {
    begin({.engineId = test::secondEngine});
    rig.lock(monoCenter);
    EXPECT_EQ(play({1.0f}), (std::vector<float>{0.0f, 0.0f}));
    rig.unlock();
    rig.lock({.channels = 8, .mask = 0x63F});
    EXPECT_EQ(play({1, 2, 3, 4, 5, 6, 7, 8}), (std::vector<float>{1, 2}));
}

TEST_F(StreamSound, OfAModuleIsWhatTheModuleMakesOfThePlanes) {
    begin();
    rig.lock(monoCenter);
    EXPECT_EQ(play({1.0f}), (std::vector<float>{0.0f, 0.0f}));
    rig.unlock();
    rig.lock();
    EXPECT_EQ(play({1.0f, 0.5f}), (std::vector<float>{0.5f, 0.25f}));
    EXPECT_TRUE(callsOf("Process", rig.recording.calls()).empty()) << "the export is for others";
}

TEST_F(StreamSound, OfAModuleThatExportsNoProcessPassesAsItIs) {
    putModule("lacking_Process");
    begin();
    rig.lock();
    EXPECT_EQ(play({1.0f, 0.5f}), (std::vector<float>{1.0f, 0.5f}));
}

}  // namespace
}  // namespace korva::engine
