// The processing call through a core and the example equaliser while parameters change, beside the same call
// while nothing does: the 99th percentile of each.
//
// Both are measured in one go, in turns of a tenth of a second, so that whatever else the machine does meets
// both. The audio thread has the first processor and real-time priority (where it may), and calls once a
// millisecond, ten times as often as its buffers last; it sleeps in between, as an audio engine's does. The
// core's thread has the second processor.
#include <benchmark/benchmark.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/engine/core_rig.h"
#include "bench/support/partner_calls.h"
#include "bench/support/processors.h"
#include "tests/support/engines.h"

namespace {

using namespace korva;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds callPeriod{1};
constexpr std::chrono::milliseconds changePeriod{2};
constexpr std::size_t callsOfTurn = 100;
constexpr std::size_t turnsOfKind = 20;

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

/// Calls, and how long the slowest hundredth of them took at least.
struct Percentiles {
    double quiet = 0.0;
    double changing = 0.0;
};

double percentile99(std::vector<double>& seconds) {
    const auto place = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() * 99 / 100);
    std::nth_element(seconds.begin(), place, seconds.end());
    return *place;
}

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

void becomeAudioThread() {
    const sched_param priority{.sched_priority = 10};
    sched_setscheduler(0, SCHED_FIFO, &priority);
}

void callForOneTurn(rt::RtProcessor& processor, bench::StereoBuffer& buffer, std::vector<double>& seconds) {
    auto next = Clock::now();
    for (std::size_t i = 0; i < callsOfTurn; ++i) {
        std::this_thread::sleep_until(next += callPeriod);
        const auto begin = Clock::now();
        buffer.play(processor);
        seconds.push_back(std::chrono::duration<double>(Clock::now() - begin).count());
    }
}

/// The rig is made by a thread that is bound to the second processor, and so are its own threads.
Percentiles measureCalls(Changed changed) {
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
    bench::StereoBuffer buffer;
    std::vector<double> quiet;
    std::vector<double> changing;
    for (std::size_t turn = 0; turn < turnsOfKind; ++turn) {
        for (std::vector<double>* const seconds : {&quiet, &changing}) {
            if (seconds == &changing) {
                changer.begin();
            }
            bench::onThreadOf(bench::bindCaller, [&] {
                becomeAudioThread();
                callForOneTurn(rig->core().realtime(), buffer, *seconds);
            });
            changer.end();
        }
    }
    return {percentile99(quiet), percentile99(changing)};
}

/// Each of the two cases takes its half of a measurement, and the first one to come makes it.
class Measurements {
public:
    explicit Measurements(Changed changed) : which(changed) {}

    double quiet() { return next(quietLeft, &Percentiles::quiet); }
    double changing() { return next(changingLeft, &Percentiles::changing); }

private:
    double next(std::deque<Percentiles>& left, double Percentiles::*half) {
        if (left.empty()) {
            const Percentiles made = measureCalls(which);
            quietLeft.push_back(made);
            changingLeft.push_back(made);
        }
        const double result = left.front().*half;
        left.pop_front();
        return result;
    }

    const Changed which;
    std::deque<Percentiles> quietLeft;
    std::deque<Percentiles> changingLeft;
};

void registerCases(const std::string& name, Changed changed) {
    const auto measurements = std::make_shared<Measurements>(changed);
    const auto add = [&](const std::string& half, double (Measurements::*take)()) {
        benchmark::RegisterBenchmark((name + "/" + half).c_str(),
                                     [=](benchmark::State& state) {
                                         for (auto _ : state) {
                                             state.SetIterationTime((*measurements.*take)());
                                         }
                                     })
            ->Iterations(1)
            ->UseManualTime();
    };
    add("quiet", &Measurements::quiet);
    add("changing", &Measurements::changing);
}

[[maybe_unused]] const bool registered = [] {
    registerCases("calls", passedOver);
    registerCases("calls_moving", gains);
    return true;
}();

}  // namespace
