// The audio thread beside the owner.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <filesystem>
#include <thread>
#include <vector>

#include "engine/dsp_engine.h"
#include "tests/engine/hosted_engine.h"
#include "tests/engine/planes.h"
#include "tests/support/loaded_library.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/own_folder.h"
#include "tests/support/recorded_calls.h"

namespace korva::engine {
namespace {

using framework::Held;
using test::Planes;

/// Plays blocks until it is told to end; counts those that didn't come out half as loud.
class AudioThread {
public:
    explicit AudioThread(DspEngine& played) : engine(played), thread([this] { play(); }) {}
    ~AudioThread() { finish(); }
    AudioThread(const AudioThread&) = delete;
    AudioThread& operator=(const AudioThread&) = delete;

    [[nodiscard]] int blocks() const noexcept { return playedBlocks.load(); }

    /// The count of wrong blocks.
    int finish() {
        mayEnd.store(true);
        if (thread.joinable()) {
            thread.join();
        }
        return wrongBlocks;
    }

private:
    void play() {
        while (!mayEnd.load()) {
            const Planes planes(1.0F);
            auto block = planes.block<rt::DspBlock>(512);
            engine.Process(&block);
            engine.Capture(&block);
            wrongBlocks += planes.samples == quarter.samples ? 0 : 1;
            playedBlocks.fetch_add(1);
        }
    }

    DspEngine& engine;
    const Planes quarter{0.25F};
    std::atomic<bool> mayEnd{false};
    std::atomic<int> playedBlocks{0};
    int wrongBlocks = 0;
    std::thread thread;
};

/// Calls all that the owner may call while sound runs.
void callBesideSound(DspEngine& engine) {
    std::array<std::byte, 4> out{};
    rt::EngineFormat format;
    rt::EngineFormat opposite;
    engine.SetParameter(4, 24, -1, -6.0F);
    engine.SetGetData(-1, -34, {}, out);
    static_cast<void>(engine.IsInputFormatSupported(format, opposite));
    static_cast<void>(engine.isHardwareAvailable());
    engine.WakeUp();
}

TEST(DspEngineThreads, PlayWhileTheOwnerCalls) {
    const test::OwnFolder folder;
    folder.putLibrary(KORVA_RECORDER_MODULE, "module");
    const Held<DspEngine> engine = test::hostedEngine({"module"}, folder.path());
    AudioThread audio(*engine);
    for (int calls = 0; calls < 200 || audio.blocks() < 200; ++calls) {
        callBesideSound(*engine);
    }

    EXPECT_EQ(audio.finish(), 0);
}

TEST(DspEngineThreads, CloseAnEngineBesideTheSoundOfAnotherOfItsModule) {
    const test::OwnFolder folder;
    folder.putLibrary(KORVA_RECORDER_MODULE, "module");
    const Held<DspEngine> engine = test::hostedEngine({"module"}, folder.path());
    AudioThread audio(*engine);
    for (int swaps = 0; swaps < 20 || audio.blocks() < 20; ++swaps) {
        ASSERT_TRUE(test::hostedEngine({"module"}, folder.path())->hasInstance());
    }

    EXPECT_EQ(audio.finish(), 0);
}

/// An owner's engines: each is made, played and closed.
void makeAndPlay(const std::filesystem::path& folder, int engines, std::atomic<int>& faults) {
    for (int made = 0; made < engines; ++made) {
        const Held<DspEngine> engine = test::hostedEngine({"module"}, folder);
        const Planes planes(1.0F);
        auto block = planes.block<rt::DspBlock>(512);
        engine->SetParameter(4, 24, -1, -6.0F);
        engine->Process(&block);
        faults += engine->hasInstance() && planes.samples == Planes(0.5F).samples ? 0 : 1;
    }
}

TEST(DspEngineThreads, ComeAndGoForTwoOwnersOfOneModuleAtOnce) {
    constexpr int enginesEach = 50;
    const test::OwnFolder folder;
    const auto file = folder.putLibrary(KORVA_RECORDER_MODULE, "module");
    std::atomic<int> faults{0};
    test::OneTimeGate bothAreThere;
    std::thread other([&] {
        (void)bothAreThere.pass();
        makeAndPlay(folder.path(), enginesEach, faults);
    });
    bothAreThere.open();
    makeAndPlay(folder.path(), enginesEach, faults);
    other.join();

    EXPECT_EQ(faults.load(), 0);
    EXPECT_FALSE(test::isLoaded(file.string()));
}

TEST(DspEngineThreads, HaveTheModulesCallsOnTheThreadThatMadeThem) {
    const test::Recording recording;
    const test::OwnFolder folder;
    folder.putLibrary(KORVA_RECORDER_MODULE, "module");
    const Held<DspEngine> engine = test::hostedEngine({"module"}, folder.path());
    std::thread([&] {
        const Planes planes(1.0F);
        auto block = planes.block<rt::DspBlock>(1);
        engine->Process(&block);
    }).join();
    engine->WakeUp();

    const auto calls = recording.calls();
    ASSERT_EQ(functionsOf(calls), (std::vector<std::string>{"Load", "Create", "process", "WakeUp"}));
    EXPECT_NE(calls[2].thread, calls[1].thread);
    EXPECT_EQ(calls[3].thread, calls[1].thread);
}

}  // namespace
}  // namespace korva::engine
