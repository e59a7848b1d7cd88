// What a waiting thread sleeps on.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <span>

#include "framework/waitable_counter.h"
#include "platform/mutex.h"
#include "platform/wait_handles.h"

namespace korva::framework {

/// Takes the first signal that a wait on several counters gets, and wakes the thread that sleeps on it. One
/// thread uses a block at a time; blocks are pooled, so that no wait allocates. Reached through the counters
/// that its user stands in the queue of, under their mutexes.
class WaitBlock {
public:
    WaitBlock() = default;
    WaitBlock(const WaitBlock&) = delete;
    WaitBlock& operator=(const WaitBlock&) = delete;

    /// Before a wait: not signalled.  [the block's user]
    void reset();

    /// Signals the block with the registration's index if `value` ends its wait and nobody was first; true
    /// then, and the caller, who holds the counter's mutex, wakes the block after it has unlocked that. [any]
    [[nodiscard]] bool offer(const WaitRegistration& registration, std::uint32_t value);

    /// Wakes the thread that sleeps on the block. It may come late, when the block serves another wait or
    /// none: a wake alone ends no wait.  [any]
    virtual void wake() noexcept = 0;

    /// The index that signalled it; -1 if none did.  [the block's user, when it stands in no queue any more]
    [[nodiscard]] int signalledIndex() const noexcept { return index; }

protected:
    ~WaitBlock() = default;

    [[nodiscard]] bool isSignalled();

    platform::Mutex mutex;
    int index = -1;  // under the mutex; 0 or more: signalled
};

/// Sleeps on counters only.
class ConditionBlock final : public WaitBlock {
public:
    /// Sleeps until it is signalled or the limit passes.  [the block's user, blocks]
    void sleep(const WaitLimit& limit);

    void wake() noexcept override { signalled.notifyOne(); }

private:
    platform::ConditionVariable signalled;
};

/// Sleeps on counters and on handles of the operating system: a signal is an event beside those handles.
class EventBlock final : public WaitBlock {
public:
    /// At most so many handles beside the block's own.
    static constexpr std::size_t maxHandles = platform::maxWaitHandles - 1;

    /// As the base's; makes the event that a first wait needs.
    void reset();

    /// Sleeps until it is signalled, one of `handles` is, or the limit passes; gives the lowest index of a
    /// handle that is signalled, or -1.  [the block's user, blocks]
    int sleep(std::span<const platform::WaitHandle> handles, const WaitLimit& limit);

    void wake() noexcept override { event->signal(); }

private:
    std::optional<platform::Event> event;  // made by the first wait
};

/// A block from the process's pool, for as long as this lives. The pools begin with 16 blocks when the first
/// one is asked for, and double.
template <class Block>
class PooledBlock {
public:
    PooledBlock();
    ~PooledBlock();
    PooledBlock(const PooledBlock&) = delete;
    PooledBlock& operator=(const PooledBlock&) = delete;

    Block& operator*() const noexcept { return *block; }
    Block* operator->() const noexcept { return block; }

private:
    Block* block;
};

extern template class PooledBlock<ConditionBlock>;
extern template class PooledBlock<EventBlock>;

/// How many blocks of both kinds there are, and how many of them are in use.
struct WaitBlockCounts {
    std::size_t all = 0;
    std::size_t used = 0;
};
[[nodiscard]] WaitBlockCounts waitBlockCounts();  // [any]

/// Frees the pools whose blocks are all unused, for a library that is about to be unloaded.  [any]
void freeUnusedWaitBlocks();

/// Made before a counter's mutex is unlocked: until it ends no block is freed, though its user may be gone.
class LateWakes {
public:
    LateWakes() noexcept;
    ~LateWakes();
    LateWakes(const LateWakes&) = delete;
    LateWakes& operator=(const LateWakes&) = delete;
};

}  // namespace korva::framework
