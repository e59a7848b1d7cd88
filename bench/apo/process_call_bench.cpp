// A processing call through the published interface, beside what it calls, and through many objects in turn.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "bench/apo/hosted_objects.h"
#include "bench/support/median.h"
#include "tests/support/own_registry.h"

namespace {

using namespace korva;

struct PlayingObject {
    test::OwnRegistry registry;
    bench::HostedObject object;

    PlayingObject() {
        object.initialize();
        object.lock();
    }
};

void callInterface(benchmark::State& state) {
    PlayingObject playing;
    bench::StereoBuffer buffer(static_cast<std::uint32_t>(state.range(0)));
    for (auto _ : state) {
        playing.object.play(buffer);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(callInterface)->Name("call/interface")->Arg(64)->Arg(480);

void callDirectly(benchmark::State& state) {
    PlayingObject playing;
    bench::StereoBuffer buffer(static_cast<std::uint32_t>(state.range(0)));
    for (auto _ : state) {
        playing.object.processor().Process(1, &buffer.in, 1, &buffer.out, 2);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(callDirectly)->Name("call/direct")->Arg(64)->Arg(480);

constexpr std::size_t objectCount = 500;
constexpr std::size_t roundsOfIteration = 101;

using Buffers = std::vector<std::unique_ptr<bench::StereoBuffer>>;

Buffers newBuffers() {
    Buffers buffers(objectCount);
    for (auto& buffer : buffers) {
        buffer = std::make_unique<bench::StereoBuffer>(bench::StereoBuffer::mostFrames);
    }
    return buffers;
}

/// The median over rounds of the time that a buffer takes, in which each buffer is played once. All play the
/// same buffers in the same order, so what their samples cost the caches is the same.
template <class ObjectOf>
void playInTurn(benchmark::State& state, Buffers& buffers, const ObjectOf& objectOf) {
    for (auto _ : state) {
        state.SetIterationTime(bench::medianOf(roundsOfIteration, [&] {
            const auto begin = std::chrono::steady_clock::now();
            for (std::size_t i = 0; i < objectCount; ++i) {
                objectOf(i).play(*buffers[i]);
            }
            const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
            return taken.count() / objectCount;
        }));
    }
}

void turnOfObjects(benchmark::State& state) {
    const test::OwnRegistry registry;
    Buffers buffers = newBuffers();
    std::deque<bench::HostedObject> objects(objectCount);
    for (bench::HostedObject& object : objects) {
        object.initialize();
        object.lock();
    }
    playInTurn(state, buffers, [&](std::size_t i) -> bench::HostedObject& { return objects[i]; });
}
BENCHMARK(turnOfObjects)->Name("turn/objects")->Iterations(1)->UseManualTime();

void turnOfOne(benchmark::State& state) {
    Buffers buffers = newBuffers();
    PlayingObject playing;
    playInTurn(state, buffers, [&](std::size_t) -> bench::HostedObject& { return playing.object; });
}
BENCHMARK(turnOfOne)->Name("turn/one")->Iterations(1)->UseManualTime();

}  // namespace
