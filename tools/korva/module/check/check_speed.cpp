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

/// Up to this share of the time that a block lasts nobody suffers, and a slower sound is a warning. A single
/// multiplication of each sample by a constant, where all are denormal, takes close to it on some processors.
constexpr double bearableShare = 0.02;

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

    /// What is to be said of a sound that takes longer than noise each time that it is tried; empty for one
    /// that doesn't. Throws `CheckFailed` where it takes too long to be borne.
    std::string slownessOf(const SpecialSound& special) {
        noteSituation(fmt::format("{}, {}", special.name, scene.name()));
        return slownessOf(special.name, [&] { return medianNs(special.sound, 4); });
    }

    /// The same of what a filter does long after the sound has gone.
    std::string slownessOfTail() {
        noteSituation(fmt::format("silence after sound, {}", scene.name()));
        return slownessOf("silence after sound", [&] {
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
    std::string slownessOf(const std::string& name, const Measure& measure) {
        constexpr int attempts = 5;
        bool isBearable = false;
        std::string slowness;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            instance.clear();
            const double usual = medianNs(noise, 4);
            const double special = measure();
            if (special <= slowest * usual) {
                return "";
            }
            isBearable = isBearable || special <= bearableShare * soundNs(scene.in);
            slowness = fmt::format("{}: a block takes {:.1f} us, and one of noise {:.1f} us ({})", name,
                                   special / 1000, usual / 1000, scene.name());
        }
        if (!isBearable) {
            failCheck("{}", slowness);
        }
        return slowness;
    }

    const Scene& scene;
    const Sound noise;
    const Sound silence;
    TestedInstance instance;
    Bus bus;
};

/// The first slowness of a scene, if there is one.
std::string slownessIn(const TestedModule& module, const Scene& scene, std::uint32_t seed) {
    std::string first;
    for (const SpecialSound& special : specialSounds(planesOf(scene.in), soundFrames, seed)) {
        const std::string slowness = SpeedRun(module, scene, seed).slownessOf(special);
        first = first.empty() ? slowness : first;
    }
    const std::string slowness = SpeedRun(module, scene, seed).slownessOfTail();
    return first.empty() ? slowness : first;
}

}  // namespace

Verdict checkSpeed(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    std::string first;
    for (const Scene& scene : scenesFor(module, setting.seed)) {
        if (scene.in == scene.out) {
            const std::string slowness = slownessIn(module, scene, setting.seed);
            first = first.empty() ? slowness : first;
        }
    }
    return first.empty() ? Verdict{} : Verdict{Outcome::warning, first};
}

}  // namespace korva::tool
