// What it costs an instance to show itself, beside the writes to the registry that this comes to.
//
// All of it is done on the core's thread in one go: the watch of the key would otherwise come in between. The
// keys of both cases are watched alike.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "bench/services/shown_core.h"
#include "bench/support/median.h"
#include "korva/dsp_module.h"

namespace {

using namespace korva;
using bench::NamedValue;
using bench::ShownCore;
using Clock = std::chrono::steady_clock;

constexpr std::size_t rounds = 101;

/// Seconds that `work` takes, each time after `prepare`: the median.
template <class Prepare, class Work>
double medianTime(const Prepare& prepare, const Work& work) {
    return bench::medianOf(rounds, [&] {
        prepare();
        const auto begin = Clock::now();
        work();
        return std::chrono::duration<double>(Clock::now() - begin).count();
    });
}

/// Measures on the core's thread.
template <class Prepare, class Work>
void measure(benchmark::State& state, ShownCore& shown, const Prepare& prepare, const Work& work) {
    for (auto _ : state) {
        shown.rig.on([&] { state.SetIterationTime(medianTime(prepare, work)); });
    }
}

void nothing() {}

void valueShown(benchmark::State& state) {
    ShownCore shown(KORVA_TELLING_MODULE);
    std::uint32_t count = 1'000'000;
    measure(state, shown, nothing, [&] { shown.rig.core().dspCycleCount.set(++count); });
}

void valueWrites(benchmark::State& state) {
    ShownCore shown(KORVA_TELLING_MODULE);
    platform::RegistryValue value{platform::registry_type::dword, std::vector<std::byte>(4)};
    std::uint8_t count = 0;
    measure(
        state, shown, [&] { value.data[0] = std::byte{++count}; },
        [&] { bench::writeShown(shown.key, "DSPCycleCount", value); });
}

void pullOfCore(benchmark::State& state) {
    ShownCore shown(KORVA_TELLING_MODULE);
    std::uint32_t number = 0;
    measure(
        state, shown, [&] { bench::askForEverything(shown.key, ++number); },
        [&] { shown.rig.core().diagnosticsPull(); });
}

/// What one pull changes in the key. The core's own meters and load stay as they are where no sound flows.
std::vector<NamedValue> changesOfPull(ShownCore& shown, std::uint32_t number) {
    std::vector<NamedValue> changed;
    shown.rig.on([&] {
        const std::vector<NamedValue> before = bench::shownValues(shown.key);
        bench::askForEverything(shown.key, number);
        shown.rig.core().diagnosticsPull();
        std::size_t at = 0;
        for (NamedValue& after : bench::shownValues(shown.key)) {
            if (at >= before.size() || before[at].value.data != after.value.data) {
                changed.push_back(std::move(after));
            }
            ++at;
        }
    });
    return changed;
}

void callModule(engine::DspEngine& dsp, std::span<std::byte> answer) {
    constexpr std::byte on{1};
    const auto ask = [&](std::int32_t id, std::size_t size) {
        benchmark::DoNotOptimize(dsp.SetGetData(KORVA_BANK_ENGINE, id, {}, answer.first(size)));
    };
    ask(KORVA_DATA_CYCLE_COUNT, 4);
    ask(KORVA_DATA_FRAME_COUNT, 4);
    ask(KORVA_DATA_BYTES_SENT, 12);
    ask(KORVA_DATA_BYTES_RECEIVED, 12);
    dsp.SetGetData(KORVA_BANK_ENGINE, KORVA_DATA_METERS_ENABLED, std::span(&on, 1), {});
    ask(KORVA_DATA_INPUT_METERS, 32);
    ask(KORVA_DATA_OUTPUT_METERS, 32);
    ask(KORVA_DATA_PARAMETER_BYTES, 4);
}

void pullInParts(benchmark::State& state) {
    ShownCore shown(KORVA_TELLING_MODULE);
    static_cast<void>(changesOfPull(shown, 1));  // which makes the values
    const std::vector<NamedValue> changed = changesOfPull(shown, 2);
    std::vector<std::byte> answer(32);
    std::uint32_t number = 2;
    measure(
        state, shown, [&] { bench::askForEverything(shown.key, ++number); },
        [&] {
            callModule(*shown.rig.core().dspEngine.value(), answer);
            for (const NamedValue& each : changed) {
                bench::writeShown(shown.key, each.name, each.value);
            }
        });
    state.counters["writes"] = static_cast<double>(changed.size());
}

/// Sets all that a stream and a pull leave at its default where no sound flows.
void setTheRest(engine::EffectCore& core) {
    const engine::PlaneLevels levels{1, 1, 1, 1, 1, 1, 1, 1};
    core.inputLevelMeters.set(levels);
    core.outputLevelMeters.set(levels);
    core.bufferSizeMs.set(10);
    core.cpuUsage.set(10);
}

/// All values are set, and were shown once.
void fill(ShownCore& shown) {
    static_cast<void>(changesOfPull(shown, 1));
    shown.rig.on([&] { setTheRest(shown.rig.core()); });
}

void attachOfCore(benchmark::State& state) {
    ShownCore shown(KORVA_TELLING_MODULE);
    fill(shown);
    engine::EffectCore& core = shown.rig.core();
    measure(
        state, shown, [&] { core.locked.set(false); }, [&] { core.locked.set(true); });
}

void attachWrites(benchmark::State& state) {
    ShownCore shown(KORVA_TELLING_MODULE);
    fill(shown);
    const std::vector<NamedValue> values = bench::shownValues(shown.key);
    measure(state, shown, nothing, [&] {
        for (const NamedValue& each : values) {
            bench::writeShown(shown.key, each.name, each.value);
        }
    });
    state.counters["writes"] = static_cast<double>(values.size());
}

BENCHMARK(valueShown)->Name("value/shown")->Iterations(1)->UseManualTime();
BENCHMARK(valueWrites)->Name("value/writes")->Iterations(1)->UseManualTime();
BENCHMARK(pullOfCore)->Name("pull/core")->Iterations(1)->UseManualTime();
BENCHMARK(pullInParts)->Name("pull/parts")->Iterations(1)->UseManualTime();
BENCHMARK(attachOfCore)->Name("attach/core")->Iterations(1)->UseManualTime();
BENCHMARK(attachWrites)->Name("attach/writes")->Iterations(1)->UseManualTime();

}  // namespace
