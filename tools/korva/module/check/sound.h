// Sound for modules: what goes in, and how it is played through an instance.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "korva/dsp_module.h"
#include "korva/module/check/guarded_memory.h"
#include "korva/module/check/tested_module.h"
#include "rt/engine_format.h"

namespace korva::tool {

/// The planes that a format's channels land on, as bits.
[[nodiscard]] unsigned planesOf(const rt::EngineFormat& format);

/// Samples by plane; planes that nothing is on are empty.
using Sound = std::array<std::vector<float>, rt::planeCount>;

/// Gives the value of a sample by its place.
using SampleSource = std::function<float(std::size_t plane, std::size_t frame)>;
[[nodiscard]] Sound makeSound(unsigned planes, std::size_t frames, const SampleSource& source);

/// Even noise of that height.
[[nodiscard]] Sound makeNoise(unsigned planes, std::size_t frames, std::uint32_t seed, float height = 0.5F);

/// Frames of blocks, one after another, over and over.
using Cuts = std::vector<std::uint32_t>;
[[nodiscard]] Cuts randomCuts(std::uint32_t seed);

/// Eight planes of a block's length, the pointers to them, and the block's record; each lies at that place of
/// pages of its own.  [owner, then audio]
class Bus {
public:
    explicit Bus(GuardedMemory::Place place);

    /// Makes a block of `sound` from `first` on: planes of `in` hold it, others silence, and behind `frames`
    /// they hold what nobody may use.  [audio, rt]
    DspBlock& load(const Sound& sound, std::size_t first, std::uint32_t frames, const rt::EngineFormat& in,
                   const rt::EngineFormat& out) noexcept;

    [[nodiscard]] std::span<float> plane(std::size_t index) const noexcept {
        return {pointers[index], KORVA_BLOCK_FRAMES};
    }

    /// Throws `CheckFailed` where the module has written beside any of it, or has changed the pointers.
    void expectRestWhole() const;

private:
    std::vector<std::unique_ptr<GuardedMemory>> memories;
    std::array<float*, rt::planeCount> pointers{};
    GuardedMemory shownPointers;  ///< What the module gets.
    GuardedMemory record;
};

/// How an instance is started, and what it is set to.
struct Scene {
    Document document{};
    rt::EngineFormat in{};
    rt::EngineFormat out{};
    std::uint32_t parameterSeed = 0;

    [[nodiscard]] std::string name() const;
};

/// Initialize, and then all parameters. Throws `CheckFailed` if the instance couldn't.
void makeReady(TestedInstance& instance, const Scene& scene);

/// The same with the Clear that comes before a stream.
void begin(TestedInstance& instance, const Scene& scene);

/// Plays `sound` in cuts, and gives what is on the planes of the output. `bus` is used for it.  [audio]
[[nodiscard]] Sound play(TestedInstance& instance, const Scene& scene, const Sound& sound, const Cuts& cuts,
                         Bus& bus);

/// The same through a new instance.
[[nodiscard]] Sound playAnew(const TestedModule& module, const Scene& scene, const Sound& sound,
                             const Cuts& cuts);

/// "frame 7 of plane 2 is 0.5, not 0.25" for the first sample that isn't the same to the bit; else empty.
[[nodiscard]] std::string firstDifference(const Sound& sound, const Sound& expected);

/// "frame 7 of plane 2 is nan" for the first that is no finite number; else empty.
[[nodiscard]] std::string firstNotFinite(const Sound& sound);

}  // namespace korva::tool
