// How long it takes until a thread that sleeps hears of what a partner does.
#pragma once

#include <sys/types.h>

#include <functional>

#include "bench/support/partner.h"

namespace korva::bench {

/// Runs on a thread made for it, which is bound first, as are the threads that it makes. What the main thread
/// may use stands for the whole process.  [blocks]
void onThreadOf(const std::function<void(pid_t)>& bind, const std::function<void()>& action);

/// The median of 101 orders; each is given when all other threads of this process sleep. The partner and who
/// waits for its answers are on the callers' processor. In nanoseconds.  [blocks]
[[nodiscard]] double medianTimeNs(const Partner& partner, Order order);

}  // namespace korva::bench
