// The first layout's 401 parameters, beside 401 objects of their size that are allocated and filled.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "bench/support/counted_memory.h"
#include "framework/dispatcher.h"
#include "params/parameter_set.h"

namespace {

using namespace korva;

constexpr std::size_t parameterCount = 401;

// Parameters live on a dispatcher's thread, as in the object.
void onDispatcher(const std::function<void()>& action) {
    const framework::DispatcherUse worker =
        framework::Dispatcher::start(framework::RootType::of<params::Parameter>());
    worker->runSynchronously(action);
}

using Clock = std::chrono::steady_clock;

// Only the building counts: a set that goes is taken apart later, after the next one has come.
void buildSet(benchmark::State& state) {
    onDispatcher([&state] {
        std::shared_ptr<const params::ParameterSet> former;
        for (auto _ : state) {
            const auto begin = Clock::now();
            auto set = params::buildParameterSet(params::allLayouts()[0]);
            state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());
            former = std::move(set);
        }
    });
}

double bytesOfOneSet() {
    const bench::CountedMemory memory;
    const auto set = params::buildParameterSet(params::allLayouts()[0]);
    return static_cast<double>(memory.liveBytes());
}

// What a parameter takes, all that it and its set allocate for it included.
std::size_t objectBytes() {
    return static_cast<std::size_t>(bytesOfOneSet()) / parameterCount;
}

void fillObjects(benchmark::State& state) {
    onDispatcher([&state] {
        const std::size_t size = objectBytes();
        std::vector<std::unique_ptr<std::byte[]>> former;
        for (auto _ : state) {
            const auto begin = Clock::now();
            std::vector<std::unique_ptr<std::byte[]>> objects(parameterCount);
            for (std::unique_ptr<std::byte[]>& object : objects) {
                object.reset(new std::byte[size]);
                std::fill_n(object.get(), size, std::byte{0x5A});
                benchmark::DoNotOptimize(object.get());
            }
            benchmark::ClobberMemory();
            state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());
            former = std::move(objects);
        }
    });
}

// Memory is shown as nanoseconds, a byte each.
void bytesOfSet(benchmark::State& state) {
    for (auto _ : state) {
        onDispatcher([&state] { state.SetIterationTime(bytesOfOneSet() * 1e-9); });
    }
}

void bytesOfMebibyte(benchmark::State& state) {
    for (auto _ : state) {
        state.SetIterationTime((1 << 20) * 1e-9);
    }
}

[[maybe_unused]] const bool registered = [] {
    benchmark::RegisterBenchmark("set/korva", buildSet)->UseManualTime();
    benchmark::RegisterBenchmark("set/objects", fillObjects)->UseManualTime();
    benchmark::RegisterBenchmark("bytes/set", bytesOfSet)->Iterations(1)->UseManualTime();
    benchmark::RegisterBenchmark("bytes/mebibyte", bytesOfMebibyte)->Iterations(1)->UseManualTime();
    return true;
}();

}  // namespace
