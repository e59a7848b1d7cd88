#include "framework/wait_any.h"

#include "framework/wait_block.h"

namespace korva::framework {

/// Stands in the queue of every counter of a wait while it lives.
class Wait {
public:
    // One counter after the other: two threads that list the same two counters in opposite orders would lock
    // each other out if they held both. The list's order says which index wins, since the first offer that a
    // block takes is the one that counts.
    Wait(std::span<WaitRegistration> waited, WaitBlock& block) : counters(waited) {
        int index = 0;
        for (WaitRegistration& registration : counters) {
            registration.block = &block;
            registration.index = index++;
            registration.counter->enter(registration);
        }
    }

    ~Wait() {
        for (WaitRegistration& registration : counters) {
            registration.counter->leave(registration);
        }
    }

    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;

    // Without a block, for a wait that need not begin.
    static int firstThatEnds(std::span<WaitRegistration> counters) {
        for (std::size_t i = 0; i < counters.size(); ++i) {
            const std::uint32_t value = counters[i].counter->get();
            if (counters[i].endsAt(value)) {
                counters[i].markSeen(value);
                return static_cast<int>(i);
            }
        }
        return -1;
    }

private:
    std::span<WaitRegistration> counters;
};

int waitAny(std::span<WaitRegistration> counters, const WaitLimit& limit) {
    const int ready = Wait::firstThatEnds(counters);
    if (ready >= 0 || limit.hasPassed()) {
        return ready;
    }
    const PooledBlock<ConditionBlock> block;
    {
        const Wait wait(counters, *block);
        block->sleep(limit);
    }
    // Asked after the queues were left: a signal in the last moment has stored its value and counts.
    return block->signalledIndex();
}

int waitAny(std::span<WaitRegistration> counters, std::int64_t timeoutMs) {
    return waitAny(counters, WaitLimit(timeoutMs));
}

WaitResult waitAny(std::span<WaitRegistration> counters, std::span<const platform::WaitHandle> handles,
                   const WaitLimit& limit) {
    const int ready = Wait::firstThatEnds(counters);
    if (ready >= 0) {
        return {ready, -1};
    }
    const PooledBlock<EventBlock> block;
    WaitResult result;
    {
        const Wait wait(counters, *block);
        result.handle = block->sleep(handles, limit);
    }
    result.counter = block->signalledIndex();
    return result;
}

WaitResult waitAny(std::span<WaitRegistration> counters, std::span<const platform::WaitHandle> handles,
                   std::int64_t timeoutMs) {
    return waitAny(counters, handles, WaitLimit(timeoutMs));
}

}  // namespace korva::framework
