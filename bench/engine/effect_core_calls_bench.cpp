// The processing call through a core and the example equaliser while parameters change, beside the same call
// while nothing does: the 99th percentile of each.
//
// The core's thread, and whoever makes it change a parameter, have the second processor.
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/engine/call_turns.h"
#include "bench/engine/core_rig.h"
#include "bench/support/partner_calls.h"
#include "bench/support/processors.h"
#include "tests/support/engines.h"

namespace {

using namespace korva;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds changePeriod{2};

/// A parameter of the engine's first part, whose bytes change.
struct Changed {
    std::int32_t id;
    std::size_t floats;
};

/// The equaliser's gains: each change keeps it busy for 20 ms. They are set before all else, so that it has
/// work to do.
constexpr Changed gains{3, 12};
/// One that the equaliser passes over: what is measured is the host.
constexpr Changed passedOver{1, 1};

/// Changes a parameter 500 times a second, on the core's thread, while it is told to.
class Changer {
public:
    Changer(bench::CoreRig& changedRig, Changed changed) : rig(changedRig), which(changed) {
        rig.on([&] {
            parameter = rig.core().parameterSet.value()->find(0, which.id);
            if (parameter == nullptr) {
                throw std::runtime_error("no such parameter");
            }
            change();
        });
    }
    ~Changer() { end(); }
    Changer(const Changer&) = delete;
    Changer& operator=(const Changer&) = delete;

    void begin() {
        ends = false;
        thread = std::thread([this] {
            bench::bindTarget(gettid(), bench::Place::apart);
            for (auto next = Clock::now(); !ends; std::this_thread::sleep_until(next += changePeriod)) {
                rig.on([this] { change(); });
            }
        });
    }
    void end() {
        ends = true;
        if (thread.joinable()) {
            thread.join();
        }
    }

private:
    void change() {
        level = level == 1.0f ? 2.0f : 1.0f;
        const std::vector<float> levels(which.floats, level);
        parameter->OverrideTop.set(framework::SharedBytes(std::as_bytes(std::span(levels))));
    }

    bench::CoreRig& rig;
    const Changed which;
    params::Parameter* parameter = nullptr;
    float level = 0.0f;
    std::atomic<bool> ends{false};
    std::thread thread;
};

/// The rig is made by a thread that is bound to the second processor, and so are its own threads.
bench::CallPercentiles measureCalls(Changed changed) {
    const bench::CoreGround ground(test::thirdEngine, KORVA_EQUALISER);
    std::unique_ptr<bench::CoreRig> rig;
    bench::onThreadOf([](pid_t thread) { bench::bindTarget(thread, bench::Place::apart); },
                      [&] {
                          rig = std::make_unique<bench::CoreRig>(ground);
                          rig->on([&] {
                              rig->begin();
                              rig->lock();
                          });
                      });
    const Changer equalised(*rig, gains);
    Changer changer(*rig, changed);
    return bench::measureCallTurns(
        rig->core().realtime(), [&] { changer.begin(); }, [&] { changer.end(); });
}

[[maybe_unused]] const bool registered = [] {
    bench::registerCallTurns("calls", "changing", [] { return measureCalls(passedOver); });
    bench::registerCallTurns("calls_moving", "changing", [] { return measureCalls(gains); });
    return true;
}();

}  // namespace
