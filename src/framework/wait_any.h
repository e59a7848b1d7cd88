// Waiting on several counters, and on handles of the operating system, at once.
#pragma once

#include <span>

#include "framework/waitable_counter.h"
#include "platform/wait_handles.h"

namespace korva::framework {

/// Waits until one of `counters` ends the wait by its registration; gives its index, or -1 when the limit
/// passes. Of several that end it already, the first one in the list wins, and only its last-seen value is
/// stored. Allocates nothing in the steady state.  [any, blocks]
int waitAny(std::span<WaitRegistration> counters, const WaitLimit& limit);
int waitAny(std::span<WaitRegistration> counters, std::int64_t timeoutMs = waitForever);

/// What ended a wait; both are -1 when the limit passed, and both may be set when both came.
struct WaitResult {
    int counter = -1;
    int handle = -1;
};

/// The same with handles of the operating system beside the counters, `EventBlock::maxHandles` at most. A
/// handle stays signalled; whoever is told of it resets it.  [any, blocks]
WaitResult waitAny(std::span<WaitRegistration> counters, std::span<const platform::WaitHandle> handles,
                   const WaitLimit& limit);
WaitResult waitAny(std::span<WaitRegistration> counters, std::span<const platform::WaitHandle> handles,
                   std::int64_t timeoutMs = waitForever);

}  // namespace korva::framework
