// From a value that another process sets to the call of the one who listens to a watcher of its key, beside a
// bare futex that wakes a thread of another process.
//
// The time begins with the commit that makes the value another one. The pause that the watcher waits for is
// left out; by how much its timer is late is not.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <future>
#include <memory>
#include <string>

#include "bench/support/partner.h"
#include "bench/support/partner_calls.h"
#include "bench/support/processors.h"
#include "tests/params/watcher_host.h"
#include "tests/support/own_registry.h"

namespace {

using namespace korva;
using bench::Order;
using bench::Partner;
using bench::Place;

constexpr std::int64_t pauseMs = 1;

/// An iteration's time is the median of calls to targets that sleep.
void measure(benchmark::State& state, const Partner& partner, Order order, std::int64_t leftOutNs) {
    for (auto _ : state) {
        state.SetIterationTime(1e-9 * (bench::medianTimeNs(partner, order) - static_cast<double>(leftOutNs)));
    }
}

// All threads of the watch are begun by one that is bound, and so are they.
void watch(benchmark::State& state, Place place) {
    const test::OwnRegistry registry;
    const Partner partner({.keyPath = registry.key()});
    std::unique_ptr<test::WatcherHost> host;
    bench::onThreadOf([place](pid_t thread) { bench::bindTarget(thread, place); },
                      [&] {
                          host = std::make_unique<test::WatcherHost>(
                              registry.key(), pauseMs,
                              [&](const platform::RegistryKey&) { bench::answer(partner.page()); });
                      });
    measure(state, partner, Order::setValue, pauseMs * 1'000'000);
}

/// Answers each time that the page's word is raised; the last time says that it ends.
void answerWakes(const bench::SharedFile& page, const std::atomic<bool>& ends) {
    for (std::uint32_t seen = 0; page->target.waitWhile(seen, 30) && !ends; ++seen) {
        bench::answer(page);
    }
}

void wakeByFutex(benchmark::State& state, Place place) {
    const test::OwnRegistry registry;
    const Partner partner({.keyPath = registry.key()});
    std::atomic<bool> ends{false};
    const auto sleeper = std::async(std::launch::async, [&] {
        bench::bindTarget(gettid(), place);
        answerWakes(partner.page(), ends);
    });
    measure(state, partner, Order::raiseWord, 0);
    ends = true;
    partner.page()->target.raise();
}

void registerAt(const std::string& where, Place place) {
    benchmark::RegisterBenchmark(("watch/korva/" + where).c_str(), watch, place)
        ->Iterations(1)
        ->UseManualTime();
    benchmark::RegisterBenchmark(("watch/futex/" + where).c_str(), wakeByFutex, place)
        ->Iterations(1)
        ->UseManualTime();
}

[[maybe_unused]] const bool registered = [] {
    registerAt("apart", Place::apart);
    registerAt("together", Place::together);
    return true;
}();

}  // namespace
