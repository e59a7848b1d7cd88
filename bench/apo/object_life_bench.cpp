// The life of an object without an endpoint, beside the thread and the core that it can't do without.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>

#include "apo/core_thread.h"
#include "apo/effect_class.h"
#include "bench/apo/hosted_objects.h"
#include "bench/support/median.h"
#include "framework/framework_scope.h"
#include "tests/support/own_registry.h"

namespace {

using namespace korva;

constexpr std::size_t livesOfIteration = 101;

template <class Life>
void showLife(benchmark::State& state, const Life& life) {
    const test::OwnRegistry registry;
    for (auto _ : state) {
        state.SetIterationTime(bench::medianOf(livesOfIteration, [&] {
            const auto begin = std::chrono::steady_clock::now();
            life();
            return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        }));
    }
}

void lifeOfObject(benchmark::State& state) {
    showLife(state, [] {
        bench::HostedObject object;
        object.initialize();
        object.lock();
        object.unlock();
    });
}
BENCHMARK(lifeOfObject)->Name("life/object")->Iterations(1)->UseManualTime();

void lifeOfParts(benchmark::State& state) {
    showLife(state, [] {
        const framework::FrameworkScope framework({.external = true});
        const auto core = apo::CoreThread::start(static_cast<std::uint32_t>(apo::modeEffect.kind), {});
        benchmark::DoNotOptimize(core.realtime());
    });
}
BENCHMARK(lifeOfParts)->Name("life/parts")->Iterations(1)->UseManualTime();

}  // namespace
