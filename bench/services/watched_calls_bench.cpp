// The processing call through a core and the example equaliser while a tool asks for everything 20 times a
// second, beside the same call while nobody does. The core's thread and the tool have the second processor.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "bench/engine/call_turns.h"
#include "bench/services/shown_core.h"
#include "bench/support/partner_calls.h"
#include "bench/support/processors.h"
#include "framework/shared_bytes.h"

namespace {

using namespace korva;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds askPeriod{50};
constexpr std::int32_t gainsId = 3;
constexpr std::size_t gainCount = 12;

/// What the meters do while nobody asks.
enum class MetersAtRest { off, on };

/// Gives the equaliser work to do.
void setGains(bench::ShownCore& shown) {
    shown.rig.on([&] {
        const std::vector<float> gains(gainCount, 1.0F);
        shown.rig.core()
            .parameterSet.value()
            ->find(0, gainsId)
            ->OverrideTop.set(framework::SharedBytes(std::as_bytes(std::span(gains))));
    });
}

/// Asks on a thread of its own, as long as it lives.
class Tool {
public:
    Tool(const platform::RegistryKey& askedKey, MetersAtRest restOf) : key(askedKey), rest(restOf) {
        letMetersRest();
    }
    ~Tool() { end(); }
    Tool(const Tool&) = delete;
    Tool& operator=(const Tool&) = delete;

    void begin() {
        ends = false;
        thread = std::thread([this] {
            bench::bindTarget(gettid(), bench::Place::apart);
            for (auto next = Clock::now(); !ends; std::this_thread::sleep_until(next += askPeriod)) {
                bench::askForEverything(key, ++number);
            }
        });
    }
    void end() {
        ends = true;
        if (thread.joinable()) {
            thread.join();
            letMetersRest();
        }
    }

private:
    void letMetersRest() {
        bench::askForEverything(key, rest == MetersAtRest::off ? 0 : ++number);
        std::this_thread::sleep_for(askPeriod);  // until it has been looked at
    }

    const platform::RegistryKey& key;
    const MetersAtRest rest;
    std::uint32_t number = 0;
    std::atomic<bool> ends{false};
    std::thread thread;
};

bench::CallPercentiles measureCalls(MetersAtRest rest) {
    std::unique_ptr<bench::ShownCore> shown;
    bench::onThreadOf([](pid_t thread) { bench::bindTarget(thread, bench::Place::apart); },
                      [&] { shown = std::make_unique<bench::ShownCore>(KORVA_EQUALISER); });
    setGains(*shown);
    Tool tool(shown->key, rest);
    return bench::measureCallTurns(
        shown->rig.core().realtime(), [&] { tool.begin(); }, [&] { tool.end(); });
}

[[maybe_unused]] const bool registered = [] {
    bench::registerCallTurns("calls", "watched", [] { return measureCalls(MetersAtRest::off); });
    bench::registerCallTurns("calls_metered", "watched", [] { return measureCalls(MetersAtRest::on); });
    return true;
}();

}  // namespace
