// The check of sounds that nobody expects.
#include <cfenv>
#include <string>

#include "korva/module/check/check_report.h"
#include "korva/module/check/checks.h"
#include "korva/module/check/formats.h"
#include "korva/module/check/parameters.h"
#include "korva/module/check/sound.h"
#include "korva/module/check/special_sounds.h"
#include "korva/module/check/tested_module.h"

namespace korva::tool {
namespace {

constexpr std::size_t soundFrames = 2048;

/// Whether numbers below the normal ones still are what they are on this thread.
bool keepsDenormals() {
    volatile float smallNumber = 1e-39F;
    volatile const float half = 0.5F;
    return smallNumber * half != 0.0F;
}

void expectOwnArithmetic(int rounding) {
    if (std::fegetround() != rounding || !keepsDenormals()) {
        failCheck("process leaves the processor with other rules of arithmetic (rounding, denormals){}",
                  whereText());
    }
}

class SignalRun {
public:
    SignalRun(const TestedModule& module, const Scene& playedScene, std::uint32_t soundSeed)
        : scene(playedScene),
          seed(soundSeed),
          noise(makeNoise(planesOf(scene.in), soundFrames, seed)),
          instance(module, scene.document),
          bus(GuardedMemory::Place::loose) {
        begin(instance, scene);
    }

    /// Gives the name of the first sound that spoils what comes after it, until it is cleared.
    std::string playAll() {
        std::string spoiling;
        for (const SpecialSound& special : specialSounds(planesOf(scene.in), soundFrames, seed)) {
            noteSituation(fmt::format("{}, {}", special.name, scene.name()));
            if (!playSpecial(special) && spoiling.empty()) {
                spoiling = special.name;
            }
        }
        instance.uninitialize();
        return spoiling;
    }

private:
    Sound playOnce(const Sound& sound) {
        const int rounding = std::fegetround();
        Sound heard = play(instance, scene, sound, {KORVA_BLOCK_FRAMES}, bus);
        expectOwnArithmetic(rounding);
        return heard;
    }

    /// Whether sound after it is finite without a Clear.
    bool playSpecial(const SpecialSound& special) {
        const std::string heard = firstNotFinite(playOnce(special.sound));
        if (special.isUsual && !heard.empty()) {
            failCheck("gives no number for {}: {} ({})", special.name, heard, scene.name());
        }
        static_cast<void>(playOnce(noise));
        const bool isWell = firstNotFinite(playOnce(noise)).empty();
        instance.clear();
        if (const std::string after = firstNotFinite(playOnce(noise)); !after.empty()) {
            failCheck("is spoiled by {}, ZRDSPAPI_Clear or not: {} ({})", special.name, after, scene.name());
        }
        instance.clear();
        return isWell;
    }

    const Scene& scene;
    const std::uint32_t seed;
    const Sound noise;
    TestedInstance instance;
    Bus bus;
};

}  // namespace

Verdict checkSignals(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    std::string spoiling;
    for (const Scene& scene : scenesFor(module, setting.seed)) {
        const std::string first = SignalRun(module, scene, setting.seed).playAll();
        spoiling = spoiling.empty() ? first : spoiling;
    }
    if (spoiling.empty()) {
        return {};
    }
    return {Outcome::warning,
            fmt::format("sound is spoiled after {} until the next ZRDSPAPI_Clear", spoiling)};
}

}  // namespace korva::tool
