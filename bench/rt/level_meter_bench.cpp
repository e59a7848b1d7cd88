// The peak followers of one or two sets of planes, beside their definition.
#include <array>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

#include "rt/kernels/kernels.h"
#include "rt/level_meter.h"

namespace {

using namespace korva;

/// Two sets of planes with sound at about a tenth of full scale.
struct Planes {
    Planes() {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> level(-0.1f, 0.1f);
        for (auto& plane : samples) {
            for (float& sample : plane) {
                sample = level(random);
            }
        }
        for (std::size_t plane = 0; plane < samples.size(); ++plane) {
            pointers[plane] = samples[plane].data();
        }
    }
    std::array<std::array<float, 1024 + 16>, 16> samples;
    std::array<const float*, 16> pointers{};
};

/// Which version is measured; asked when it runs, since the fastest is chosen only as the program starts.
using Version = const rt::Kernels& (*)() noexcept;

const rt::Kernels& plain() noexcept {
    return *rt::findKernels("plain");
}

void follow(benchmark::State& state, Version version, std::int32_t channels, int sets) {
    const rt::Kernels& kernels = version();
    const auto frames = static_cast<std::uint32_t>(state.range(0));
    static Planes planes;
    rt::EngineFormat layout;
    layout.Assign(48000, channels, 0);
    if (channels == 1) {
        layout.SetMask(0x1);
    }
    const auto release = rt::MeterRelease::forSampleRate(48000);
    std::array<rt::MeterState, 2> meters;
    for (auto _ : state) {
        rt::MeterLanes lanes;
        for (int set = 0; set < sets; ++set) {
            lanes.add(meters[static_cast<std::size_t>(set)], planes.pointers.data() + set * 8, layout);
        }
        lanes.follow(release, frames, kernels);
        benchmark::DoNotOptimize(meters);
        benchmark::ClobberMemory();
    }
}

[[maybe_unused]] const bool registered = [] {
    const std::pair<const char*, Version> versions[] = {{"plain", plain}, {"fast", rt::chosenKernels}};
    for (const auto& [name, version] : versions) {
        for (const auto& [channels, sets] : {std::pair{1, 1}, {2, 1}, {8, 1}, {8, 2}}) {
            const std::string title =
                "meter/" + std::to_string(channels) + "x" + std::to_string(sets) + "/" + name;
            benchmark::RegisterBenchmark(title.c_str(), follow, version, channels, sets)->Arg(480)->Arg(1024);
        }
    }
    return true;
}();

}  // namespace
