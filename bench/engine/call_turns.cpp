#include "bench/engine/call_turns.h"

#include <benchmark/benchmark.h>
#include <sched.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "bench/support/partner_calls.h"
#include "bench/support/processors.h"

namespace korva::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds callPeriod{1};
constexpr std::size_t callsOfTurn = 100;
constexpr std::size_t turnsOfKind = 20;

double percentile99(std::vector<double>& seconds) {
    const auto place = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() * 99 / 100);
    std::nth_element(seconds.begin(), place, seconds.end());
    return *place;
}

void becomeAudioThread() {
    const sched_param priority{.sched_priority = 10};
    sched_setscheduler(0, SCHED_FIFO, &priority);
}

void callForOneTurn(rt::RtProcessor& processor, StereoBuffer& buffer, std::vector<double>& seconds) {
    auto next = Clock::now();
    for (std::size_t i = 0; i < callsOfTurn; ++i) {
        std::this_thread::sleep_until(next += callPeriod);
        const auto begin = Clock::now();
        buffer.play(processor);
        seconds.push_back(std::chrono::duration<double>(Clock::now() - begin).count());
    }
}

/// What has been measured and not been taken yet.
class Measurements {
public:
    explicit Measurements(std::function<CallPercentiles()> measures) : measure(std::move(measures)) {}

    double quiet() { return next(quietLeft, &CallPercentiles::quiet); }
    double disturbed() { return next(disturbedLeft, &CallPercentiles::disturbed); }

private:
    double next(std::deque<CallPercentiles>& left, double CallPercentiles::*half) {
        if (left.empty()) {
            const CallPercentiles made = measure();
            quietLeft.push_back(made);
            disturbedLeft.push_back(made);
        }
        const double result = left.front().*half;
        left.pop_front();
        return result;
    }

    const std::function<CallPercentiles()> measure;
    std::deque<CallPercentiles> quietLeft;
    std::deque<CallPercentiles> disturbedLeft;
};

}  // namespace

CallPercentiles measureCallTurns(rt::RtProcessor& processor, const std::function<void()>& begin,
                                 const std::function<void()>& end) {
    StereoBuffer buffer;
    std::vector<double> quiet;
    std::vector<double> disturbed;
    const auto turn = [&](std::vector<double>& seconds) {
        onThreadOf(bindCaller, [&] {
            becomeAudioThread();
            callForOneTurn(processor, buffer, seconds);
        });
    };
    for (std::size_t i = 0; i < turnsOfKind; ++i) {
        turn(quiet);
        begin();
        turn(disturbed);
        end();
    }
    return {percentile99(quiet), percentile99(disturbed)};
}

void registerCallTurns(const std::string& name, const std::string& disturbance,
                       const std::function<CallPercentiles()>& measure) {
    const auto measurements = std::make_shared<Measurements>(measure);
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
    add(disturbance, &Measurements::disturbed);
}

}  // namespace korva::bench
