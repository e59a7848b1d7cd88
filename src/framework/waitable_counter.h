// The framework's one primitive to wait on.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "framework/shared_count.h"
#include "platform/mutex.h"
#include "platform/wait_limit.h"

namespace korva::framework {

using platform::waitForever;
using platform::WaitLimit;

class WaitBlock;
class WaitableCounter;

/// One counter in one wait, made by the waiter on its own stack: what it has seen so far, which no other
/// registration shares, and while it sleeps a place in the counter's queue. The counter outlives it.  [any]
class WaitRegistration {
public:
    /// Waits until the value differs from `seen`; then the value is stored there.
    WaitRegistration(WaitableCounter& watched, std::uint32_t& seen) noexcept
        : counter(&watched), lastSeen(&seen) {}

    /// Waits until `flag` is not 0, whatever the value. Whoever sets the flag changes the counter afterwards:
    /// a value that went away and came back between two looks then hides nothing.
    WaitRegistration(WaitableCounter& watched, const std::atomic<std::uint64_t>& flag) noexcept
        : counter(&watched), done(&flag) {}

private:
    friend class WaitableCounter;
    friend class WaitBlock;
    friend class Wait;

    [[nodiscard]] bool endsAt(std::uint32_t value) const noexcept {
        return done != nullptr ? done->load(std::memory_order_acquire) != 0 : value != *lastSeen;
    }
    void markSeen(std::uint32_t value) const noexcept {
        if (lastSeen != nullptr) {
            *lastSeen = value;
        }
    }

    WaitableCounter* counter;
    std::uint32_t* lastSeen = nullptr;
    const std::atomic<std::uint64_t>* done = nullptr;
    WaitBlock* block = nullptr;  // set while it stands in the queue
    int index = -1;
    WaitRegistration* previous = nullptr;
    WaitRegistration* next = nullptr;
};

/// A value that threads wait on until it differs from the one they last saw. Not a semaphore: no wake is
/// counted, and a waiter that comes late sees the change at once.  [any]
///
/// Lock order: a counter's mutex, then the mutex of a `WaitBlock`. No thread holds two counters' mutexes.
class WaitableCounter final : public SharedCount<WaitableCounter> {
public:
    explicit constexpr WaitableCounter(std::uint32_t initial = 0) noexcept : value(initial) {}

    [[nodiscard]] std::uint32_t get() const noexcept { return value.load(std::memory_order_acquire); }

    /// Changes the value and wakes every waiter whose last-seen value differs from the new one, in the order
    /// in which they came.
    void set(std::uint32_t v);
    /// The same; both give the new value.
    std::uint32_t add(std::uint32_t n);
    std::uint32_t subtract(std::uint32_t n);

    /// Runs `change(value)` under the counter's mutex, where the owner of a counter may guard more than the
    /// value, and wakes as `set` does. Gives the new value.
    template <class Change>
    std::uint32_t update(const Change& change) {
        std::unique_lock guard(mutex);
        std::uint32_t changed = value.load(std::memory_order_relaxed);
        change(changed);
        value.store(changed, std::memory_order_release);
        if (first != nullptr) {
            offer(changed, guard);
        }
        return changed;
    }

    /// Runs `read(value)` under the counter's mutex and gives its result; wakes nobody.
    template <class Read>
    auto locked(const Read& read) const {
        const std::lock_guard guard(mutex);
        return read(value.load(std::memory_order_relaxed));
    }

    /// Waits until the value differs from `lastSeen`, then stores it there.  [any, blocks]
    void wait(std::uint32_t& lastSeen);

    /// The same with a limit; false, with `lastSeen` as it was, if it passes first. A limit of 0 or below
    /// only looks.  [any, blocks]
    bool waitFor(std::uint32_t& lastSeen, std::int64_t timeoutMs);

private:
    friend class Wait;

    void offer(std::uint32_t changed, std::unique_lock<platform::Mutex>& guard) const;
    void enter(WaitRegistration& registration);
    void leave(WaitRegistration& registration);

    // Written under the mutex; read without it by those who only look.
    std::atomic<std::uint32_t> value;
    mutable platform::Mutex mutex;
    WaitRegistration* first = nullptr;  // the queue, under the mutex
    WaitRegistration* last = nullptr;
};

}  // namespace korva::framework
