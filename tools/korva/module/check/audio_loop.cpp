#include "korva/module/check/audio_loop.h"

#include "korva/module/check/verdict.h"

namespace korva::tool {

AudioLoop::AudioLoop(TestedInstance& playedInstance, const Scene& playedScene, std::uint32_t seed)
    : instance(playedInstance),
      scene(playedScene),
      cuts(randomCuts(seed)),
      noise(makeNoise(planesOf(scene.in), KORVA_BLOCK_FRAMES, seed)),
      bus(GuardedMemory::Place::loose),
      thread([this] { run(); }) {}

AudioLoop::~AudioLoop() {
    stop();
}

void AudioLoop::run() {
    while (!isAskedToStop) {
        const std::string heard = firstNotFinite(play(instance, scene, noise, cuts, bus));
        if (notFinite.empty()) {
            notFinite = heard;
        }
        blocks.fetch_add(1);
    }
}

void AudioLoop::waitForBlocks(std::uint32_t count) const {
    const std::uint32_t first = blocks;
    while (blocks - first < count) {
        std::this_thread::yield();
    }
}

void AudioLoop::stop() {
    isAskedToStop = true;
    if (thread.joinable()) {
        thread.join();
    }
}

void AudioLoop::expectFinite() {
    stop();
    if (!notFinite.empty()) {
        failCheck("{} while parameters change", notFinite);
    }
}

}  // namespace korva::tool
