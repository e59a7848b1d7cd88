// The checks of what a module touches.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "korva/module/check/check_report.h"
#include "korva/module/check/checks.h"
#include "korva/module/check/formats.h"
#include "korva/module/check/parameters.h"
#include "korva/module/check/sound.h"
#include "korva/module/check/tested_module.h"

namespace korva::tool {
namespace {

/// Plays blocks of lengths that end at and beside the widths of vectors. `name` says what they are.
template <class AfterBlock>
void playLengths(TestedInstance& instance, const Scene& scene, const std::string& name, std::uint32_t seed,
                 Bus& bus, const AfterBlock& afterBlock) {
    const Sound noise = makeNoise(planesOf(scene.in), KORVA_BLOCK_FRAMES, seed);
    for (const std::uint32_t frames :
         {512U, 1U,   2U,   3U,   4U,   7U,   8U,   15U,  16U,  17U,  31U,  33U, 63U,
          64U,  100U, 255U, 256U, 257U, 448U, 480U, 496U, 509U, 510U, 511U, 512U}) {
        noteSituation(fmt::format("{}, {} frames", name, frames));
        instance.process(bus.load(noise, 0, frames, scene.in, scene.out));
        afterBlock(frames);
    }
}

/// Streams that may follow: other channels at the same rate, of which only a block's counts tell.
std::vector<Scene> laterScenes(TestedInstance& instance, const Scene& scene) {
    std::vector<Scene> scenes;
    for (const rt::EngineFormat& format : usualFormats(scene.in.sampleRate)) {
        if (accepts(instance, format, format)) {
            scenes.push_back({scene.document, format, format, scene.parameterSeed});
        }
    }
    return scenes;
}

void tryBounds(const TestedModule& module, const Scene& scene, std::uint32_t seed,
               GuardedMemory::Place place) {
    TestedInstance instance(module, scene.document);
    begin(instance, scene);
    Bus bus(place);
    const auto expectRestWhole = [&](std::uint32_t) { bus.expectRestWhole(); };
    playLengths(instance, scene, scene.name(), seed, bus, expectRestWhole);
    for (const Scene& later : laterScenes(instance, scene)) {
        instance.clear();
        const std::string name = fmt::format("{} after {} without another ZRDSPAPI_Initialize",
                                             formatText(later.in), pairText(scene.in, scene.out));
        playLengths(instance, later, name, seed, bus, expectRestWhole);
    }
    instance.uninitialize();
}

void expectSilence(std::span<const float> plane, std::size_t index) {
    const auto written =
        std::ranges::find_if(plane, [](float value) { return std::bit_cast<std::uint32_t>(value) != 0; });
    if (written != plane.end()) {
        failCheck("leaves {} at frame {} of plane {}, on which no side has a channel{}", *written,
                  written - plane.begin(), index, whereText());
    }
}

void tryUnusedPlanes(const TestedModule& module, const Scene& scene, std::uint32_t seed) {
    TestedInstance instance(module, scene.document);
    begin(instance, scene);
    Bus bus(GuardedMemory::Place::loose);
    const unsigned used = planesOf(scene.in) | planesOf(scene.out);
    playLengths(instance, scene, scene.name(), seed, bus, [&](std::uint32_t frames) {
        for (std::size_t plane = 0; plane < KORVA_PLANES; ++plane) {
            if ((used >> plane & 1U) == 0) {
                expectSilence(bus.plane(plane).first(frames), plane);
            }
        }
    });
    instance.uninitialize();
}

}  // namespace

Verdict checkBounds(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    for (const Scene& scene : scenesFor(module, setting.seed)) {
        tryBounds(module, scene, setting.seed, GuardedMemory::Place::atPageEnd);
        tryBounds(module, scene, setting.seed, GuardedMemory::Place::atPageBegin);
    }
    return {};
}

Verdict checkUnusedPlanes(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    for (const Scene& scene : scenesFor(module, setting.seed)) {
        tryUnusedPlanes(module, scene, setting.seed);
    }
    return {};
}

}  // namespace korva::tool
