// The check of the time that a block takes.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "korva/module/check/check_report.h"
#include "korva/module/check/checks.h"
#include "korva/module/check/formats.h"
#include "korva/module/check/parameters.h"
#include "korva/module/check/sound.h"
#include "korva/module/check/special_sounds.h"
#include "korva/module/check/tested_module.h"
#include "rt/dsp_block.h"

namespace korva::tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t soundFrames = 8 * KORVA_BLOCK_FRAMES;
constexpr double slowest = 2;  ///< Times as long as noise takes.

/// Below this share of the time that a block lasts nobody suffers. A single multiplication of each sample by
/// a constant, where all are denormal, takes close to it on some processors.
constexpr double allowedShare = 0.02;

double soundNs(const rt::EngineFormat& format) {
    return 1e9 * rt::blockFrames / format.sampleRate;
}

double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

class SpeedRun {
public:
    SpeedRun(const TestedModule& module, const Scene& playedScene, std::uint32_t seed)
        : scene(playedScene),
          noise(makeNoise(planesOf(scene.in), soundFrames, seed)),
          silence(makeNoise(planesOf(scene.in), soundFrames, seed, 0.0F)),
          instance(module, scene.document),
          bus(GuardedMemory::Place::loose) {
        begin(instance, scene);
    }

    /// Throws `CheckFailed` where a sound takes too long each time that it is tried.
    void expectFast(const SpecialSound& special) {
        noteSituation(fmt::format("{}, {}", special.name, scene.name()));
        expectFast(special.name, [&] { return medianNs(special.sound, 4); });
    }

    /// What a filter does long after the sound has gone.
    void expectFastTail() {
        noteSituation(fmt::format("silence after sound, {}", scene.name()));
        expectFast("silence after sound", [&] {
            static_cast<void>(medianNs(noise, 1));
            double worst = 0;
            for (int part = 0; part < 30; ++part) {
                worst = std::max(worst, medianNs(silence, 5));
            }
            return worst;
        });
    }

private:
    double blockNs(const Sound& sound, std::size_t first) {
        DspBlock& block = bus.load(sound, first, KORVA_BLOCK_FRAMES, scene.in, scene.out);
        const Clock::time_point begin = Clock::now();
        instance.process(block);
        return std::chrono::duration<double, std::nano>(Clock::now() - begin).count();
    }

    double medianNs(const Sound& sound, int rounds) {
        std::vector<double> times;
        for (int round = 0; round < rounds; ++round) {
            for (std::size_t first = 0; first < soundFrames; first += KORVA_BLOCK_FRAMES) {
                times.push_back(blockNs(sound, first));
            }
        }
        return medianOf(times);
    }

    template <class Measure>
    void expectFast(const std::string& name, const Measure& measure) {
        constexpr int attempts = 5;
        double usual = 0;
        double special = 0;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            instance.clear();
            usual = medianNs(noise, 4);
            special = measure();
            if (special <= slowest * usual || special <= allowedShare * soundNs(scene.in)) {
                return;
            }
        }
        failCheck("{}: a block takes {:.0f} us, and one of noise {:.0f} us ({})", name, special / 1000,
                  usual / 1000, scene.name());
    }

    const Scene& scene;
    const Sound noise;
    const Sound silence;
    TestedInstance instance;
    Bus bus;
};

}  // namespace

Verdict checkSpeed(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    for (const Scene& scene : scenesFor(module, setting.seed)) {
        if (scene.in != scene.out) {
            continue;
        }
        const unsigned planes = planesOf(scene.in);
        for (const SpecialSound& special : specialSounds(planes, soundFrames, setting.seed)) {
            SpeedRun(module, scene, setting.seed).expectFast(special);
        }
        SpeedRun(module, scene, setting.seed).expectFastTail();
    }
    return {};
}

}  // namespace korva::tool
