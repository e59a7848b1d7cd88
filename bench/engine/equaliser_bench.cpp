// The example equaliser beside the filters that one would write first.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <span>

#include <benchmark/benchmark.h>

#include "bench/engine/plain_biquads.h"
#include "korva/dsp_module.h"
#include "tests/support/loaded_library.h"

namespace {

using namespace korva;

constexpr std::uint32_t rate = 48000;
constexpr std::array<float, bench::bandsInAll> gainsDb{6, 3, -3, 5, -4, 2, 1, -2, 4, -6, 3, 6};
constexpr std::array<float, bench::bandsInAll> otherGainsDb{-6, -3, 3, -5, 4, -2, -1, 2, -4, 6, -3, -6};
constexpr std::array<float, bench::bandsInAll> centresHz{31.5f, 56,   100,  180,  315,   560,
                                                         1000,  1800, 3150, 5600, 10000, 18000};

/// Eight planes with noise at a tenth of full scale.
class Planes {
public:
    Planes() {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> level(-0.1f, 0.1f);
        for (std::size_t plane = 0; plane < KORVA_PLANES; ++plane) {
            std::generate(noise[plane].begin(), noise[plane].end(), [&] { return level(random); });
            pointers[plane] = samples[plane].data();
        }
    }

    /// The same noise for each block: what is worked on in place would become loud or silent.
    void refill() { samples = noise; }

    DspBlock block(std::uint32_t frames) {
        return {pointers.data(), KORVA_PLANES, KORVA_BLOCK_FRAMES, KORVA_PLANES, KORVA_PLANES, frames, 0};
    }

private:
    // Padded, or the eight would share a few lines of the cache.
    using Samples = std::array<std::array<float, KORVA_BLOCK_FRAMES + 16>, KORVA_PLANES>;
    alignas(64) Samples samples;
    Samples noise;
    std::array<float*, KORVA_PLANES> pointers;
};

/// The module, set to twelve gains.
class Equaliser {
public:
    Equaliser()
        : library(KORVA_EQUALISER),
          instance(function<decltype(ZRDSPAPI_Create)>("ZRDSPAPI_Create")("{}", 2)) {
        EngineFormat format{0x63F, 8, rate, {0, 1, 2, 3, 4, 5, 6, 7}, {1, 2, 3, 4, 5, 6, 10, 11}};
        EngineFormat none{};
        function<decltype(ZRDSPAPI_Initialize)>("ZRDSPAPI_Initialize")(instance, &format, &format, &none);
        set(gainsDb);
    }
    ~Equaliser() { function<decltype(ZRDSPAPI_Free)>("ZRDSPAPI_Free")(instance); }

    void set(const std::array<float, bench::bandsInAll>& gains) {
        const auto setParameter = function<decltype(ZRDSPAPI_SetParameter)>("ZRDSPAPI_SetParameter");
        setParameter(instance, 0, 3, -1, gains.data(), sizeof gains);
    }

    void process(DspBlock& block) { instance->table->process(instance, &block); }

private:
    template <class Function>
    Function* function(const char* name) {
        return library.function<Function>(name);
    }

    test::LoadedLibrary library;
    DspInstance* instance;
};

void equalise(benchmark::State& state) {
    const auto planes = std::make_unique<Planes>();
    DspBlock block = planes->block(static_cast<std::uint32_t>(state.range(0)));
    Equaliser equaliser;
    for (auto _ : state) {
        planes->refill();
        equaliser.process(block);
        benchmark::ClobberMemory();
    }
}

/// A change of all gains with each block: they never come to rest.
void equaliseInMotion(benchmark::State& state) {
    const auto planes = std::make_unique<Planes>();
    DspBlock block = planes->block(static_cast<std::uint32_t>(state.range(0)));
    Equaliser equaliser;
    bool turn = false;
    for (auto _ : state) {
        turn = !turn;
        equaliser.set(turn ? otherGainsDb : gainsDb);
        planes->refill();
        equaliser.process(block);
        benchmark::ClobberMemory();
    }
}

void plain(benchmark::State& state) {
    const auto planes = std::make_unique<Planes>();
    const DspBlock block = planes->block(static_cast<std::uint32_t>(state.range(0)));
    bench::PlainBiquads biquads(gainsDb, centresHz, rate);
    for (auto _ : state) {
        planes->refill();
        biquads.process(std::span(block.channels, KORVA_PLANES), block.frames);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(equalise)->Name("equaliser/module")->Arg(64)->Arg(480);
BENCHMARK(equaliseInMotion)->Name("equaliser/in_motion")->Arg(480);
BENCHMARK(plain)->Name("equaliser/plain")->Arg(64)->Arg(480);

}  // namespace
