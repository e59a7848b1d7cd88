#include "framework/waitable_counter.h"

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

void WaitableCounter::offer(std::uint32_t changed) const {
    for (const WaitRegistration* waiter = first; waiter != nullptr; waiter = waiter->next) {
        waiter->block->offer(*waiter, changed);
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
    registration.block->offer(registration, value.load(std::memory_order_relaxed));
}

void WaitableCounter::leave(WaitRegistration& registration) {
    const std::lock_guard guard(mutex);
    (registration.previous != nullptr ? registration.previous->next : first) = registration.next;
    (registration.next != nullptr ? registration.next->previous : last) = registration.previous;
}

}  // namespace korva::framework
