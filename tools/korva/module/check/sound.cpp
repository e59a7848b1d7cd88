#include "korva/module/check/sound.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "korva/module/check/check_report.h"
#include "korva/module/check/formats.h"
#include "korva/module/check/parameters.h"

namespace korva::tool {
namespace {

std::size_t framesOf(const Sound& sound) {
    std::size_t frames = 0;
    for (const std::vector<float>& plane : sound) {
        frames = std::max(frames, plane.size());
    }
    return frames;
}

std::uint32_t blockChannels(const rt::EngineFormat& format) {
    return static_cast<std::uint32_t>(std::clamp(format.channelCount, 0, KORVA_PLANES + 0));
}

bool hasPlane(unsigned planes, std::size_t plane) {
    return (planes >> plane & 1U) != 0;
}

}  // namespace

unsigned planesOf(const rt::EngineFormat& format) {
    unsigned planes = 0;
    for (std::uint32_t channel = 0; channel < blockChannels(format); ++channel) {
        planes |= 1U << format.planeOfChannel[channel];
    }
    return planes;
}

Sound makeSound(unsigned planes, std::size_t frames, const SampleSource& source) {
    Sound sound;
    for (std::size_t plane = 0; plane < sound.size(); ++plane) {
        for (std::size_t frame = 0; hasPlane(planes, plane) && frame < frames; ++frame) {
            sound[plane].push_back(source(plane, frame));
        }
    }
    return sound;
}

Sound makeNoise(unsigned planes, std::size_t frames, std::uint32_t seed, float height) {
    std::mt19937 generator(seed);
    return makeSound(planes, frames, [&](std::size_t, std::size_t) {
        const auto word = static_cast<std::int32_t>(generator());
        return height * static_cast<float>(word >> 8) / static_cast<float>(1 << 23);
    });
}

Cuts randomCuts(std::uint32_t seed) {
    std::mt19937 generator(seed);
    Cuts cuts(40);
    for (std::uint32_t& frames : cuts) {
        // Short ones as often as long ones.
        const std::uint32_t longest = 1U << generator() % 10;
        frames = 1 + static_cast<std::uint32_t>(generator()) % longest;
    }
    return cuts;
}

Bus::Bus(GuardedMemory::Place place)
    : shownPointers(sizeof(pointers), place, "the pointers to the planes"),
      record(sizeof(DspBlock), place, "the record of a block") {
    for (std::size_t plane = 0; plane < pointers.size(); ++plane) {
        memories.push_back(std::make_unique<GuardedMemory>(KORVA_BLOCK_FRAMES * sizeof(float), place,
                                                           fmt::format("plane {}", plane)));
        pointers[plane] = reinterpret_cast<float*>(memories.back()->data());
    }
}

DspBlock& Bus::load(const Sound& sound, std::size_t first, std::uint32_t frames, const rt::EngineFormat& in,
                    const rt::EngineFormat& out) noexcept {
    for (std::size_t plane = 0; plane < pointers.size(); ++plane) {
        const std::vector<float>& source = sound[plane];
        if (source.empty()) {
            std::fill_n(pointers[plane], frames, 0.0F);
        } else {
            std::copy_n(source.data() + first, frames, pointers[plane]);
        }
        std::fill(pointers[plane] + frames, pointers[plane] + KORVA_BLOCK_FRAMES, 1.0e10F);
    }
    std::memcpy(shownPointers.data(), pointers.data(), sizeof(pointers));
    auto& block = *reinterpret_cast<DspBlock*>(record.data());
    block = {.channels = reinterpret_cast<float**>(shownPointers.data()),
             .maxChannels = KORVA_PLANES,
             .maxFrames = KORVA_BLOCK_FRAMES,
             .inChannels = blockChannels(in),
             .outChannels = blockChannels(out),
             .frames = frames,
             .reserved = 0};
    return block;
}

void Bus::expectRestWhole() const {
    for (const auto& memory : memories) {
        memory->expectRestWhole();
    }
    shownPointers.expectRestWhole();
    record.expectRestWhole();
    if (std::memcmp(shownPointers.data(), pointers.data(), sizeof(pointers)) != 0) {
        failCheck("changes the pointers to the planes{}", whereText());
    }
}

std::string Scene::name() const {
    return fmt::format("{}, {} parameters", pairText(in, out),
                       parameterSeed == defaultParameters ? "default" : "changed");
}

void makeReady(TestedInstance& instance, const Scene& scene) {
    if (!instance.initialize(scene.in, scene.out)) {
        failCheck("ZRDSPAPI_Initialize answers 0 for {}", pairText(scene.in, scene.out));
    }
    sendParameters(instance, parametersOf(scene.document.engine, scene.parameterSeed));
}

void begin(TestedInstance& instance, const Scene& scene) {
    makeReady(instance, scene);
    instance.clear();
}

Sound play(TestedInstance& instance, const Scene& scene, const Sound& sound, const Cuts& cuts, Bus& bus) {
    const unsigned outPlanes = planesOf(scene.out);
    const std::size_t total = framesOf(sound);
    Sound result;
    std::size_t cut = 0;
    for (std::size_t first = 0; first < total;) {
        const auto frames =
            static_cast<std::uint32_t>(std::min<std::size_t>(cuts[cut++ % cuts.size()], total - first));
        instance.process(bus.load(sound, first, frames, scene.in, scene.out));
        for (std::size_t plane = 0; plane < result.size(); ++plane) {
            if (hasPlane(outPlanes, plane)) {
                const std::span<float> samples = bus.plane(plane).first(frames);
                result[plane].insert(result[plane].end(), samples.begin(), samples.end());
            }
        }
        first += frames;
    }
    return result;
}

Sound playAnew(const TestedModule& module, const Scene& scene, const Sound& sound, const Cuts& cuts) {
    TestedInstance instance(module, scene.document);
    begin(instance, scene);
    Bus bus(GuardedMemory::Place::loose);
    Sound result = play(instance, scene, sound, cuts, bus);
    instance.uninitialize();
    return result;
}

std::string firstDifference(const Sound& sound, const Sound& expected) {
    for (std::size_t frame = 0; frame < framesOf(expected); ++frame) {
        for (std::size_t plane = 0; plane < expected.size(); ++plane) {
            if (frame < expected[plane].size() && std::bit_cast<std::uint32_t>(sound[plane][frame]) !=
                                                      std::bit_cast<std::uint32_t>(expected[plane][frame])) {
                return fmt::format("frame {} of plane {} is {}, not {}", frame, plane, sound[plane][frame],
                                   expected[plane][frame]);
            }
        }
    }
    return "";
}

std::string firstNotFinite(const Sound& sound) {
    for (std::size_t frame = 0; frame < framesOf(sound); ++frame) {
        for (std::size_t plane = 0; plane < sound.size(); ++plane) {
            if (frame < sound[plane].size() && !std::isfinite(sound[plane][frame])) {
                return fmt::format("frame {} of plane {} is {}", frame, plane, sound[plane][frame]);
            }
        }
    }
    return "";
}

}  // namespace korva::tool
