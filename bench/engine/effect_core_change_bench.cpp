// From a preset's property that another process changes to the module that is sent a parameter of it, beside
// the word of the same change that a watcher of the same key publishes.
//
// The time begins with the commit; both wait for the same pause, which is in it.
#include <benchmark/benchmark.h>
#include <sys/types.h>

#include <algorithm>
#include <cstdint>
#include <memory>

#include "bench/engine/core_rig.h"
#include "bench/engine/kept_parameters.h"
#include "bench/support/partner.h"
#include "bench/support/partner_calls.h"
#include "bench/support/processors.h"
#include "params/catalogue.h"
#include "params/chunk_plan.h"
#include "params/effect_keys.h"
#include "platform/property_key.h"
#include "tests/params/watcher_host.h"
#include "tests/support/engines.h"
#include "tests/support/loaded_library.h"

namespace {

using namespace korva;
using bench::Partner;

constexpr std::int64_t pauseMs = 1;
constexpr std::uint32_t chunkHead = 4;

std::uint32_t blobSize(const params::ChunkPlan& plan, std::uint32_t chunk) {
    std::uint32_t bytes = chunkHead;
    for (const params::PlannedParameter& planned : plan.parameters) {
        bytes += planned.chunk == chunk ? planned.size : 0;
    }
    return bytes;
}

/// The first parameter of four bytes that a preset's bytes count for is the one that counts up.
bench::CountingValue changedBlob(const bench::CoreGround& ground) {
    const params::ChunkPlan plan = params::planChunks(*params::FindLayout(test::thirdEngine)).value();
    const auto changed = std::find_if(
        plan.parameters.begin(), plan.parameters.end(),
        [](const auto& planned) { return planned.size == 4 && planned.descriptor->sourcePolicy != 1; });
    std::uint32_t countAt = chunkHead;
    for (auto before = plan.parameters.begin(); before != changed; ++before) {
        countAt += before->chunk == changed->chunk ? before->size : 0;
    }
    return {.keyPath = ground.userSetPath(),
            .name = platform::KeyToText(
                {bench::benchEffect, params::effect_property::firstChunk + changed->chunk}),
            .type = platform::registry_type::binary,
            .bytes = blobSize(plan, changed->chunk),
            .countAt = countAt};
}

/// All threads of what listens are begun by one that is bound to the second processor, and so are they.
template <class Make>
void onTargetsProcessor(const Make& make) {
    bench::onThreadOf([](pid_t thread) { bench::bindTarget(thread, bench::Place::apart); }, make);
}

void measure(benchmark::State& state, const Partner& partner) {
    for (auto _ : state) {
        state.SetIterationTime(1e-9 * bench::medianTimeNs(partner, bench::Order::setValue));
    }
}

const Partner* partnerOfModule = nullptr;

void changeToModule(benchmark::State& state) {
    const bench::CoreGround ground(test::thirdEngine, KORVA_KEEPING_MODULE);
    std::unique_ptr<bench::CoreRig> rig;
    onTargetsProcessor([&] {
        rig = std::make_unique<bench::CoreRig>(ground);
        rig->on([&] {
            rig->begin();
            rig->lock();
        });
    });
    const Partner partner(changedBlob(ground));
    const test::LoadedLibrary module(ground.moduleOf(test::thirdEngine));
    partnerOfModule = &partner;
    const auto tell = module.function<decltype(korvaBenchTell)>("korvaBenchTell");
    rig->on([&] { tell([] { bench::answer(partnerOfModule->page()); }); });
    measure(state, partner);
    rig->on([&] { tell(nullptr); });
}

void changeToWatcher(benchmark::State& state) {
    const bench::CoreGround ground(test::thirdEngine, KORVA_KEEPING_MODULE);
    const Partner partner(changedBlob(ground));
    std::unique_ptr<test::WatcherHost> host;
    onTargetsProcessor([&] {
        host = std::make_unique<test::WatcherHost>(
            ground.userSetPath(), pauseMs,
            [&](const platform::RegistryKey&) { bench::answer(partner.page()); });
    });
    measure(state, partner);
    host = nullptr;
}

[[maybe_unused]] const bool registered = [] {
    benchmark::RegisterBenchmark("change/module", changeToModule)->Iterations(1)->UseManualTime();
    benchmark::RegisterBenchmark("change/watcher", changeToWatcher)->Iterations(1)->UseManualTime();
    return true;
}();

}  // namespace
