#include "bench/support/partner_calls.h"

#include <unistd.h>

#include <cstddef>
#include <future>

#include "bench/support/median.h"
#include "bench/support/processors.h"
#include "bench/support/thread_state.h"

namespace korva::bench {

namespace {

constexpr std::size_t ordersInAll = 101;

}  // namespace

void onThreadOf(const std::function<void(pid_t)>& bind, const std::function<void()>& action) {
    std::async(std::launch::async, [&] {
        bind(gettid());
        action();
    }).get();
}

double medianTimeNs(const Partner& partner, Order order) {
    double median = 0.0;
    onThreadOf(bindCaller, [&] {
        bindCaller(partner.process());
        const OtherThreads targets;
        median = medianOf(ordersInAll, [&] {
            targets.waitUntilAsleep();
            return static_cast<double>(partner.timeOf(order));
        });
    });
    return median;
}

}  // namespace korva::bench
