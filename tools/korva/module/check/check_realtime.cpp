// The check of the audio thread's rules.
#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>
#include <thread>
#include <vector>

#include "korva/module/check/check_report.h"
#include "korva/module/check/checks.h"
#include "korva/module/check/formats.h"
#include "korva/module/check/parameters.h"
#include "korva/module/check/sound.h"
#include "korva/module/check/system_calls.h"
#include "korva/module/check/tested_module.h"
#include "korva/module/realtime_watch/violations.h"

namespace korva::tool {
namespace {

/// An instance under way, with all that its blocks need.
struct PreparedScene {
    PreparedScene(const TestedModule& module, const Scene& playedScene, std::uint32_t seed)
        : scene(playedScene),
          name(scene.name()),
          noise(makeNoise(planesOf(scene.in), KORVA_BLOCK_FRAMES, seed)),
          cuts(randomCuts(seed)),
          instance(module, scene.document),
          bus(GuardedMemory::Place::loose) {
        begin(instance, scene);
    }

    void playBlocks() {
        noteSituation(name);
        for (const std::uint32_t frames : cuts) {
            instance.process(bus.load(noise, 0, frames, scene.in, scene.out));
        }
    }

    const Scene scene;
    const std::string name;
    const Sound noise;
    const Cuts cuts;
    TestedInstance instance;
    Bus bus;
};
using PreparedScenes = std::vector<std::unique_ptr<PreparedScene>>;

/// Ends the check. The thread can't do more than write to memory and end the process.
void endWithViolation(const Violation& violation) noexcept {
    failAtCall(violation.function != nullptr ? violation.function : systemCallName(violation.systemCall));
}

/// The life of the watched thread, which has no end of its own.
void playWatched(const PreparedScenes& prepared, const std::atomic<bool>& isAskedToStop) {
    constexpr int roundsAtLeast = 10;
    if (!watchThisThread(endWithViolation)) {
        endCheck(Outcome::skipped, "the system has no filter for system calls");
    }
    for (int round = 0; round < roundsAtLeast || !isAskedToStop; ++round) {
        for (const auto& scene : prepared) {
            scene->playBlocks();
        }
    }
    endCheck(Outcome::passed, "");
}

}  // namespace

Verdict checkRealtime(const CheckSetting& setting) {
    if (!functionsAreWatched()) {
        skipCheck("this build of the tool has a sanitizer, and can't watch");
    }
    const TestedModule module(setting.file);
    PreparedScenes prepared;
    for (const Scene& scene : scenesFor(module, setting.seed)) {
        prepared.push_back(std::make_unique<PreparedScene>(module, scene, setting.seed));
    }
    std::atomic<bool> isAskedToStop{false};
    std::thread audio([&] { playWatched(prepared, isAskedToStop); });
    // Beside it what comes from the other thread: a module may lock, or free, on the wrong one.
    for (std::uint32_t change = 0; change < 3; ++change) {
        for (const auto& scene : prepared) {
            sendParameters(scene->instance,
                           parametersOf(scene->scene.document.engine, setting.seed + change));
            scene->instance.wakeUp();
        }
    }
    isAskedToStop = true;
    audio.join();
    return {};
}

}  // namespace korva::tool
