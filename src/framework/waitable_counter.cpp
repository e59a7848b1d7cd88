#include "framework/waitable_counter.h"

#include <array>

#include "framework/wait_any.h"
#include "framework/wait_block.h"

namespace korva::framework {

void WaitableCounter::set(std::uint32_t v) {
    update([v](std::uint32_t& counted) { counted = v; });
}

std::uint32_t WaitableCounter::add(std::uint32_t n) {
    return update([n](std::uint32_t& counted) { counted += n; });
}

std::uint32_t WaitableCounter::subtract(std::uint32_t n) {
    return update([n](std::uint32_t& counted) { counted -= n; });
}

void WaitableCounter::wait(std::uint32_t& lastSeen) {
    waitFor(lastSeen, waitForever);
}

bool WaitableCounter::waitFor(std::uint32_t& lastSeen, std::int64_t timeoutMs) {
    WaitRegistration registration(*this, lastSeen);
    return waitAny({&registration, 1}, timeoutMs) == 0;
}

// Threads are woken after the mutex is free, which is the first thing that they ask for. A few at a time:
// there is hardly ever more than one.
void WaitableCounter::offer(std::uint32_t changed, std::unique_lock<platform::Mutex>& guard) const {
    std::array<WaitBlock*, 8> signalled;
    std::size_t count = 0;
    for (const WaitRegistration* waiter = first; waiter != nullptr; waiter = waiter->next) {
        if (!waiter->block->offer(*waiter, changed)) {
            continue;
        }
        if (count < signalled.size()) {
            signalled[count++] = waiter->block;
        } else {
            waiter->block->wake();
        }
    }
    const LateWakes late;
    guard.unlock();
    for (std::size_t i = 0; i < count; ++i) {
        signalled[i]->wake();
    }
}

// The look at the present value is the first offer: a change before it is not missed, one after it finds the
// registration in the queue.
void WaitableCounter::enter(WaitRegistration& registration) {
    const std::lock_guard guard(mutex);
    registration.previous = last;
    registration.next = nullptr;
    (last != nullptr ? last->next : first) = &registration;
    last = &registration;
    // Nobody sleeps yet: the waiter itself is here.
    static_cast<void>(registration.block->offer(registration, value.load(std::memory_order_relaxed)));
}

void WaitableCounter::leave(WaitRegistration& registration) {
    const std::lock_guard guard(mutex);
    (registration.previous != nullptr ? registration.previous->next : first) = registration.next;
    (registration.next != nullptr ? registration.next->previous : last) = registration.previous;
}

}  // namespace korva::framework
